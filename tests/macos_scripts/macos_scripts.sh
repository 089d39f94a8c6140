#!/bin/bash
# macos_scripts.sh RESOURCES [CASE]: runs macOS's administrator scripts for real, as root, in a throw-away root that looks to
# them as a Mac does; see make_root.sh. Nothing of the machine is touched. Each case is run with dash and with bash as the
# root's /bin/sh, which differ in what they do with the rights they are started with. Without CASE all cases are run; with
# --list in its place they are listed.
# shellcheck disable=SC2016 # much of what stands in single quotes is there to see that nothing expands it
set -u

resources=$1
only=${2-}
caller=4711   # the person who pressed the button
stranger=4712 # another user of the machine
identifier=org.vornadel.HubUpdaterDriver

cases='loads_what_lies_in_the_bundle loads_again_in_place_of_the_first loads_where_the_new_commands_are
    sets_the_boot_argument_where_it_is_wanted keeps_every_other_boot_argument leaves_other_systems_boot_arguments_alone
    takes_the_caller_from_sudo accepts_a_copy_of_roots works_in_any_folder finds_its_folder_whatever_the_path
    refuses_a_missing_copy refuses_a_changed_copy refuses_another_set_of_files refuses_links_and_pipes
    refuses_what_another_user_made refuses_a_bundle_without_its_driver refuses_a_damaged_bundle
    refuses_a_place_that_others_can_write_to says_when_the_system_takes_no_driver says_when_a_boot_argument_cannot_be_set
    says_when_something_cannot_be_told leaves_nothing_behind_when_ended ends_what_it_has_begun
    unloads end_well_when_nobody_can_hear_them keep_standard_output_to_themselves unloads_where_the_new_commands_are
    unloads_what_a_restart_has_left says_when_a_driver_cannot_be_unloaded restarts says_when_there_is_no_restart
    want_root_and_no_arguments keep_the_rights_they_are_given'

# shellcheck source=../support/own_root.sh
. "${0%/*}/../support/own_root.sh"
said_in=$root/state/err
out=$root/state/out
store=$root/private/var/db
copy=$root/private/tmp/HubUpdaterDriver.kext
# shellcheck source=make_root.sh
. "${0%/*}/make_root.sh"

# install_tool FOLDER: the tool's resources as an installation has them, with a driver in the bundle.
install_tool() {
    here=$1
    bundle=$root$here/HubUpdaterDriver.kext
    mkdir -p "$root$here"
    cp -R "$resources/." "$root$here"
    rm -rf "$bundle/Contents"
    mkdir -p "$bundle/Contents/MacOS" "$bundle/Contents/_CodeSignature"
    printf '<plist version="1.0"><dict>\n<key>CFBundleIdentifier</key>\n<string>%s</string>\n</dict></plist>\n' "$identifier" \
        >"$bundle/Contents/Info.plist"
    seq 1800 >"$bundle/Contents/MacOS/HubUpdaterDriver"
    chmod 775 "$bundle/Contents/MacOS/HubUpdaterDriver"
    echo sealed >"$bundle/Contents/_CodeSignature/CodeResources"
    chown -R "$caller" "$root$here"
}

# copy_bundle [OWNER]: what the tool does before it starts load.
copy_bundle() {
    rm -rf "$copy"
    cp -R "$bundle" "$root/private/tmp"
    chown -R "${1-$caller}" "$copy"
}

