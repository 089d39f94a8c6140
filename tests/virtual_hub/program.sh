#!/bin/bash
# Tests vornadel-virtual-hub as a process: commands, signals, exit statuses and the refusals that need
# no kernel module.
#
#   program.sh PROGRAM
set -eum # without job control, background programs would ignore SIGINT

program=$1
folder=$(mktemp -d)
pid=''
end() {
    [ -z "$pid" ] || kill -KILL "$pid" 2>/dev/null || true
    rm -rf "$folder"
}
trap end EXIT

fail() {
    echo "program: $1" >&2
    exit 1
}

# Starts the program in the background; its input is file 7, its output file 8.
start() {
    rm -f "$folder/in" "$folder/out"
    mkfifo "$folder/in" "$folder/out"
    # This script itself may have been started with the signals ignored, as in the background.
    env --default-signal=INT,TERM,HUP "$program" "$@" <"$folder/in" >"$folder/out" 2>"$folder/err" &
    pid=$!
    exec 7>"$folder/in" 8<"$folder/out"
}

# The next line of output must match this pattern.
expect() {
    read -r -t 20 -u 8 line || fail "no answer instead of \"$1\"; $(cat "$folder/err")"
    # shellcheck disable=SC2053 # a pattern on purpose
    [[ $line == $1 ]] || fail "answered \"$line\", not \"$1\""
}

ends_with() {
    status=0
    wait "$pid" || status=$?
    pid=''
    exec 7>&- 8<&-
    [ "$status" = "$1" ] || fail "ended with $status, not $1; $(cat "$folder/err")"
}

# refuses REASON ARGUMENTS...: a separate run must fail with this reason.
refuses() {
    reason=$1
    shift
    status=0
    "$program" "$@" </dev/null >"$folder/second" 2>&1 || status=$?
    if [ $status != 1 ] || ! grep -q "$reason" "$folder/second"; then
        fail "ended with $status, not because of \"$reason\": $(cat "$folder/second")"
    fi
}

hub="image=$folder/flash.bin,latency=none"

start --serve=0 --hub "$hub"
expect 'port [1-9]*'
port=${line#port }
expect ready
printf 'status\nunp' >&7
expect 'ok code=flash superspeed=2-1 high-speed=1-1 requests=0 faults=0'
printf 'lug\nstatus\n' >&7
expect ok
expect 'ok code=flash superspeed=- high-speed=- requests=0 faults=0'
echo nonsense >&7
expect 'error: *'
head -c 5000 /dev/zero | tr '\0' x >&7
printf 'unplug\nplug\n' >&7 # the rest of the line, and the next one
expect 'error: the line is too long'
expect ok

# A second program finds the port and the file in use.
refuses "port $port of 127.0.0.1" --serve="$port" --hub "image=$folder/other.bin"
refuses 'in use by another' --serve=0 --hub "$hub"

echo quit >&7
expect ok
ends_with 0

start --serve=0 --hub "$hub"
expect 'port *'
expect ready
printf quit >&7
exec 7>&-
expect ok
ends_with 0

if [ -w /dev/full ]; then
    status=0
    "$program" --serve=0 --hub "$hub" </dev/null >/dev/full 2>"$folder/err" || status=$?
    [ $status = 1 ] || fail "ended with $status when it could not write"
    grep -q 'cannot write to standard output' "$folder/err" || fail "does not say that it could not write"
fi

for signal in INT TERM HUP; do
    start --serve=0 --hub "$hub"
    expect 'port *'
    expect ready
    exec 7>&- # the program goes on after the end of its input
    kill -s $signal "$pid"
    ends_with 0
done

# It also works without any standard file; only the flash file shows that.
rm "$folder/flash.bin"
"$program" --serve=0 --hub "$hub" <&- >&- 2>&- &
pid=$!
deadline=$((SECONDS + 20))
until [ -e "$folder/flash.bin" ]; do
    kill -0 "$pid" 2>/dev/null || fail "ended at once without its standard files"
    [ "$SECONDS" -lt "$deadline" ] || fail "does not start without its standard files"
done
kill -TERM "$pid"
status=0
wait "$pid" || status=$?
pid=''
[ $status = 0 ] || fail "ended with $status without its standard files"

start --nonsense
ends_with 2
grep -q nonsense "$folder/err" || fail "does not say what was wrong"

if [ ! -e /sys/devices/platform/vhci_hcd.0 ]; then
    refuses 'modprobe vhci-hcd' --hub "$hub"
fi
