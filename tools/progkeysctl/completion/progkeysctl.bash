# Completion of progkeysctl in bash. Commands, options, fields and the kinds of values are read from
# --help; identifiers, containers and places from the running phone.

_progkeysctl_events='ACTION_CREATE_NTF ACTION_DELETE_NTF ACTION_MODIFY_NTF AOMKEY_PRESS_NTF
    AOM_KEY_PRESS_EVENT AOM_SET_ICON_PROPERTY_REC AOM_SET_LABEL_PROPERTY_REC DB_RESET_NTF
    KEY_CREATE_NTF KEY_DELETE_NTF KEY_MODIFY_NTF KO_PROGKEYS_DB_FULL'

# The terms in a section of a help text, such as Commands.
_progkeysctl_terms() {
    sed -n "/^$2:/,/^$/s/^  \([^ ].*\)/\1/p" <<<"$1"
}

# The names of the fields of "key" or "action", without the identifier.
_progkeysctl_fields() {
    _progkeysctl_terms "$("$tool" "$1" add --help)" Fields | cut -d = -f 1
}

# Rows of the phone: "key FIELDS" or "action FIELDS". Prints nothing if the service is not running.
_progkeysctl_ask() {
    local ask=(timeout 2 "$tool" "${bus[@]}" --terse)
    "${ask[@]}" wait --timeout 0.2 >/dev/null &&
        "${ask[@]}" "$1" list --fields "$2" "${@:3}" | sort -n | uniq | sed 's/\\\(.\)/\1/g'
}

# "idAction=", or its values once it is typed.
_progkeysctl_assignments() {
    case $cur in
        idAction=*) _progkeysctl_ask action idAction | sed 's/^/idAction=/' ;;
        container=*) _progkeysctl_ask key container | sed -n 's/^./container=&/p' ;;
        *=*) ;;
        *) _progkeysctl_fields "$1" | sed 's/$/=/' ;;
    esac
}

# The list after --fields, with one more field.
_progkeysctl_field_lists() {
    local name record=${command%% *} before='' label=''
    [[ $record == key || $record == action ]] || return
    [[ $cur != *,* ]] || before=${cur%,*},
    [[ $command != 'key list' ]] || label=label
    for name in "id${record^}" $(_progkeysctl_fields "$record") $label; do
        [[ ,$before == *",$name,"* ]] || echo "$before$name"
    done
}

# Prints the candidates for a value, by its name in the help, one on each line.
_progkeysctl_list() {
    case $1 in
        *\|*) tr '|' '\n' <<<"${1##* }" ;;
        --fields*) _progkeysctl_field_lists ;;
        --match*) printf '%s\n' $_progkeysctl_events ;;
        --container*) _progkeysctl_ask key container | grep . ;;
        --module\ *) _progkeysctl_ask key aom_addr --type 1 ;;
        ADDRESS/NUMBER) _progkeysctl_ask key aom_addr,position --type 1 | tr : / ;;
        KEY_ID=POSITION) [[ $cur == *=* ]] || _progkeysctl_ask key idKey | sed 's/$/=/' ;;
        KEY_ID) _progkeysctl_ask key idKey ;;
        *ACTION_ID) _progkeysctl_ask action idAction ;;
        FIELD=VALUE) _progkeysctl_assignments "${command%% *}" ;;
        COMMAND) _progkeysctl_terms "$("$tool" "${arguments[@]}" --help)" Commands | cut -d ' ' -f 1 ;;
        PROGRAM) compgen -c -- "$cur" | sort -u ;;
        OPTION) _progkeysctl_terms "$help" 'Options[a-z ]*' | sed 's/^\(-., \)\?\(--\?[a-z-]*\).*/\2/' ;;
    esac
}

# What an option takes, by its name in the help; empty for a flag.
_progkeysctl_value_of() {
    [[ $help =~ $'\n  '(-.,' ')?"$1"(', '--[a-z-]+)?' '([^' ']+) ]] && echo "${BASH_REMATCH[3]}"
}

