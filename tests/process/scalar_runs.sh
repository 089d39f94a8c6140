#!/bin/sh
# scalar_runs.sh PROBE IMAGE COUNT: the program updates a hub and exits with status 0, every time.
set -u
probe=$1
image=$2
count=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
QT_QPA_PLATFORM=offscreen
export QT_QPA_PLATFORM

failures=0
run=0
while [ $run -lt "$count" ]; do
    run=$((run + 1))
    rm -f "$work/flash.bin"
    status=0
    timeout 60 "$probe" "$work/flash.bin" >"$work/said" 2>&1 || status=$?
    if [ $status -ne 0 ] || ! cmp -s "$work/flash.bin" "$image"; then
        echo "FAILED: run $run ended with $status; it said:"
        cat "$work/said"
        failures=$((failures + 1))
    fi
done
echo "$count runs, $failures failures"
[ $failures -eq 0 ]
