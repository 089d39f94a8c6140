#!/bin/bash
# resources.sh BUNDLE SOURCE: checks that the bundle contains all files for a Mac, byte for byte, and
# none for another system. A driver added to the source is included.
set -u

bundle=$1
source=$2
failures=0

complain() {
    echo "FAILED: $1" >&2
    failures=$((failures + 1))
}

resources=$bundle/Contents/Resources
for script in load unload reboot; do
    [ -x "$resources/$script" ] || complain "$script cannot be run"
done
[ -f "$resources/HubUpdaterDriver.kext/README.txt" ] || complain 'the README of the driver bundle is missing'
cmp "$source/resources/config.ini" "$resources/config.ini" || complain 'config.ini differs'
cmp "$source/packaging/macos/Vornadel.icns" "$resources/Vornadel.icns" || complain 'the icon differs'
while IFS= read -r file; do
    cmp "$source/resources/macos/$file" "$resources/$file" || complain "$file differs"
done < <(cd "$source/resources/macos" && find . -type f)
wanted=$({
    cd "$source/resources" && find . -maxdepth 1 -type f
    cd macos && find . -type f
    echo ./Vornadel.icns
    cd "$source" && ls ./README.md ./CONTRIBUTING.md ./LICENSE
    find ./docs -maxdepth 1 -type f
} | sort)
[ "$(cd "$resources" && find . -type f | sort)" = "$wanted" ] ||
    complain 'files are missing, or there are others'
[ "$failures" -eq 0 ]
