#!/bin/bash
# macos_scripts.sh RESOURCES [CASE]: runs macOS's administrator scripts as root in a temporary root
# that looks to them like a Mac; see make_root.sh. The machine is not changed. The root's /bin/sh is
# bash, as on a Mac. The cases in $in_both_shells also run with dash, because the two shells differ
# in how they treat signals and set-user-ID rights. Without CASE it runs all cases; with --list
# instead, it lists them.
# shellcheck disable=SC2016 # single quotes: the tests check that nothing expands the text
set -u

resources=$1
only=${2-}
caller=4711   # the person who pressed the button
stranger=4712 # another user of the machine
identifier=org.vornadel.HubUpdaterDriver

cases='load_and_unload work_with_the_new_commands set_the_boot_argument know_the_caller find_their_folder
    refuse_another_copy refuse_a_damaged_bundle refuse_a_place_that_others_can_write_to
    say_why_load_fails say_why_unload_fails end_in_order want_root_and_no_arguments'
in_both_shells=' load_and_unload end_in_order want_root_and_no_arguments '

# shellcheck source=../support/own_root.sh
. "${0%/*}/../support/own_root.sh"
said_in=$root/state/err
out=$root/state/out
store=$root/private/var/db
copy=$root/private/tmp/HubUpdaterDriver.kext
# shellcheck source=make_root.sh
. "${0%/*}/make_root.sh"

# install_tool FOLDER: installs the tool's resources, with a driver in the bundle.
install_tool() {
    here=$1
    bundle=$root$here/HubUpdaterDriver.kext
    mkdir -p "$root$here"
    cp -R "$resources/." "$root$here"
    rm -rf "$bundle/Contents"
    mkdir -p "$bundle/Contents/MacOS" "$bundle/Contents/_CodeSignature"
    printf '<plist version="1.0"><dict>\n<key>CFBundleIdentifier</key>\n<string>%s</string>\n%s\n' \
        "$identifier" '</dict></plist>' >"$bundle/Contents/Info.plist"
    seq 1800 >"$bundle/Contents/MacOS/HubUpdaterDriver"
    chmod 775 "$bundle/Contents/MacOS/HubUpdaterDriver"
    echo sealed >"$bundle/Contents/_CodeSignature/CodeResources"
    chown -R "$caller" "$root$here"
}

# copy_bundle [OWNER]: copies the bundle as the tool does before it starts load.
copy_bundle() {
    rm -rf "$copy"
    cp -R "$bundle" "$root/private/tmp"
    chown -R "${1-$caller}" "$copy"
}

