#!/bin/sh
# window_memory.sh VORNADEL CLOSE_PROBE IMAGE CHECKER: checks that the window program makes no invalid
# reads and leaks no memory. Runs the real program on an X display, then the probe, which updates the
# hub and reads its flash, then a probe that leaks a kilobyte in a button's slot, which must be
# detected. CHECKER is valgrind, or none if the programs are built with sanitizers.
set -u
vornadel=$1
probe=$2
image=$3
checker=$4
here=$(dirname "$0")
if [ "$checker" != none ] && ! command -v valgrind >/dev/null; then
    echo "window_memory.sh: valgrind is not installed" >&2
    exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
losses=definite # the possible ones are stacks of threads that still run at the end
failures=0

# Runs a program under the checker, which changes the exit status if it finds something.
complaint=1
printf '#!/bin/sh\nexec "$@"\n' >"$work/checked"
if [ "$checker" != none ]; then
    complaint=9
    cat >"$work/checked" <<END
#!/bin/sh
program=\$1
shift
exec valgrind --error-exitcode=9 --leak-check=full \\
    --show-leak-kinds=$losses --errors-for-leak-kinds=$losses \\
    --suppressions='$here/memcheck.supp' --log-file='$work/log' "\$program" "\$@"
END
fi
cat >"$work/vornadel" <<END
#!/bin/sh
exec '$work/checked' '$vornadel' "\$@"
END
chmod +x "$work/checked" "$work/vornadel"

# expect STATUS NAME COMMAND...
expect() {
    expected=$1
    name=$2
    shift 2
    status=0
    timeout 100 "$@" >"$work/said" 2>&1 || status=$?
    cat "$work/log" >>"$work/said" 2>/dev/null
    grep -E 'lost:|reachable:|SUMMARY: ' "$work/said" | sed "s/^=[^ ]* *//; s/^/$name: /"
    if [ "$status" -ne "$expected" ]; then
        echo "FAILED: $name ended with $status, not $expected"
        cat "$work/said"
        failures=$((failures + 1))
    fi
}

QT_ENABLE_REGEXP_JIT=0 # valgrind misreads the JIT code of the patterns
export QT_ENABLE_REGEXP_JIT
expect 0 "start to quit" "$here/under_xvfb" "$here/real_window.sh" "$work/vornadel"

cp "$probe" "$work/probe" # outside any bundle, so its config.ini is beside it
printf '[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 1\nHSPID_00 = 2\n' >"$work/config.ini"
QT_QPA_PLATFORM=offscreen
export QT_QPA_PLATFORM
expect 0 "update" "$work/checked" "$work/probe" "$work/flash.bin" "$image" end 0
expect 0 "flash read" "$work/checked" "$work/probe" "$work/flash.bin" "$image" panel 0
expect $complaint "a deliberate leak" "$work/checked" "$work/probe" "$work/flash.bin" "$image" loss 0
found='definitely lost: 1,024 bytes'
[ "$checker" != none ] || found='SUMMARY: AddressSanitizer: 1024 byte'
if ! grep -q "$found" "$work/said"; then
    echo "FAILED: the deliberate leak was not reported"
    cat "$work/said"
    failures=$((failures + 1))
fi
exit $((failures > 0))
