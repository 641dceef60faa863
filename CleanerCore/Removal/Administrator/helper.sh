#!/bin/bash
# The root helper: started as root with one password prompt, it serves the application until that is gone, says
# QUIT, or has been silent for IDLE_LIMIT seconds. It believes nothing that the application says about a path.
#
#   helper.sh FOLDER TOKEN PID      PID is the application's
#
# A request is one line on the named pipe FOLDER/cmd, "TOKEN OPERATION WORD...", paths in Base64; its reply is one
# line on FOLDER/out that begins with OK or ERR. It must run with the bash 3.2 that macOS has, and it does nothing
# before its last line, so that all of it has been read by then: the file is the user's.

IDLE_LIMIT=1800 # seconds without a request
READ_LIMIT=20   # seconds until it looks again whether the application lives

ALLOWED_ROOTS=(
    "/Library/Caches/"
    "/Library/Logs/"
    "/private/var/log/"
    "/private/var/folders/"
    "/Library/LaunchDaemons/"
    "/Library/LaunchAgents/"
    "/Library/Application Support/"
    "/Library/Containers/"
    "/Applications/"
)

# The program puts the commands that differ by system here, each a function: decode_base64, working_folder, remove,
# kill_process, bootout, purge, periodic_daily, periodic_weekly, periodic_monthly, rebuild_spotlight, flush_dns.
#@settings@

# Nothing of the caller's environment decides what runs here, and in which language it speaks.
PATH=/usr/bin:/bin:/usr/sbin:/sbin
LC_ALL=C
IFS=$' \t\n'
export PATH LC_ALL
unset CDPATH
umask 077
set -f
trap '' PIPE # a reader may go at any time

is_pipe() {
    [ -p "./$1" ] && [ ! -L "./$1" ]
}

serving() {
    kill -0 "$APPLICATION" 2>/dev/null && ((SECONDS - last < IDLE_LIMIT)) && is_pipe cmd && is_pipe out
}

inodes() {
    ls -di . ./cmd ./out
}

folder_owner() {
    # shellcheck disable=SC2012,SC2046 # the words of one line without names
    set -- $(ls -ldn .)
    printf '%s' "$3"
}

application_owner() {
    # shellcheck disable=SC2046 # without the blanks before it
    printf '%s' $(ps -o uid= -p "$APPLICATION")
}

# The folder is the user's, who could exchange a pipe for a link right before it is opened: root would then write to
# any file, or make one. So root takes the folder before it looks, and gives it back when the pipe is open. The user
# gets to the pipes meanwhile. Without root's rights there is nothing to gain. False when something is not what it was.
take_folder() {
    [ "$EUID" != 0 ] || { chown 0 . && chmod 711 .; } || return 1
    is_pipe cmd && is_pipe out && [ "$(inodes)" = "$seen" ]
}

give_folder_back() {
    [ "$EUID" != 0 ] || { chmod 700 . && chown "$owner" .; }
}

# What the folder holds goes by the names in here, since the way to the folder may lead elsewhere by now.
leave() {
    exec 3<&-
    take_folder 2>/dev/null
    set +f
    rm -rf -- ./* ./.[!.]*
    give_folder_back 2>/dev/null
    [ "$FOLDER" -ef . ] && cd -P .. && rmdir -- "./${FOLDER##*/}"
    exit
}

# A process of its own writes, since opening the pipe waits for a reader and this one must notice that none ever comes.
reply() {
    local writer pauses=(0.01 0.1 1) turn=0
    take_folder || leave
    { exec 4>./out && give_folder_back && printf '%s\n' "$1" >&4; } 2>/dev/null 3<&- &
    writer=$!
    while kill -0 "$writer" 2>/dev/null; do
        serving || kill "$writer"
        sleep "${pauses[turn]}" 3<&-
        ((turn == 2)) || turn=$((turn + 1))
    done
    wait "$writer" 2>/dev/null
}

# Sets `path`. The full stop keeps line breaks at the end of a path from being cut off.
decode() {
    path=$(printf '%s' "$1" | decode_base64 2>/dev/null && printf .) || {
        path=$1
        return 1
    }
    path=${path%.}
}

under_allowed_root() {
    local root
    for root in "${ALLOWED_ROOTS[@]}"; do
        case $1 in "$root"*) return 0 ;; esac
    done
    return 1
}

