# Completion of the command halvern for bash. The program itself knows what may follow.
COMP_WORDBREAKS=${COMP_WORDBREAKS//=/}  # "KEY=VALUE" is one word
_halvern() {
    local i
    mapfile -t COMPREPLY < <("$1" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    case ${COMPREPLY[0]} in
        *= | *.) compopt -o nospace ;;
    esac
    # A name may hold blanks, which bash would take for its end.
    for i in "${!COMPREPLY[@]}"; do printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}"; done
}
complete -o default -F _halvern halvern