# as_root_with UID [VARIABLE=VALUE...] -- SCRIPT ARGUMENTS...: runs a script with root as the
# effective and UID as the real user. Sets `status`, `said` (standard error) and `last` (its last
# line); /state/calls holds the recorded calls.
as_root_with() {
    local user=$1 variables=()
    shift
    while [ "$1" != -- ]; do
        variables+=("$1")
        shift
    done
    shift
    : >"$root/state/calls"
    timeout 600 env -i "${variables[@]}" "$setpriv" --ruid "$user" "$chroot" "$root" "$@" \
        >"$out" 2>"$said_in" </dev/null
    status=$?
    said=$(cat "$said_in")
    last=${said##*$'\n'}
}

# run SCRIPT ARGUMENTS...: runs a script as the system does for the tool, with the caller's whole
# environment.
run() {
    local script=$1
    shift
    as_root_with "$caller" "SUDO_UID=$stranger" PATH=/private/tmp CDPATH=/ IFS=a \
        ENV=/private/tmp/mine BASH_ENV=/private/tmp/mine 'BASH_FUNC_printf%%=() { echo mine; }' \
        -- "$here/$script" "$@"
}

# --- what is expected -----------------------------------------------------------------------------

# expect_calls CALL...: exactly these, in this order. KEPT is the new folder in the store.
expect_calls() {
    local kept='s,/private/var/db/org\.vornadel\.driver\.[A-Za-z0-9]\{6\},KEPT,g'
    expect_equal "$(sed "$kept" "$root/state/calls")" "$(printf '%s\n' "$@")"
}

# The calls that check the driver bundle and its copy, and those that install the driver.
judging=('mktemp -d KEPT' 'cp -R -P ./HubUpdaterDriver.kext KEPT/bundle'
    'PlistBuddy -c Print :CFBundleIdentifier KEPT/bundle/Contents/Info.plist' 'diff -r -q KEPT/bundle .')
placing=('mkdir KEPT/HubUpdaterDriver.kext'
    'mv KEPT/bundle/Contents KEPT/HubUpdaterDriver.kext/Contents' 'rm -rf KEPT/bundle'
    'chown -R root:wheel KEPT' 'chmod -R u=rwX,go=rX KEPT')

boot_arguments() { sed -n 's/^boot-args\t//p' "$root/state/nvram"; }

nothing_is_kept() { expect_equal "$(ls -A "$store")" ''; }

# expect_loaded: the bundle's driver is loaded from the only folder in the store, which contains
# only the driver's Contents.
expect_loaded() {
    expect_equal "$status $(cat "$root/state/out")" "0 load: $identifier is loaded"
    expect_equal "$said" ''
    expect_equal "$(cat "$root/state/loaded")" "$identifier"
    local kept=("$store"/* "$store"/.[!.]*)
    kept[0]=${kept[0]%.??????}
    expect_equal "${kept[*]##*/}" 'org.vornadel.driver .[!.]*' # the second pattern matches nothing
    expect_equal "$(cd "${kept[0]}".* && ls -A . HubUpdaterDriver.kext)" \
        $'.:\nHubUpdaterDriver.kext\n\nHubUpdaterDriver.kext:\nContents'
    expect_equal "$(diff -r "$bundle/Contents" "$store"/*/HubUpdaterDriver.kext/Contents)" ''
}

# expect_refused TEXT: load failed with one line that contains TEXT, and changed nothing.
expect_refused() {
    [ "$status" -ne 0 ] || complain "load did not refuse: '$1'"
    [ "$status" -ne 124 ] || complain 'load hung'
    case $said in
    *$'\n'*) complain 'load printed more than one line' ;;
    "load: "*"$1"*) ;;
    *) complain "load did not print '$1'" ;;
    esac
    nothing_is_kept
    expect_equal "$(cat "$root/state/loaded")" ''
    expect_equal "$(boot_arguments)" '-v  debug=0x144'
    ! grep -q -e ^kext -e ^nvram "$root/state/calls" || complain 'load called kext* or nvram'
}

# --- load and unload ------------------------------------------------------------------------------

load_and_unload() {
    local first
    run load
    expect_loaded
    expect_calls "${judging[@]}" 'sw_vers -productVersion' "${placing[@]}" \
        'kextload KEPT/HubUpdaterDriver.kext'
    expect_equal "$(diff -r "$bundle/Contents" "$root/state/driver/Contents")" ''
    expect_equal "$(find "$store"/* -type d ! -perm 755 -o -type f -perm /133 ! -name HubUpdaterDriver)" ''
    first=$(ls "$store")
    echo resealed >"$bundle/Contents/_CodeSignature/CodeResources"
    copy_bundle 0 # root may own the copy too
    run load
    expect_loaded
    [ "$(ls "$store")" != "$first" ] || complain 'load reused the old folder'
    expect_calls "${judging[@]}" 'sw_vers -productVersion' "${placing[@]}" \
        'kextload KEPT/HubUpdaterDriver.kext' 'rm -rf KEPT'

    run unload
    expect_equal "$status $(cat "$out") $said" "0 unload: $identifier is gone "
    expect_calls 'kextstat -l' "kextunload -b $identifier" 'rm -rf KEPT'
    expect_equal "$(cat "$root/state/loaded")" ''
    nothing_is_kept
    run unload
    expect_equal "$status $(cat "$out") $said" '0 unload: nothing is loaded '
    expect_calls 'kextstat -l' 'rm -rf /private/var/db/org.vornadel.driver.??????'

    # After a restart nothing is loaded, but the files are still there.
    copy_bundle
    run load
    : >"$root/state/loaded"
    mkdir "$store/org.vornadel.other" "$store/org.vornadel.driver.longer-than-ours"
    run unload
    expect_equal "$status $(cat "$out")" '0 unload: nothing is loaded'
    expect_calls 'kextstat -l' 'rm -rf KEPT'
    expect_equal "$(ls "$store")" $'org.vornadel.driver.longer-than-ours\norg.vornadel.other'
}