allowed() {
    case $1 in
    *..*) return 1 ;;
    /*) under_allowed_root "$1" ;;
    *) return 1 ;;
    esac
}

# Goes into the folder that holds an item and sets `name` to how the item is called there. Fails when that folder,
# with all links followed, is not in an allowed place; this is what refuses a root itself, too. It goes there first
# and asks afterwards where it is, by a program, since the shell would answer from memory: whatever a link is exchanged
# for meanwhile, the answer is about the folder in which "./$name" will be looked up. Whoever calls this stands
# elsewhere afterwards, and so does it in a process of its own.
entered=''
enter_parent() {
    local item=$1 parent here
    while [ "${item%/}" != "$item" ]; do item=${item%/}; done
    parent=${item%/*}/
    name=${item##*/}
    [ -n "$name" ] && [ "$name" != . ] || return 1
    [ "$parent" != "$entered" ] || return 0 # it stands there still
    entered=''
    cd -P -- "$parent" 2>/dev/null || {
        [ -d "$parent" ] || return 2 # gone, and all it held with it
        return 1
    }
    here=$(working_folder && printf .) || return 1
    under_allowed_root "${here%??}/" || return 1
    entered=$parent
}

remove_item() {
    local name
    enter_parent "$1"
    case $? in
    0) remove "./$name" 2>/dev/null ;;
    2) true ;;
    *) false ;;
    esac
}

remove_items() {
    local word path removed=0 failed=''
    for word in "$@"; do
        if decode "$word" && allowed "$path" && remove_item "$path"; then
            removed=$((removed + 1))
        else
            failed="$failed $path"
        fi
    done
    if [ -z "$failed" ]; then printf 'OK removed %s' "$removed"; else printf 'ERR refused%s' "$failed"; fi
}

serve_purge() {
    local output
    if output=$(purge 2>&1); then reply "OK $output"; else reply "ERR $output"; fi
}

serve_kill() {
    local output
    case $1$2 in
    '' | *[!0-9]*) reply 'ERR bad-args' ;;
    *) if output=$(kill_process "-$1" "$2" 2>&1); then reply 'OK'; else reply "ERR $output"; fi ;;
    esac
}

serve_bootout() {
    local path
    if decode "$1" && allowed "$path" && (enter_parent "$path"); then
        reply "OK $(bootout "$path" 2>&1)"
    else
        reply "ERR refused $path"
    fi
}

serve_script() {
    case $1 in
    periodic-daily) reply "OK $(periodic_daily 2>&1)" ;;
    periodic-weekly) reply "OK $(periodic_weekly 2>&1)" ;;
    periodic-monthly) reply "OK $(periodic_monthly 2>&1)" ;;
    rebuild-spotlight) reply "OK $(rebuild_spotlight 2>&1)" ;;
    flush-dns) reply "OK $(flush_dns 2>&1)" ;;
    *) reply 'ERR unknown-script' ;;
    esac
}

# Takes the words of one request; false when it was the last.
serve() {
    [ "$1" = "$TOKEN" ] || {
        reply 'ERR bad-token'
        return 0
    }
    case $2 in
    PING) reply 'OK' ;;
    QUIT)
        reply 'OK'
        return 1
        ;;
    PURGE) serve_purge ;;
    KILL) serve_kill "$3" "$4" ;;
    BOOTOUT) serve_bootout "$3" ;;
    RM) reply "$(remove_items "${@:3}")" ;;
    SCRIPT) serve_script "$3" ;;
    *) reply 'ERR unknown-op' ;;
    esac
    return 0
}

# Reads requests until the last one.
serve_all() {
    local request='' part complete
    while serving; do
        part=''
        IFS='' read -r -t "$READ_LIMIT" -u 3 part
        complete=$?
        request=$request$part
        # A long line may take longer than the limit to come.
        [ "$complete" = 0 ] || continue
        [ -n "$request" ] || continue
        last=$SECONDS
        # shellcheck disable=SC2086 # split into words on purpose; set -f keeps them from being file patterns
        serve $request || break
        request=''
    done
}

main() {
    FOLDER=$1
    TOKEN=$2
    APPLICATION=$3
    [ -n "$FOLDER" ] && [ -n "$TOKEN" ] && [ -n "$APPLICATION" ] || exit 1
    # From here on the folder is ".", so that this helper never answers, let alone removes, a later session that made a
    # folder of the same name.
    cd -P -- "$FOLDER" || exit 1
    exec </dev/null
    owner=$(folder_owner)
    [ "$owner" = "$(application_owner)" ] || exit 1 # nobody else's folder is changed, wherever the way led
    last=$SECONDS
    seen=$(inodes)
    take_folder || leave
    exec 3<>./cmd
    give_folder_back
    serve_all
    leave
}

main "$@"
