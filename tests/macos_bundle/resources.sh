#!/bin/bash
# resources.sh BUNDLE SOURCE: checks that the bundle holds everything for a Mac, byte for byte, and nothing
# for another system. A driver that somebody has added to the source is included.
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
[ -f "$resources/HubUpdaterDriver.kext/README.txt" ] || complain 'what the driver bundle has to hold is not said'
cmp "$source/resources/config.ini" "$resources/config.ini" || complain 'config.ini is another'
cmp "$source/packaging/macos/Vornadel.icns" "$resources/Vornadel.icns" || complain 'the icon is another'
while IFS= read -r file; do
    cmp "$source/resources/macos/$file" "$resources/$file" || complain "$file is another"
done < <(cd "$source/resources/macos" && find . -type f)
wanted=$({ cd "$source/resources" && find . -maxdepth 1 -type f; cd macos && find . -type f; echo ./Vornadel.icns; } | sort)
[ "$(cd "$resources" && find . -type f | sort)" = "$wanted" ] || complain 'other files are there than belong there'
[ "$failures" -eq 0 ]