# What the next argument is, by its name in the usage line. The last one may be repeated.
_progkeysctl_argument() {
    local names name
    read -r -a names <<<"${help%%$'\n'*}"
    names=("${names[@]:$(wc -w <<<"Usage: progkeysctl $command [OPTION]...")}")
    name=${names[${#arguments[@]}]-}
    [[ -n $name || ${names[-1]-} != *...* ]] || name=${names[-1]}
    name=${name//[\[\]]/} name=${name%...}
    if [[ $command == sandbox ]]; then
        name=FILE
        ((${#arguments[@]} > 0)) || name=PROGRAM
    fi
    echo "$name"
}

# Whether a candidate is given already.
_progkeysctl_is_given() {
    [[ $1 == *= && " ${arguments[*]}" == *" $1"* ]] || [[ " ${arguments[*]} $given" == *" $1 "* ]]
}

# Offers those of the candidates that begin with what is typed.
_progkeysctl_offer() {
    local candidate quoted broken='' breaks=${COMP_WORDBREAKS//[^=:]/}
    # Bash replaces the word from its last break on.
    [[ -z $breaks ]] || broken=${head}${cur} broken=${broken%"${broken##*[$breaks]}"}
    for candidate; do
        [[ $candidate == "$cur"* ]] && ! _progkeysctl_is_given "$candidate" || continue
        candidate=$head$candidate
        printf -v quoted %q "${candidate#"$broken"}"
        COMPREPLY+=("${quoted//\\,/,}")
    done
    [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != *[=,] ]] || compopt -o nospace
}

_progkeysctl() {
    local tool=$1 line=${COMP_LINE:0:COMP_POINT} bus=() arguments=() command='' option='' after=''
    local words word cur head='' kind choices given=' ' help
    type -P -- "$tool" >/dev/null || tool=progkeysctl
    help=$("$tool" --help)
    # Without -r, so that an escaped blank belongs to its word.
    read -a words <<<"$line"
    [[ ! $line =~ (^|[^\\])[[:blank:]]$ ]] || words+=('')
    cur=${words[-1]}
    for word in "${words[@]:1:${#words[@]}-2}"; do
        word=${word//[\'\"]/}
        if [[ -n $option ]]; then
            [[ $option != --address ]] || bus+=("$option" "$word")
            option=''
        elif [[ -z $after && $word == -- ]]; then
            after=1
        elif [[ -z $after && $word == -* && $word != -[0-9]* ]]; then
            given+="${word%%=*} "
            [[ $word != --session && $word != --address=* ]] || bus+=("$word")
            [[ -z $(_progkeysctl_value_of "$word") ]] || option=$word
        elif [[ $help == *$'\nCommands:\n'* ]]; then
            command+=${command:+ }$word
            help=$("$tool" $command --help)
        else
            arguments+=("$word")
        fi
    done

    kind=$(_progkeysctl_argument)
    if [[ -n $option ]]; then
        kind="$option $(_progkeysctl_value_of "$option")"
    elif [[ -z $after && $cur == --*=* ]]; then
        head=${cur%%=*}= cur=${cur#*=}
        kind="${head%=} $(_progkeysctl_value_of "${head%=}")"
    elif [[ $help == *$'\nCommands:\n'* && $cur != -* ]]; then
        read -r -a arguments <<<"$command"
        kind=COMMAND
    elif [[ -z $after && ( $cur == -* || -z $kind ) ]]; then
        kind=OPTION
    fi
    case ${kind##* } in
        FILE) compopt -o default ;;
        DIR) compopt -o dirnames ;;
        *)
            mapfile -t choices < <(_progkeysctl_list "$kind")
            _progkeysctl_offer "${choices[@]}"
            ;;
    esac
} 2>/dev/null

complete -o nosort -F _progkeysctl progkeysctl
