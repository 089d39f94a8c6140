#!/bin/sh
# programs.sh VORNADEL VORNADELCTL: checks how the real programs start, write and share a hub.
set -u
vornadel=$1
vornadelctl=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# expect STATUS TEXT COMMAND...: the command must exit with the status and print the text.
expect() {
    status=$1
    text=$2
    shift 2
    actual=0
    timeout 60 "$@" >"$work/said" 2>&1 </dev/null || actual=$?
    if [ "$actual" -ne "$status" ] || ! grep -qF -e "$text" "$work/said"; then
        echo "FAILED: $* ended with $actual, expected $status and \"$text\"; it printed:"
        cat "$work/said"
        failures=$((failures + 1))
    fi
}

QT_QPA_PLATFORM=offscreen
HOME=$work
XDG_STATE_HOME=$work/state
export QT_QPA_PLATFORM HOME XDG_STATE_HOME

for program in "$vornadel" "$vornadelctl"; do
    expect 0 '1.02 (' "$program" --version
    expect 0 --simulated-hub "$program" --help
done
expect 2 --simulated-hub "$vornadel" --simulated-hub=latency=none --simulated-hub
expect 2 --simulated-hub "$vornadelctl" list --simulated-hub=latency=none --simulated-hub
expect 2 "nonsense" "$vornadel" --nonsense
expect 2 "options are hubs, image" "$vornadel" --simulated-hub=colour=red
expect 1 "vornadelctl works without one" \
    env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb "$vornadel" --simulated-hub
expect 1 "vornadelctl works without one" env QT_QPA_PLATFORM=nonsense "$vornadel" --simulated-hub

# Output that cannot be written is a failure. Messages for a closed standard error do not end up in
# another file.
hub=--simulated-hub=latency=none,mode=rom,image=$work/own.bin
# shellcheck disable=SC2016 # the inner shell's own words
expect 1 "could not be written" sh -c '"$1" "$2" list >/dev/full' sh "$vornadelctl" "$hub"
# shellcheck disable=SC2016 # the inner shell's own words
expect 1 "cannot be written" sh -c '"$1" "$2" read - >&-' sh "$vornadelctl" "$hub"
# shellcheck disable=SC2016 # the inner shell's own words
expect 1 "could not be written" sh -c '"$1" --help >/dev/full' sh "$vornadelctl"
# shellcheck disable=SC2016 # the inner shell's own words
expect 8 "" sh -c '"$1" "$2,fault=flip@write#3" update --always-write "$3" 2>&-' sh "$vornadelctl" "$hub" "$work/own.bin"
if [ -s "$work/own.bin.lock" ]; then
    echo "FAILED: standard error was written into the lock file"
    failures=$((failures + 1))
fi

# If the new file cannot be written, the old one stays, and no other file is left.
echo earlier >"$work/kept.bin"
files=$(find "$work" | wc -l)
# shellcheck disable=SC2016 # the inner shell's own words
expect 1 "File too large" sh -c 'ulimit -f 16; "$1" "$2" read --force "$3"' sh "$vornadelctl" "$hub" "$work/kept.bin"
if [ "$(cat "$work/kept.bin")" != earlier ] || [ "$(find "$work" | wc -l)" -ne "$files" ]; then
    echo "FAILED: a failed save changed the file or left another one"
    failures=$((failures + 1))
fi

# Programs that start together with a missing flash file all find it complete.
round=0
while [ $round -lt 10 ]; do
    round=$((round + 1))
    flash=$work/shared-$round.bin
    pids=
    for _ in 1 2 3 4; do
        "$vornadelctl" "--simulated-hub=latency=none,image=$flash" list >>"$work/lists" 2>&1 &
        pids="$pids $!"
    done
    for pid in $pids; do
        wait "$pid" || {
            echo "FAILED: one of four programs could not start on a new flash:"
            cat "$work/lists"
            failures=$((failures + 1))
        }
    done
done
exit $((failures > 0))
