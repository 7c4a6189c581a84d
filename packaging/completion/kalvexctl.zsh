# What leads to the module is handed on to the call that asks it, but for a user, whose password would be asked for.
_kalvexctl_ask() {
    local -a reach
    local i
    for ((i = 2; i <= $#before; i++)); do
        case $before[i] in
            --(module|address|authority|certificate|key|certificate-name|login)=*) reach+=("$before[i]") ;;
            -m | --module | --address | --authority | --certificate | --key | --certificate-name | --login)
                reach+=("$before[i]" "$before[i+1]")
                ;;
            --plain-text) reach+=("$before[i]") ;;
        esac
    done
    kalvexctl --timeout 1 $reach "$@" 2>/dev/null </dev/null
}

_kalvexctl_scripts() {
    local -a scripts=(${(f)"$(_kalvexctl_ask list)"})
    compadd -a scripts
}

_kalvexctl_variables() {
    local -a variables=(${(f)"$(_kalvexctl_ask vars "$line[1]" | cut -f1)"})
    compadd -a variables
}
