# shellcheck shell=bash
# For a test that runs administrator scripts as root in a temporary root. Set `cases` (the names of
# its functions, one for each case) and `only` (one of them, --list, or nothing), then source this.
# With --list it lists the cases and ends. Otherwise the test continues in its own mount namespace,
# with an empty folder `root` that is removed at the end.

# shellcheck disable=SC2154 # set by the test
if [ "$only" = --list ]; then
    # shellcheck disable=SC2086 # the list is split into words on purpose
    printf '%s\n' $cases
    exit 0
fi
if [ -z "${OWN_NAMESPACE-}" ]; then
    if [ "$(id -u)" -ne 0 ] || ! unshare --mount true; then
        echo "FAILED: these tests need root and mount namespaces (unshare --mount), and were not run" >&2
        exit 1
    fi
    OWN_NAMESPACE=1 exec unshare --mount --propagation private "$0" "$@"
fi

root=$(mktemp -d) || exit 1
trap 'umount -R "$root" 2>/dev/null; rmdir "$root" 2>/dev/null' EXIT

shell=
said_in=$root/err # output of the script under test; the test may change the path
ran=0
failures=0

# complain TEXT: counts a failure of the case `current`, which ran with `shell`.
complain() {
    echo "FAILED: $current${shell:+ ($shell)}: $1" >&2
    [ ! -s "$said_in" ] || sed 's/^/    said: /' "$said_in" >&2
    failures=$((failures + 1))
}

expect_equal() { [ "$1" = "$2" ] || complain "expected '$2', got '$1'"; }

# Ends the test with its result.
sum_up() {
    [ "$ran" -gt 0 ] || { echo "FAILED: there is no case '$only'" >&2; exit 1; }
    echo "$ran cases, $failures failures"
    [ "$failures" -eq 0 ]
}