# What the system's commands print goes to standard error.
work_with_the_new_commands() {
    touch "$root/state/talks"
    echo 10.10.5 >"$root/state/version"
    run load
    expect_equal "$status $(cat "$out") $said" \
        "0 load: $identifier is loaded nvram: done"$'\n''kextload: done'
    run unload
    expect_equal "$status $(cat "$out") $said" "0 unload: $identifier is gone kextunload: done"
    newer_system
    echo 12.6 >"$root/state/version"
    run load
    expect_equal "$status $(cat "$out") $said" "0 load: $identifier is loaded kmutil load: done"
    expect_calls "${judging[@]}" 'sw_vers -productVersion' "${placing[@]}" \
        'kmutil load -p KEPT/HubUpdaterDriver.kext'
    run unload
    expect_equal "$status $(cat "$out") $said" "0 unload: $identifier is gone kmutil unload: done"
    expect_calls 'kmutil showloaded --list-only' "kmutil unload -b $identifier" 'rm -rf KEPT'
    nothing_is_kept
    run unload
    expect_equal "$status $(cat "$out")" '0 unload: nothing is loaded'
}

# Like the tool before it asks for a restart, load looks for 10.10 anywhere in the version.
set_the_boot_argument() {
    local version before after
    for version in 10.1.10 10.9.5 10.11.6 13.1; do
        echo $version >"$root/state/version"
        run load
        expect_loaded
        ! grep -q nvram "$root/state/calls" || complain "nvram was called on $version"
    done
    for version in 10.10 12.10.10 10.10.5; do
        printf 'boot-args\t-v  debug=0x144\n' >"$root/state/nvram"
        echo $version >"$root/state/version"
        run unload
        run load
        expect_loaded
        expect_calls "${judging[@]}" 'sw_vers -productVersion' 'nvram -p' "${placing[@]}" \
            'nvram boot-args=-v  debug=0x144 kext-dev-mode=1' 'kextload KEPT/HubUpdaterDriver.kext'
        expect_equal "$(boot_arguments)" '-v  debug=0x144 kext-dev-mode=1'
    done
    run load
    expect_loaded
    ! grep -q 'nvram boot-args' "$root/state/calls" || complain 'load set the argument twice'
    while IFS='|' read -r before after; do
        printf 'bluetooth\tboot-args\t-wrong\nboot-args\t%s\nboot-args-too\t-wrong\n' "$before" \
            >"$root/state/nvram"
        run load
        expect_loaded
        expect_equal "$(boot_arguments)" "$after"
    done <<'ARGUMENTS'
|kext-dev-mode=1
-v  -x 'a "b" $c|-v  -x 'a "b" $c kext-dev-mode=1
kext-dev-mode=1|kext-dev-mode=1
-v  kext-dev-mode=1  -x|-v  kext-dev-mode=1  -x
kext-dev-mode=10|kext-dev-mode=1
-v kext-dev-mode=0 kext-dev-mode=0 -x|-v -x kext-dev-mode=1
my-kext-dev-mode=1|my-kext-dev-mode=1 kext-dev-mode=1
-v%00|-v kext-dev-mode=1
debug=0x144 a=%25b\c&|debug=0x144 a=%25b\c& kext-dev-mode=1
ARGUMENTS
    printf 'SystemAudioVolume\t%%80\n' >"$root/state/nvram"
    run load
    expect_loaded
    expect_equal "$(boot_arguments)" 'kext-dev-mode=1'
}

