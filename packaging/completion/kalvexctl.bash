# What leads to the module is handed on to the call that asks it, but for a user, whose password would be asked for.
_kalvexctl_ask() {
    local -a reach=()
    local i
    for i in "${!names[@]}"; do
        case ${names[i]} in
            -m | --module | --address | --authority | --certificate | --key | --certificate-name | --login)
                reach+=("${names[i]}" "${values[i]}")
                ;;
            --plain-text) reach+=("${names[i]}") ;;
        esac
    done
    kalvexctl --timeout 1 "${reach[@]}" "$@" 2>/dev/null </dev/null
}

_kalvexctl_scripts() {
    _kalvexctl_ask list
}

_kalvexctl_variables() {
    _kalvexctl_ask vars "${arguments[0]}" | cut -f1
}
