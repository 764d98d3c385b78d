# Completion of progkeysctl in bash. Identifiers, containers and places are those of the running phone.

# What an option takes: words to choose from, or @ and a kind of value.
declare -gA _progkeysctl_values=(
    [--address]=@text [--timeout]=@text [--json]='pretty short' [--color]='auto always never' [--fields]=@fields
    [--container]=@containers [--module]=@modules [--type]=@text [--action]=@actions [--module-type]=@text
    [--match]=@events [--limit]=@text [--output]=@file [-o]=@file [--kind]='actions keys'
    [--from]='csv json text' [--to]='csv json text' [--actions]=@file [--keys]=@file
    [--settings]=@directory [--data]=@directory [--logs]=@directory [--bin]=@directory
)
_progkeysctl_common='--help --version --system --session --address --timeout --json -j --terse
    --fields --no-legend --color'

# The options of each command, and its arguments in order, of which the last may be repeated (+).
declare -gA _progkeysctl_options=(
    [status]='' [wait]='' [icon]='' [label]='' [press]='--module-type'
    ['key list']='--container --module --type --action' ['key show']='' ['key add']='' ['key set']=''
    ['key move']='' ['key delete']=''
    ['action list']='' ['action show']='' ['action add']='' ['action set']=''
    ['action delete']='--dry-run'
    [monitor]='--match --limit --since-start'
    [export]='--container --module --output' [import]='--dry-run'
    ['defaults check']='--kind --limit --strict' ['defaults convert']='--from --to --kind --output'
    ['defaults plan']='--actions --keys --settings --limit --all --detailed-exitcode'
    [restore]='--yes' [sandbox]='--settings --data --logs --bin' [help]='--list'
)
declare -gA _progkeysctl_arguments=(
    [wait]='@text' [icon]='@keys @text @text' [label]='@keys @text' [press]='@places'
    ['key show']='@keys' ['key add']='@key_fields+' ['key set']='@keys @key_fields+'
    ['key move']='@moves+' ['key delete']='@keys+'
    ['action show']='@actions' ['action add']='@action_fields+'
    ['action set']='@actions @action_fields+' ['action delete']='@actions+'
    [import]='@file' ['defaults check']='@file+' ['defaults convert']='@file'
    ['defaults plan']='@file+' [restore]='@states' [sandbox]='@program @file+' [help]='@commands+'
)
_progkeysctl_key_fields='idKey dmId idAction container position icon type aom_type aom_addr'
_progkeysctl_listed_fields="${_progkeysctl_key_fields/idAction/idAction label}"
_progkeysctl_action_fields='idAction dmId type action webAppName arguments label shortLabel'
_progkeysctl_events='ACTION_CREATE_NTF ACTION_DELETE_NTF ACTION_MODIFY_NTF AOMKEY_PRESS_NTF
    AOM_KEY_PRESS_EVENT AOM_SET_ICON_PROPERTY_REC AOM_SET_LABEL_PROPERTY_REC DB_RESET_NTF
    KEY_CREATE_NTF KEY_DELETE_NTF KEY_MODIFY_NTF KO_PROGKEYS_DB_FULL'

# Rows of the phone: "key FIELDS" or "action FIELDS". A service that is down is not started for it.
_progkeysctl_ask() {
    local ask=(timeout 2 "$tool" "${bus[@]}" --terse)
    "${ask[@]}" wait --timeout 0.2 >/dev/null &&
        "${ask[@]}" "$1" list --fields "$2" "${@:3}" | sort -n | uniq | sed 's/\\\(.\)/\1/g'
}

# The next words of the commands that begin with the words given.
_progkeysctl_commands() {
    printf '%s\n' "${!_progkeysctl_options[@]}" | sed -n "s/^${*:+$* }\([^ ]*\).*/\1/p" | sort -u
}

# Assignments of the fields given: "idAction=", or its values once it is typed.
_progkeysctl_assignments() {
    local name=${cur%%=*} values=''
    if [[ $cur != *=* ]]; then
        printf '%s=\n' "$@"
        return
    fi
    case $name in
        idAction) values=@actions ;;
        container) values=@containers ;;
    esac
    [[ -z $values ]] || _progkeysctl_list "$values" | sed "s/^/$name=/"
}

# Prints the candidates for a kind of value, one on each line.
_progkeysctl_list() {
    case $1 in
        @keys) _progkeysctl_ask key idKey ;;
        @actions) _progkeysctl_ask action idAction ;;
        @containers) _progkeysctl_ask key container | grep . ;;
        @modules) _progkeysctl_ask key aom_addr --type 1 ;;
        @places) _progkeysctl_ask key aom_addr,position --type 1 | tr : / ;;
        @moves) [[ $cur == *=* ]] || _progkeysctl_ask key idKey | sed 's/$/=/' ;;
        @key_fields) _progkeysctl_assignments ${_progkeysctl_key_fields#* } ;;
        @action_fields) _progkeysctl_assignments ${_progkeysctl_action_fields#* } ;;
        @fields)
            local fields=_progkeysctl_${command%% *}_fields before='' name
            [[ $cur != *,* ]] || before=${cur%,*},
            [[ $command != 'key list' ]] || fields=_progkeysctl_listed_fields
            for name in ${!fields-}; do
                [[ ,$before == *",$name,"* ]] || echo "$before$name"
            done
            ;;
        @events) printf '%s\n' $_progkeysctl_events ;;
        @states) printf '%s\n' default factory ;;
        @commands) _progkeysctl_commands "${arguments[@]}" ;;
        @program) compgen -c -- "$cur" | sort -u ;;
        @*) ;;
        *) printf '%s\n' $1 ;;
    esac
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
    local words word cur head='' kind kinds choices given=' '
    type -P -- "$tool" >/dev/null || tool=progkeysctl
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
            option=${_progkeysctl_values[$word]+$word}
        elif [[ -n ${_progkeysctl_options[${command:- }]+known} ]]; then
            arguments+=("$word")
        else
            command+=${command:+ }$word
        fi
    done

    kinds=(${_progkeysctl_arguments[${command:- }]-})
    kind=${kinds[${#arguments[@]}]-}
    [[ -n $kind || ${kinds[-1]-} != *+ ]] || kind=${kinds[-1]}
    if [[ -n $option ]]; then
        kind=${_progkeysctl_values[$option]}
    elif [[ -z $after && $cur == --*=* ]]; then
        head=${cur%%=*}= cur=${cur#*=}
        kind=${_progkeysctl_values[${head%=}]-}
    elif [[ -z ${_progkeysctl_options[${command:- }]+known} && $cur != -* ]]; then
        arguments=($command) kind=@commands
    elif [[ -z $after && ( $cur == -* || -z $kind ) ]]; then
        kind="${_progkeysctl_options[${command:- }]-} $_progkeysctl_common"
    fi
    case ${kind%+} in
        @file) compopt -o default ;;
        @directory) compopt -o dirnames ;;
        *)
            mapfile -t choices < <(_progkeysctl_list "${kind%+}")
            arguments+=($given)
            _progkeysctl_offer "${choices[@]}"
            ;;
    esac
} 2>/dev/null

complete -o nosort -F _progkeysctl progkeysctl
