#!/bin/bash
# Checks that a man page names exactly the options of --help, and these commands, and that its markup
# is valid.
#
#   man_page.sh PROGRAM PAGE COMMAND...
set -eu

program=$1
page=$2
shift 2
failed=0
plain=$(mktemp)
trap 'rm -f "$plain"' EXIT

fail() {
    echo "man_page: $1" >&2
    failed=1
}

# The page without escapes and font requests.
sed -e 's/\\f[BIPR]//g' -e 's/\\-/-/g' -e 's/\\ / /g' -e 's/^\.[BIR]* //' "$page" >"$plain"

options() {
    grep -oE -- '--[a-z][a-z-]*' | sort -u
}
# The text also names options of other programs; the synopsis and the tags of the list do not.
described=$(awk '/^\.SH/ { part = $2 } part == "SYNOPSIS" || (part == "OPTIONS" && tag) { print }
                 { tag = ($1 == ".TP") }' "$page" | sed 's/\\-/-/g' | options)
helped=$({
    "$program" --help
    for command in "$@"; do
        # shellcheck disable=SC2086 # a verb may be two words
        "$program" $command --help || true # where a command is no subcommand, there is no help
    done
} 2>/dev/null | options)
[ -n "$helped" ] || fail "--help names no options"
[ "$described" = "$helped" ] || fail "the options differ: the page has $described, --help has $helped"

for command in "$@"; do
    group=${command% *}
    [ "$group" != "$command" ] || group=''
    # shellcheck disable=SC2086 # empty if the command is in no group
    "$program" $group --help | grep -qE "[ ,]${command##* }[], .]" || fail "--help does not name the command $command"
    grep -qE "^$command( |\$)" "$plain" || fail "the page does not describe the command $command"
done

read -r _ version _ < <("$program" --version)
grep -qF "\"Vornadel $version\"" "$page" ||
    fail "the page is not of this version: $version"

if command -v groff >/dev/null; then
    warnings=$(groff -man -Tutf8 -ww -rCHECKSTYLE=3 "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$warnings"
else
    echo "man_page: groff is not installed; the markup was not checked" >&2
    failed=1
fi
exit $failed