know_the_caller() {
    local place
    as_root_with 0 "SUDO_UID=$caller" -- "$here/load"
    expect_loaded
    run unload
    as_root_with 0 -- "$here/load"
    expect_refused 'belongs to another user'
    as_root_with 0 'SUDO_UID=4711 -o -name x' -- "$here/load"
    expect_refused 'who called'
    as_root_with 0 'SUDO_UID=' -- "$here/load"
    expect_refused 'who called'
    as_root_with 0 'SUDO_UID=4294967296' -- "$here/load" # too large for a user id
    expect_refused ''
    for place in '' Contents Contents/MacOS/HubUpdaterDriver; do
        copy_bundle
        chown "$stranger" "$copy/$place"
        run load
        expect_refused 'sudo rm -r /tmp/HubUpdaterDriver.kext'
    done
}

find_their_folder() {
    install_tool $'/-rf/My Tool (new)/two\nlines/$(id) `id`/"quoted" '\''s/*/?/[a]/R\n'
    copy_bundle
    run load
    expect_loaded
    run unload
    nothing_is_kept
    as_root_with 0 "SUDO_UID=$caller" -- /bin/sh -c \
        'cd "$0/HubUpdaterDriver.kext/.." && sh load && sh ../*/unload' "$here"
    expect_equal "$status $(cat "$out")" \
        "0 load: $identifier is loaded"$'\n'"unload: $identifier is gone"
    install_tool /Applications/Vornadel.app/Contents/Resources
    mkdir "$root/private/tmp/${here##*/}" # where CDPATH would lead
    as_root_with 0 "SUDO_UID=$caller" CDPATH=/private/tmp -- /bin/sh -c \
        "cd '$here/..' && sh '${here##*/}/load'"
    expect_loaded
    # Because of the link, this path leads to the tool's folder. Its text leads to /tmp, where the
    # caller's copy is.
    ln -s "$here/HubUpdaterDriver.kext" "$root/private/tmp/link"
    as_root_with "$caller" -- /tmp/link/../load
    expect_loaded
    run unload
    echo more >>"$copy/Contents/MacOS/HubUpdaterDriver"
    as_root_with "$caller" -- /tmp/link/../load
    expect_refused 'differs'
}

# --- what load refuses ----------------------------------------------------------------------------

# refuse_copy TEXT COMMAND...: load must refuse with TEXT a copy that the command has changed. The
# caller owns what the command creates.
refuse_copy() {
    local text=$1
    shift
    rm -rf "$copy"
    copy_bundle
    "$@"
    [ ! -e "$copy" ] || chown -hR "$caller" "$copy"
    run load
    expect_refused "$text"
}

