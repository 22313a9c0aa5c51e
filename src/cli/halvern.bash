# Completion of the command halvern for bash. The program itself knows what may follow.
_halvern() {
    local IFS=$'\n'
    COMPREPLY=($("$1" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null))
    case ${COMPREPLY[0]} in
        *= | *.) compopt -o nospace ;;
    esac
}
complete -o default -F _halvern halvern
