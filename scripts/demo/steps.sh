# Functions of the scripts in this directory, which show commands and check their results.
set -euo pipefail
export LC_ALL=C.UTF-8

bold='' dim='' red='' plain=''
if [[ -t 1 && -z ${NO_COLOR:-} && ${TERM:-dumb} != dumb ]]; then
    bold=$'\e[1m' dim=$'\e[2m' red=$'\e[31m' plain=$'\e[0m'
fi

heading() {
    printf '\n%s%s%s\n' "$bold" "$*" "$plain"
}

fail() {
    printf '%sUnexpected result:%s %s\n' "$red" "$plain" "$*" >&2
    exit 1
}

# Prints the words, quoted for a shell.
as_typed() {
    local word
    for word; do
        if [[ $word =~ ^[[:alnum:]_./:=-]+$ ]]; then
            printf ' %s' "$word"
        else
            printf " '%s'" "$word"
        fi
    done
}

prompt() {
    printf '\n%s$%s%s\n' "$dim" "$plain" "$(as_typed "$@")"
}

# Runs a command that must succeed.
runs() {
    prompt "$@"
    "$@" || fail "the status is $?"
}

# Runs a command that must fail with this status: STATUS COMMAND...
refused() {
    local wanted=$1 status=0
    shift
    prompt "$@"
    "$@" 2>&1 || status=$?
    ((status == wanted)) || fail "the status is $status, not $wanted"
}

is() {
    [[ $2 == "$3" ]] || fail "$1: $3, not $2"
}

# Prints a field of "progkeysctl status".
status_of() {
    progkeysctl status --terse --fields "$1"
}

# Prints the keys and actions of users, one per line.
rows_of_users() {
    progkeysctl action list --terse --fields dmId,idAction,type,action,arguments,label | grep '^:' | grep -v '^:-1:'
    progkeysctl key list --terse --fields dmId,idKey,idAction,container,position,icon | grep '^:'
}

# Starts a monitor, whose output `heard` reads.
listen() {
    local lines=$PROGKEYS_SANDBOX/events messages=$PROGKEYS_SANDBOX/listening
    progkeysctl monitor >"$lines" 2>"$messages" &
    until [[ -s $messages ]]; do
        kill -0 $! 2>/dev/null || fail 'the monitor did not start'
        sleep 0.02
    done
    exec {events}<"$lines"
}

# Waits for the next event. Its line has the time, the name and the arguments, separated by two spaces.
next_event() {
    local part tries
    event=
    for ((tries = 0; tries < 500; ++tries)); do
        if IFS= read -r part <&"$events"; then
            event+=$part
            event=${event#*  }
            return
        fi
        event+=$part
        sleep 0.02
    done
    fail "no event arrived, expected $1"
}

# Checks that exactly these events are next, in this order.
heard() {
    local name event
    for name; do
        next_event "$name"
        [[ ${event%%  *} == "$name" ]] || fail "the event is $event, not $name"
        printf '  %s↳%s %s\n' "$dim" "$plain" "$event"
    done
}

# Checks that the next events are these, in any order: NAME COUNT...
heard_in_all() {
    local event name count sum=0
    local -A found=()
    for ((count = 2; count <= $#; count += 2)); do
        sum=$((sum + ${!count}))
    done
    for ((count = 0; count < sum; ++count)); do
        next_event "one of $sum"
        name=${event%%  *}
        found[$name]=$((${found[$name]:-0} + 1))
    done
    while (($# > 0)); do
        is "number of events $1" "$2" "${found[$1]:-0}"
        printf '  %s↳%s %d × %s\n' "$dim" "$plain" "$2" "$1"
        shift 2
    done
}