refuse_another_copy() {
    local file last
    for file in Contents/Info.plist Contents/MacOS/HubUpdaterDriver \
        Contents/_CodeSignature/CodeResources README.txt; do
        last=$(($(stat -c %s "$bundle/$file") - 1))
        refuse_copy differs dd if=/dev/zero of="$copy/$file" bs=1 count=1 seek=$last conv=notrunc status=none
    done
    refuse_copy differs tee -a "$copy/README.txt" <<<more >/dev/null
    refuse_copy differs touch "$copy/.hidden"
    refuse_copy differs touch "$copy/Contents/MacOS/more"
    refuse_copy differs mkdir "$copy/Contents/more"
    refuse_copy differs rm "$copy/Contents/_CodeSignature/CodeResources"
    refuse_copy 'something other than files and folders' \
        ln -sf "$here/HubUpdaterDriver.kext/Contents/Info.plist" "$copy/Contents/Info.plist"
    refuse_copy 'something other than files and folders' mkfifo "$copy/pipe"
    refuse_copy 'second hard link' ln "$copy/README.txt" "$root/private/tmp/second"
    refuse_copy 'is missing' rm -r "$copy"
    install -o "$caller" -m 644 /dev/null "$copy"
    run load
    expect_refused 'is not a folder'
    rm "$copy"
    mkfifo "$copy" && chown "$caller" "$copy"
    run load
    expect_refused 'is not a folder'
    copy_bundle
    mv "$copy" "$root/private/tmp/elsewhere"
    ln -s elsewhere "$copy" && chown -h "$caller" "$copy"
    run load
    expect_refused 'is a link'
    rm "$copy" # then a link in the path to it, which only root could make
    mkdir "$root/private/other"
    mv "$root/private/tmp/elsewhere" "$root/private/other/HubUpdaterDriver.kext"
    ln -sfn private/other "$root/tmp"
    run load
    expect_refused 'is not a folder'
}

refuse_a_damaged_bundle() {
    sed -i 's,</string>,.other</string>,' "$bundle/Contents/Info.plist"
    copy_bundle
    run load
    expect_refused "another driver, not $identifier"
    install_tool "$here"
    copy_bundle
    ln -s Info.plist "$bundle/Contents/more"
    run load
    expect_refused 'beside this script contains something other'
    rm "$bundle/Contents/more"
    mkfifo "$bundle/Contents/more"
    run load
    expect_refused 'beside this script contains something other'
    rm "$bundle/Contents/more"
    mv "$bundle" "$bundle.real"
    ln -s HubUpdaterDriver.kext.real "$bundle"
    run load
    expect_refused 'beside this script is missing'
    rm "$bundle" && mv "$bundle.real" "$bundle"
    : >"$bundle/Contents/MacOS/HubUpdaterDriver"
    run load
    expect_refused 'has no driver, Contents/MacOS/HubUpdaterDriver'
    rm -r "$bundle/Contents" # as it is shipped
    run load
    expect_refused 'has no Contents/Info.plist'
}

refuse_a_place_that_others_can_write_to() {
    local folder change
    for change in g+w o+w; do
        for folder in / /private /private/var /private/var/db; do
            chmod $change "$root$folder"
            run load
            expect_refused "users other than root can write to $folder,"
            chmod go-w "$root$folder"
        done
    done
    chown "$caller" "$store"
    run load
    expect_refused 'users other than root can write to /private/var/db,'
}

# --- what fails -----------------------------------------------------------------------------------