# as_root_with UID [VARIABLE=VALUE...] -- SCRIPT ARGUMENTS...: with root as effective and UID as real user. Leaves `status`,
# `said` (standard error), `last` (its last line) and the calls since in /state/calls.
as_root_with() {
    local user=$1 variables=()
    shift
    while [ "$1" != -- ]; do
        variables+=("$1")
        shift
    done
    shift
    : >"$root/state/calls"
    timeout 60 env -i "${variables[@]}" "$setpriv" --ruid "$user" "$chroot" "$root" "$@" \
        >"$out" 2>"$said_in" </dev/null
    status=$?
    said=$(cat "$said_in")
    last=${said##*$'\n'}
}

# run SCRIPT ARGUMENTS...: as the system does it for the tool, with all of the caller's variables.
run() {
    local script=$1
    shift
    as_root_with "$caller" "SUDO_UID=$stranger" PATH=/private/tmp CDPATH=/ IFS=a ENV=/private/tmp/mine BASH_ENV=/private/tmp/mine \
        'BASH_FUNC_printf%%=() { echo mine; }' -- "$here/$script" "$@"
}

# --- what is expected -----------------------------------------------------------------------------------------------------

# expect_calls CALL...: exactly these, in this order. KEPT stands for the fresh folder in the store.
expect_calls() {
    expect_equal "$(sed 's,/private/var/db/org\.vornadel\.driver\.[A-Za-z0-9]\{6\},KEPT,g' "$root/state/calls")" \
        "$(printf '%s\n' "$@")"
}

# The calls up to where the driver bundle and its copy have been found to be good, and those that put it into its place.
judging=('mktemp -d KEPT' 'cp -R -P ./HubUpdaterDriver.kext KEPT/bundle'
    'PlistBuddy -c Print :CFBundleIdentifier KEPT/bundle/Contents/Info.plist' 'diff -r -q KEPT/bundle .')
placing=('mkdir KEPT/HubUpdaterDriver.kext' 'mv KEPT/bundle/Contents KEPT/HubUpdaterDriver.kext/Contents' 'rm -rf KEPT/bundle'
    'chown -R root:wheel KEPT' 'chmod -R u=rwX,go=rX KEPT')

boot_arguments() { sed -n 's/^boot-args\t//p' "$root/state/nvram"; }

nothing_is_kept() { expect_equal "$(ls -A "$store")" ''; }

# expect_loaded: the bundle's driver is, from the one place in the store, and the file beside Contents is not with it.
expect_loaded() {
    expect_equal "$status $(cat "$root/state/out")" "0 load: $identifier is loaded"
    expect_equal "$said" ''
    expect_equal "$(cat "$root/state/loaded")" "$identifier"
    local kept=("$store"/* "$store"/.[!.]*)
    kept[0]=${kept[0]%.??????}
    expect_equal "${kept[*]##*/}" 'org.vornadel.driver .[!.]*' # which is what a pattern that matches nothing stays
    expect_equal "$(cd "${kept[0]}".* && ls -A . HubUpdaterDriver.kext)" $'.:\nHubUpdaterDriver.kext\n\nHubUpdaterDriver.kext:\nContents'
    expect_equal "$(diff -r "$bundle/Contents" "$store"/*/HubUpdaterDriver.kext/Contents)" ''
}

# expect_refused TEXT: it stopped with one line that holds TEXT, and changed nothing.
expect_refused() {
    [ "$status" -ne 0 ] || complain 'it was not refused'
    [ "$status" -ne 124 ] || complain 'it hung'
    case $said in
    *$'\n'*) complain 'more than one line was said' ;;
    "load: "*"$1"*) ;;
    *) complain "nothing was said about '$1'" ;;
    esac
    nothing_is_kept
    expect_equal "$(cat "$root/state/loaded")" ''
    expect_equal "$(boot_arguments)" '-v  debug=0x144'
    ! grep -q -e ^kext -e ^nvram "$root/state/calls" || complain 'it went too far'
}

# --- load -----------------------------------------------------------------------------------------------------------------

loads_what_lies_in_the_bundle() {
    run load
    expect_loaded
    expect_calls "${judging[@]}" 'sw_vers -productVersion' "${placing[@]}" 'kextload KEPT/HubUpdaterDriver.kext'
    expect_equal "$(diff -r "$bundle/Contents" "$root/state/driver/Contents")" ''
    expect_equal "$(find "$store"/* -type d ! -perm 755 -o -type f -perm /133 ! -name HubUpdaterDriver)" ''
}

loads_again_in_place_of_the_first() {
    run load
    local first
    first=$(ls "$store")
    echo resealed >"$bundle/Contents/_CodeSignature/CodeResources"
    copy_bundle
    run load
    expect_loaded
    [ "$(ls "$store")" != "$first" ] || complain 'the old folder was written to'
    expect_calls "${judging[@]}" 'sw_vers -productVersion' "${placing[@]}" 'kextload KEPT/HubUpdaterDriver.kext' 'rm -rf KEPT'
}

loads_where_the_new_commands_are() {
    newer_system
    echo 12.6 >"$root/state/version"
    run load
    expect_loaded
    expect_calls "${judging[@]}" 'sw_vers -productVersion' "${placing[@]}" 'kmutil load -p KEPT/HubUpdaterDriver.kext'
}

