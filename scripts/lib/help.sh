# Sourced by the scripts before they change the directory. The first comment of a script is its help.

show_help() {
    awk 'NR == 1 { next } !/^#/ { exit } { sub(/^# ?/, ""); print }' "$0"
}

# Prints the help and exits if one of the arguments asks for it.
help_if_asked() {
    local word
    for word; do
        case $word in
            --help | -h)
                show_help
                exit 0
                ;;
        esac
    done
}

# refuse REASON: reports an invalid argument and exits.
refuse() {
    printf '%s: %s\nTry %s --help.\n' "$0" "$1" "$0" >&2
    exit 2
}

# refuse_argument ARGUMENT: reports an unknown argument and exits.
refuse_argument() {
    case $1 in
        -*) refuse "unknown option: $1" ;;
        *) refuse "unexpected argument: $1" ;;
    esac
}
