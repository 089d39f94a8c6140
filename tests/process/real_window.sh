#!/bin/sh
# real_window.sh VORNADEL: checks under X, with standard error closed, that the real program shows its
# window with its icon, and that closing it ends the program with status 0.
set -u
vornadel=$1
work=$(mktemp -d)
XDG_STATE_HOME=$work
export XDG_STATE_HOME

"$vornadel" --simulated-hub=latency=none 2>&- &
pid=$!
tries=0
until xdotool search --onlyvisible --name '^Vornadel  1[.]02 .simulated hub.$' >/dev/null 2>&1; do
    tries=$((tries + 1))
    if [ $tries -gt 300 ] || ! kill -0 $pid 2>/dev/null; then
        echo "FAILED: no window"
        kill $pid 2>/dev/null
        rm -rf "$work"
        exit 1
    fi
    sleep 0.1
done
failed=0
id=$(xdotool search --onlyvisible --name '^Vornadel  1[.]02' | head -n 1)
xprop -id "$id" _NET_WM_ICON | grep -qF '(16 x 16)' || { echo "FAILED: no icon"; failed=1; }
# The key reaches the window only once it is active.
while kill -0 $pid 2>/dev/null && [ $tries -lt 600 ]; do
    tries=$((tries + 1))
    xdotool search --onlyvisible --name '^Vornadel  1[.]02' windowactivate --sync key alt+F4 >/dev/null 2>&1
    sleep 0.1
done
kill $pid 2>/dev/null && echo "FAILED: the window did not close"
status=0
wait $pid || status=$?
rm -rf "$work"
[ $status -eq 0 ] || echo "FAILED: the program ended with $status"
exit $((status + failed))