# The tool asks for a restart by the same look at the version, wherever in it the 10.10 stands.
sets_the_boot_argument_where_it_is_wanted() {
    local version
    for version in 10.10 10.10.5 12.10.10; do
        printf 'boot-args\t-v  debug=0x144\n' >"$root/state/nvram"
        echo $version >"$root/state/version"
        run load
        expect_loaded
        expect_calls "${judging[@]}" 'sw_vers -productVersion' 'nvram -p' "${placing[@]}" \
            'nvram boot-args=-v  debug=0x144 kext-dev-mode=1' 'kextload KEPT/HubUpdaterDriver.kext'
        expect_equal "$(boot_arguments)" '-v  debug=0x144 kext-dev-mode=1'
        run unload
    done
    echo 10.10.5 >"$root/state/version"
    run load
    expect_loaded
    expect_calls "${judging[@]}" 'sw_vers -productVersion' 'nvram -p' "${placing[@]}" 'kextload KEPT/HubUpdaterDriver.kext'
}

keeps_every_other_boot_argument() {
    local before after
    echo 10.10.5 >"$root/state/version"
    while IFS='|' read -r before after; do
        printf 'bluetooth\tboot-args\t-wrong\nboot-args\t%s\nboot-args-too\t-wrong\n' "$before" >"$root/state/nvram"
        run load
        expect_loaded
        expect_equal "$(boot_arguments)" "$after"
        run unload
    done <<'ARGUMENTS'
|kext-dev-mode=1
-v|-v kext-dev-mode=1
-v  -x 'a "b" $c|-v  -x 'a "b" $c kext-dev-mode=1
kext-dev-mode=1|kext-dev-mode=1
kext-dev-mode=1 -v|kext-dev-mode=1 -v
-v  kext-dev-mode=1  -x|-v  kext-dev-mode=1  -x
kext-dev-mode=10|kext-dev-mode=1
kext-dev-mode=0 -v|-v kext-dev-mode=1
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

leaves_other_systems_boot_arguments_alone() {
    local version
    for version in 10.1 10.1.10 10.9.5 10.11.6 10.15.7 11.0 13.1; do
        echo $version >"$root/state/version"
        run load
        expect_loaded
        ! grep -q nvram "$root/state/calls" || complain "nvram was called on $version"
        run unload
    done
}

takes_the_caller_from_sudo() {
    as_root_with 0 "SUDO_UID=$caller" -- "$here/load"
    expect_loaded
    run unload
    as_root_with 0 -- "$here/load"
    expect_refused 'belongs to another user'
    as_root_with 0 'SUDO_UID=4711 -o -name x' -- "$here/load"
    expect_refused 'who has called'
    local number
    for number in '' 4294967296 99999999999999999999; do # nobody, and more than there can be
        as_root_with 0 "SUDO_UID=$number" -- "$here/load"
        expect_refused ''
    done
}

accepts_a_copy_of_roots() {
    copy_bundle 0
    run load
    expect_loaded
}

works_in_any_folder() {
    local folder
    for folder in '/Applications/My Tool (new)/Contents/Resources' $'/Applications/two\nlines/Resources\n' \
        '/-rf/$(id) `id` "quoted" '\''s/R' '/Applications/*/?/[a]'; do
        install_tool "$folder"
        copy_bundle
        run load
        expect_loaded
        run unload
        nothing_is_kept
    done
    as_root_with 0 "SUDO_UID=$caller" -- /bin/sh -c "cd '$here/HubUpdaterDriver.kext/..' && sh load && sh ../*/unload"
    expect_equal "$status $(cat "$root/state/out")" "0 load: $identifier is loaded"$'\n'"unload: $identifier is gone"
    mkdir "$root/private/tmp/${here##*/}" # where CDPATH would lead
    as_root_with 0 "SUDO_UID=$caller" CDPATH=/private/tmp -- /bin/sh -c "cd '$here/..' && sh '${here##*/}/load'"
    expect_loaded
}

# A path that passes a link and goes back from there ends elsewhere than its text says: here at the caller's own copy.
finds_its_folder_whatever_the_path() {
    ln -s "$here/HubUpdaterDriver.kext" "$root/private/tmp/link"
    as_root_with "$caller" -- /tmp/link/../load
    expect_loaded
    run unload
    echo more >>"$copy/Contents/MacOS/HubUpdaterDriver"
    as_root_with "$caller" -- /tmp/link/../load
    expect_refused 'differs'
}

refuses_a_missing_copy() {
    rm -r "$copy"
    run load
    expect_refused 'is missing'
    install -o "$caller" -m 644 /dev/null "$copy"
    run load
    expect_refused 'is not a folder'
    rm "$copy"
    mkfifo "$copy" && chown "$caller" "$copy"
    run load
    expect_refused 'is not a folder'
}

refuses_a_changed_copy() {
    local file
    for file in Contents/Info.plist Contents/MacOS/HubUpdaterDriver Contents/_CodeSignature/CodeResources README.txt; do
        copy_bundle
        printf x | dd of="$copy/$file" bs=1 seek=3 conv=notrunc status=none
        run load
        expect_refused 'differs'
        copy_bundle
        echo more >>"$copy/$file"
        run load
        expect_refused 'differs'
    done
}

refuses_another_set_of_files() {
    local file
    for file in more .hidden Contents/more Contents/MacOS/more; do
        install -o "$caller" -m 644 /dev/null "$copy/$file"
        run load
        expect_refused 'differs'
        rm "$copy/$file"
        install -d -o "$caller" "$copy/$file"
        run load
        expect_refused 'differs'
        rmdir "$copy/$file"
    done
    rm "$copy/Contents/_CodeSignature/CodeResources"
    run load
    expect_refused 'differs'
}

refuses_links_and_pipes() {
    local file=Contents/Info.plist
    rm "$copy/$file"
    ln -s "$here/HubUpdaterDriver.kext/$file" "$copy/$file" && chown -h "$caller" "$copy/$file"
    run load
    expect_refused 'something else than files and folders'
    rm "$copy/$file"
    mkfifo "$copy/$file" && chown "$caller" "$copy/$file"
    run load
    expect_refused 'something else than files and folders'
    copy_bundle
    ln "$copy/$file" "$root/private/tmp/second"
    run load
    expect_refused 'second name'
    copy_bundle
    mv "$copy" "$root/private/tmp/elsewhere"
    ln -s elsewhere "$copy" && chown -h "$caller" "$copy"
    run load
    expect_refused 'is a link'
    rm "$copy" # and one on the way, which nobody but root could make
    mkdir "$root/private/other"
    mv "$root/private/tmp/elsewhere" "$root/private/other/HubUpdaterDriver.kext"
    ln -sfn private/other "$root/tmp"
    run load
    expect_refused 'is not a folder'
}

refuses_what_another_user_made() {
    local place
    for place in '' Contents Contents/MacOS Contents/MacOS/HubUpdaterDriver; do
        copy_bundle
        chown "$stranger" "$copy/$place"
        run load
        expect_refused 'sudo rm -r /tmp/HubUpdaterDriver.kext'
    done
}

refuses_a_bundle_without_its_driver() {
    : >"$bundle/Contents/MacOS/HubUpdaterDriver"
    copy_bundle
    run load
    expect_refused 'holds no driver, Contents/MacOS/HubUpdaterDriver'
    rm "$bundle/Contents/MacOS/HubUpdaterDriver"
    copy_bundle
    run load
    expect_refused 'holds no driver, Contents/MacOS/HubUpdaterDriver'
    rm -r "$bundle/Contents" # as it is shipped
    copy_bundle
    run load
    expect_refused 'holds no Contents/Info.plist'
    rm -r "$bundle"
    run load
    expect_refused 'missing beside this script'
}

refuses_a_damaged_bundle() {
    sed -i 's,</string>,.other</string>,' "$bundle/Contents/Info.plist"
    copy_bundle
    run load
    expect_refused "another driver than $identifier"
    sed -i 's/HubUpdaterDriver/AnotherDriver/' "$bundle/Contents/Info.plist"
    copy_bundle
    run load
    expect_refused "another driver than $identifier"
    sed -i 's/CFBundleIdentifier/CFBundleNothing/' "$bundle/Contents/Info.plist"
    copy_bundle
    run load
    expect_refused 'names no driver'
    install_tool "$here"
    copy_bundle
    ln -s Info.plist "$bundle/Contents/more"
    run load
    expect_refused 'beside this script holds something else'
    rm "$bundle/Contents/more"
    mkfifo "$bundle/Contents/more"
    run load
    expect_refused 'beside this script holds something else'
    mv "$bundle" "$bundle.real"
    ln -s HubUpdaterDriver.kext.real "$bundle"
    run load
    expect_refused 'missing beside this script'
}

refuses_a_place_that_others_can_write_to() {
    local folder
    for folder in / /private /private/var /private/var/db; do
        chmod g+w "$root$folder"
        run load
        expect_refused "others than root can write to $folder,"
        chmod g-w,o+w "$root$folder"
        run load
        expect_refused "others than root can write to $folder,"
        chmod o-w "$root$folder"
        chown "$caller" "$root$folder"
        run load
        expect_refused "others than root can write to $folder,"
        chown 0 "$root$folder"
    done
    run load
    expect_loaded
}

says_when_the_system_takes_no_driver() {
    touch "$root/state/refuse/kextload"
    run load
    expect_equal "$status $said" $'1 kextload: refused\nload: the system does not take the driver; its reason stands above'
    nothing_is_kept
    echo 10.10.5 >"$root/state/version"
    run load
    expect_equal "$status $last" '1 load: kext-dev-mode=1 is set and counts from the next start on; restart the machine and load again'
    nothing_is_kept
    expect_equal "$(boot_arguments)" '-v  debug=0x144 kext-dev-mode=1'
    run load
    expect_equal "$status $last" '1 load: the system does not take the driver; its reason stands above'
    nothing_is_kept
    rm "$root/sbin/kextload"
    run load
    expect_equal "$status $last" '1 load: the system does not take the driver; its reason stands above'
    nothing_is_kept
}

says_when_a_boot_argument_cannot_be_set() {
    echo 10.10.5 >"$root/state/version"
    touch "$root/state/refuse/nvram-set"
    run load
    expect_equal "$status $last" '1 load: the boot argument kext-dev-mode=1 cannot be set'
    expect_calls "${judging[@]}" 'sw_vers -productVersion' 'nvram -p' "${placing[@]}" \
        'nvram boot-args=-v  debug=0x144 kext-dev-mode=1' 'rm -rf KEPT'
    nothing_is_kept
    touch "$root/state/refuse/nvram-p"
    run load
    expect_equal "$status $last" '1 load: the boot arguments cannot be read'
    expect_calls "${judging[@]}" 'sw_vers -productVersion' 'nvram -p' 'rm -rf KEPT'
    nothing_is_kept
}

says_when_something_cannot_be_told() {
    local command
    while IFS='|' read -r command what; do
        rm -f "$root"/state/refuse/*
        touch "$root/state/refuse/$command"
        run load
        expect_equal "$status $last" "1 load: $what"
        nothing_is_kept
    done <<'COMMANDS'
sw_vers|the version of the system cannot be told
mktemp|cannot write to /private/var/db
cp|the driver bundle HubUpdaterDriver.kext cannot be copied to /private/var/db
mkdir|cannot write to /private/var/db
mv|cannot write to /private/var/db
chown|cannot write to /private/var/db
chmod|cannot write to /private/var/db
diff|/tmp/HubUpdaterDriver.kext differs from the driver bundle; remove it and try again
COMMANDS
    ! grep -q kextload "$root/state/calls" || complain 'it went too far'
}

leaves_nothing_behind_when_ended() {
    local signal
    for signal in HUP INT PIPE QUIT TERM; do
        echo $signal >"$root/state/end_at/sw_vers"
        run load
        [ "$status" -eq 1 ] || complain "it did not end itself at $signal"
        nothing_is_kept
    done
    expect_equal "$(cat "$root/state/loaded")" ''
}

ends_what_it_has_begun() {
    local signal
    for signal in HUP INT PIPE QUIT TERM; do
        echo $signal >"$root/state/end_at/kextload"
        echo $signal >"$root/state/end_at/kextunload"
        run load
        expect_loaded
        run unload
        expect_equal "$status $(cat "$root/state/out")" "0 unload: $identifier is gone"
        nothing_is_kept
    done
}

# --- unload ---------------------------------------------------------------------------------------------------------------

unloads() {
    run load
    run unload
    expect_equal "$status $(cat "$root/state/out") $said" "0 unload: $identifier is gone "
    expect_calls 'kextstat -l' "kextunload -b $identifier" 'rm -rf KEPT'
    expect_equal "$(cat "$root/state/loaded")" ''
    nothing_is_kept
    run unload
    expect_equal "$status $(cat "$root/state/out") $said" '0 unload: nothing is loaded '
    expect_calls 'kextstat -l' 'rm -rf /private/var/db/org.vornadel.driver.??????'
}

# What they have to tell is no reason to call their work a failure.
end_well_when_nobody_can_hear_them() {
    local out=/dev/full
    run load
    expect_equal "$status" 0
    [ -s "$root/state/loaded" ] || complain 'nothing is loaded'
    run unload
    expect_equal "$status" 0
    expect_equal "$(cat "$root/state/loaded")" ''
    nothing_is_kept
}

# What the system's commands have to tell goes where its complaints go.
keep_standard_output_to_themselves() {
    touch "$root/state/talks"
    echo 10.10.5 >"$root/state/version"
    run load
    expect_equal "$status $(cat "$out") $said" "0 load: $identifier is loaded nvram: done"$'\n''kextload: done'
    run unload
    expect_equal "$status $(cat "$out") $said" "0 unload: $identifier is gone kextunload: done"
    newer_system
    run load
    expect_equal "$status $(cat "$out") $said" "0 load: $identifier is loaded kmutil load: done"
    run unload
    expect_equal "$status $(cat "$out") $said" "0 unload: $identifier is gone kmutil unload: done"
}

unloads_where_the_new_commands_are() {
    newer_system
    run load
    run unload
    expect_equal "$status $(cat "$root/state/out")" "0 unload: $identifier is gone"
    expect_calls 'kmutil showloaded --list-only' "kmutil unload -b $identifier" 'rm -rf KEPT'
    nothing_is_kept
    run unload
    expect_equal "$status $(cat "$root/state/out")" '0 unload: nothing is loaded'
}

unloads_what_a_restart_has_left() {
    run load
    : >"$root/state/loaded"
    mkdir "$store/org.vornadel.other" "$store/org.vornadel.driver.longer-than-ours"
    run unload
    expect_equal "$status $(cat "$root/state/out")" '0 unload: nothing is loaded'
    expect_calls 'kextstat -l' 'rm -rf KEPT'
    expect_equal "$(ls "$store")" $'org.vornadel.driver.longer-than-ours\norg.vornadel.other'
}

says_when_a_driver_cannot_be_unloaded() {
    run load
    touch "$root/state/refuse/kextunload"
    run unload
    expect_equal "$status $last" "1 unload: the system does not let go of $identifier; unplug the hub and call this again"
    expect_calls 'kextstat -l' "kextunload -b $identifier"
    [ -n "$(ls -A "$store"/*/HubUpdaterDriver.kext/Contents)" ] || complain 'the files of a loaded driver are gone'
    touch "$root/state/refuse/kextstat"
    run unload
    expect_equal "$status $last" '1 unload: the system does not say which drivers are loaded'
    expect_calls 'kextstat -l'
    rm "$root"/state/refuse/*
    touch "$root/state/refuse/rm"
    run unload
    expect_equal "$status $last" '1 unload: the driver is not loaded any more; what was kept of it, /private/var/db/org.vornadel.driver.*, cannot be removed'
}

# --- reboot, and what all three have in common ----------------------------------------------------------------------------

restarts() {
    run reboot
    expect_equal "$status $said" '0 '
    expect_calls 'shutdown -r now'
}

says_when_there_is_no_restart() {
    touch "$root/state/refuse/shutdown"
    run reboot
    expect_equal "$status $last" '1 reboot: the system does not restart'
}

want_root_and_no_arguments() {
    local script
    for script in load unload reboot; do
        run "$script" now
        expect_equal "$status $said" "1 $script: takes no arguments"
        expect_calls ''
        as_root_with 0 -- "$here/$script" ''
        expect_equal "$status $said" "1 $script: takes no arguments"
        "$chroot" --userspec="$caller:$caller" "$root" "$here/$script" >"$root/state/out" 2>"$root/state/err"
        expect_equal "$? $(cat "$root/state/err")" "1 $script: only root can do this; run it with sudo"
        expect_calls ''
    done
    nothing_is_kept
}

# A shell that is started in any other way gives root's rights away; the scripts say so instead of failing half-way.
keep_the_rights_they_are_given() {
    local script
    for script in load unload reboot; do
        as_root_with "$caller" -- /bin/sh "$here/$script"
        expect_equal "$status $said" "1 $script: only root can do this; run it with sudo"
        expect_calls ''
        as_root_with "$caller" -- "$here/$script"
        expect_equal "$status $said" '0 '
    done
}

chroot=$(command -v chroot)
setpriv=$(command -v setpriv)
for current in $cases; do
    [ -z "$only" ] || [ "$only" = "$current" ] || continue
    for shell in dash bash; do
        make_root
        install_tool /Applications/Vornadel.app/Contents/Resources
        copy_bundle
        "$current"
        [ ! -e "$root/state/illegal" ] || complain "macOS does not know: $(sort -u "$root/state/illegal" | paste -sd ' ')"
        ran=$((ran + 1))
    done
done
sum_up
