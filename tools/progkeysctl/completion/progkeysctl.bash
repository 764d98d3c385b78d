# Completion of progkeysctl in bash. The tool itself answers what may stand where the cursor is; its
# first line says how the others are to be taken, or that the shell is to look for files.

_progkeysctl()
{
    local tool=${1/#\~/$HOME} answer
    type -P -- "$tool" >/dev/null || tool=progkeysctl
    mapfile -t answer < <("$tool" __complete -- \
        "${COMP_LINE:0:COMP_POINT}" "$COMP_WORDBREAKS" 2>/dev/null </dev/null)
    COMPREPLY=("${answer[@]:1}")
    case ${answer[0]-} in
        words) compopt -o nosort ;;
        open) compopt -o nosort -o nospace ;;
        files) compopt -o default ;;
        directories) compopt -o dirnames ;;
        commands) mapfile -t COMPREPLY < <(compgen -c -- "$2" | sort -u) ;;
    esac
} 2>/dev/null

complete -F _progkeysctl progkeysctl
