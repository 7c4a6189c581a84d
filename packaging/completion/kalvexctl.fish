# What leads to the module is handed on to the call that asks it, but for a user, whose password would be asked for.
function __kalvexctl_ask
    set -l reach
    set -l wants ""
    for word in (commandline -opc)[2..-1]
        if test -n "$wants"
            set -a reach $word
            set wants ""
            continue
        end
        switch $word
            case -m --module --address --authority --certificate --key --certificate-name --login
                set -a reach $word
                set wants yes
            case --plain-text '--module=*' '--address=*' '--authority=*' '--certificate=*' '--key=*' \
                    '--certificate-name=*' '--login=*'
                set -a reach $word
        end
    end
    kalvexctl --timeout 1 $reach $argv 2>/dev/null </dev/null
end

function __kalvexctl_scripts
    __kalvexctl_ask list
end

function __kalvexctl_variables
    __kalvexctl_ask vars (__kalvexctl_given)[2] | cut -f1
end