say_why_load_fails() {
    local command what
    touch "$root/state/refuse/kextload"
    run load
    expect_equal "$status $said" \
        $'1 kextload: refused\nload: the system refused the driver; its reason is above'
    nothing_is_kept
    echo 10.10.5 >"$root/state/version"
    run load
    expect_equal "$status $last" "1 load: kext-dev-mode=1 is set, but takes effect only after a \
restart; restart the machine and load again"
    nothing_is_kept
    expect_equal "$(boot_arguments)" '-v  debug=0x144 kext-dev-mode=1'
    run load
    expect_equal "$status $last" '1 load: the system refused the driver; its reason is above'
    nothing_is_kept
    printf 'boot-args\t-v  debug=0x144\n' >"$root/state/nvram"
    while IFS='|' read -r command what; do
        rm -f "$root"/state/refuse/*
        touch "$root/state/refuse/$command"
        run load
        expect_equal "$status $last" "1 load: $what"
        nothing_is_kept
        ! grep -q kextload "$root/state/calls" || complain 'load called kextload'
    done <<'COMMANDS'
nvram-set|the boot argument kext-dev-mode=1 cannot be set
nvram-p|the boot arguments cannot be read
sw_vers|cannot find out the system's version
mktemp|cannot write to /private/var/db
cp|the driver bundle HubUpdaterDriver.kext cannot be copied to /private/var/db
mkdir|cannot write to /private/var/db
mv|cannot write to /private/var/db
chown|cannot write to /private/var/db
chmod|cannot write to /private/var/db
diff|/tmp/HubUpdaterDriver.kext differs from the driver bundle; remove it and try again
COMMANDS
}

say_why_unload_fails() {
    run load
    touch "$root/state/refuse/kextunload"
    run unload
    expect_equal "$status $last" \
        "1 unload: the system does not release $identifier; unplug the hub and run this again"
    expect_calls 'kextstat -l' "kextunload -b $identifier"
    [ -n "$(ls -A "$store"/*/HubUpdaterDriver.kext/Contents)" ] ||
        complain 'the files of a loaded driver are gone'
    touch "$root/state/refuse/kextstat"
    run unload
    expect_equal "$status $last" '1 unload: the system does not say which drivers are loaded'
    expect_calls 'kextstat -l'
    rm "$root"/state/refuse/*
    touch "$root/state/refuse/rm"
    run unload
    expect_equal "$status $last" "1 unload: the driver is no longer loaded, but its copy, \
/private/var/db/org.vornadel.driver.*, cannot be removed"
}

# Until the script asks the system to load or unload, a signal ends it, and no files remain. From
# then on it finishes its work, even if nobody can read what it prints.
end_in_order() {
    local signal
    for signal in HUP INT PIPE QUIT TERM; do
        echo $signal >"$root/state/end_at/sw_vers"
        run load
        [ "$status" -eq 1 ] || complain "load did not end at $signal"
        nothing_is_kept
        expect_equal "$(cat "$root/state/loaded")" ''
        rm "$root/state/end_at/sw_vers"
        echo $signal | tee "$root/state/end_at/kextload" >"$root/state/end_at/kextunload"
        run load
        expect_loaded
        run unload
        expect_equal "$status $(cat "$out")" "0 unload: $identifier is gone"
        nothing_is_kept
        rm "$root"/state/end_at/*
    done
    local out=/dev/full
    run load
    expect_equal "$status" 0
    [ -s "$root/state/loaded" ] || complain 'nothing is loaded'
    run unload
    expect_equal "$status" 0
    expect_equal "$(cat "$root/state/loaded")" ''
    nothing_is_kept
}

# --- reboot, and what all three have in common ----------------------------------------------------

# A shell that is started without -p gives up root's rights. The scripts then stop with a message.
want_root_and_no_arguments() {
    local script
    for script in load unload reboot; do
        run "$script" now
        expect_equal "$status $said" "1 $script: takes no arguments"
        as_root_with 0 -- "$here/$script" ''
        expect_equal "$status $said" "1 $script: takes no arguments"
        as_root_with "$caller" -- /bin/sh "$here/$script"
        expect_equal "$status $said" "1 $script: only root can do this; run it with sudo"
        expect_calls ''
    done
    run reboot
    expect_equal "$status $said" '0 '
    expect_calls 'shutdown -r now'
    touch "$root/state/refuse/shutdown"
    run reboot
    expect_equal "$status $last" '1 reboot: the system refused to restart'
}

chroot=$(command -v chroot)
setpriv=$(command -v setpriv)
for current in $cases; do
    [ -z "$only" ] || [ "$only" = "$current" ] || continue
    for shell in dash bash; do
        [ $shell = bash ] || [[ $in_both_shells == *" $current "* ]] || continue
        make_root
        install_tool /Applications/Vornadel.app/Contents/Resources
        copy_bundle
        "$current"
        [ ! -e "$root/state/illegal" ] ||
            complain "macOS does not know: $(sort -u "$root/state/illegal" | paste -sd ' ')"
        ran=$((ran + 1))
    done
done
sum_up
