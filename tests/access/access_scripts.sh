#!/bin/bash
# access_scripts.sh RESOURCES [CASE]: runs the administrator scripts for real, as root, in a throw-away root of their own:
# a mount namespace with its own /etc, /tmp, /run, /sys and /dev, and with programs that write down how they are called in
# place of udevadm, setfacl and reboot. Nothing of the machine is touched. Without CASE all cases are run; with --list in
# its place they are listed.
# shellcheck disable=SC1003,SC2016 # much of what stands in single quotes is there to see that nothing expands it
set -u

resources=$1
only=${2-}
caller=4711   # the person who pressed the button
stranger=4712 # another user of the machine

cases='loads_what_the_shipped_file_names triggers_only_what_matches changes_nothing_when_repeated
    reads_numbers_as_the_tool_does skips_what_is_incomplete_or_zero lets_the_last_of_two_values_count
    refuses_numbers_that_are_none refuses_files_that_the_tool_does_not_read works_in_any_folder works_from_its_own_folder
    finds_its_folder_whatever_the_path takes_the_caller_from_sudo accepts_a_copy_of_roots refuses_a_changed_copy
    refuses_another_set_of_files refuses_links_and_pipes refuses_a_copy_that_is_no_folder
    refuses_what_another_user_made refuses_a_damaged_bundle
    replaces_what_lies_in_the_rules_place takes_access_from_hubs_no_longer_named unloads leaves_the_rules_of_others_alone
    goes_on_where_a_failed_unload_stopped says_when_udev_does_not_answer loads_where_no_rule_was_ever_made
    want_root_and_no_arguments reboots'

# shellcheck source=../support/own_root.sh
. "${0%/*}/../support/own_root.sh"

# --- the throw-away root ------------------------------------------------------------------------------------------------

recorder() {
    printf '#!/bin/sh\necho "%s $*" >>/calls\n' "$1" >"$root/usr/sbin/$1"
    chmod 755 "$root/usr/sbin/$1"
}

# plug NAME VID PID BUS NUMBER: an attached device; a vendor id of "-" makes an interface, which has none.
plug() {
    local folder=$root/sys/bus/usb/devices/$1 node
    mkdir -p "$folder"
    [ "$2" != - ] || return 0
    echo "$2" >"$folder/idVendor"
    echo "$3" >"$folder/idProduct"
    echo "$4" >"$folder/busnum"
    echo "$5" >"$folder/devnum"
    node=$root/dev/bus/usb/$(printf '%03d/%03d' "$4" "$5")
    mkdir -p "${node%/*}"
    mknod "$node" c 1 3
    chmod 664 "$node"
}

make_root() {
    umount -R "$root" 2>/dev/null
    mount -t tmpfs -o mode=755 access "$root" || { echo "FAILED: cannot mount a tmpfs" >&2; exit 1; }
    mkdir -p "$root"/{usr,etc/udev/rules.d,tmp,run,sys,dev,proc,opt}
    chmod 1777 "$root/tmp"
    local link
    for link in bin sbin lib lib64; do
        [ ! -e "/$link" ] || ln -s "usr/$link" "$root/$link"
    done
    mount --rbind /usr "$root/usr" && mount -t tmpfs -o mode=755 stubs "$root/usr/sbin" || exit 1
    cp -a /etc/alternatives /etc/passwd /etc/group "$root/etc/"
    mknod -m 666 "$root/dev/null" c 1 3
    recorder udevadm
    recorder setfacl
    recorder reboot
    plug usb1 1d6b 0002 1 1
    plug 1-1 1209 0002 1 12
    plug 1-1:1.0 - - - -
    plug 2-1 1209 0001 2 3
    plug 2-2 1209 0009 2 4
    plug 2-3 1d6b 0001 2 5
    install_tool "/opt/Vornadel.app/Contents/Resources"
}

# install_tool FOLDER: the tool's resources as an installation has them, with the ids 1209:0001:0002.
install_tool() {
    here=$1
    mkdir -p "$root$here"
    cp -R "$resources/linux/." "$resources/config.ini" "$root$here"
    config '[Support Vid Pid]' 'VID_00 = 0x1209' 'SSPID_00 = 0x0001' 'HSPID_00 = 0x0002'
}

config() { printf '%s\n' "$@" >"$root$here/config.ini"; }

# copy_bundle [OWNER]: what the tool does before it starts load.
copy_bundle() {
    rm -rf "$copy"
    cp -R "$root$here/HubUpdaterDriver.kext" "$root/tmp"
    chown -R "${1-$caller}" "$copy"
}

# run SCRIPT ARGUMENTS...: as pkexec does it. Leaves `status`, `said` (standard error) and the calls since in /calls.
run() {
    : >"$root/calls"
    local script=$1
    shift
    timeout 60 env -i PKEXEC_UID="$caller" "$chroot" "$root" "$here/$script" "$@" >"$root/out" 2>"$root/err" </dev/null
    status=$?
    said=$(cat "$root/err")
}

# --- what is expected -----------------------------------------------------------------------------------------------------

expect_calls() { expect_equal "$(cat "$root/calls")" "$(printf '%s\n' "$@")"; }

rule_line() {
    printf 'SUBSYSTEM=="usb", ENV{DEVTYPE}=="usb_device", ATTR{idVendor}=="%s", ATTR{idProduct}=="%s", ' "$1" "$2"
    printf 'GROUP="plugdev", MODE="0660", TAG+="uaccess"\n'
}

# expect_rule VID:PID...: the rule is there and is for exactly these; comments do not count, and nothing else is left behind.
expect_rule() {
    expect_equal "$status" 0
    local want='' ids
    for ids in "$@"; do
        want=$want$(rule_line "${ids%:*}" "${ids#*:}")$'\n'
    done
    expect_equal "$(grep -v '^#' "$rule")"$'\n' "$want"
    expect_equal "$(stat -c '%a %u %g' "$rule")" '644 0 0'
    expect_equal "$(ls -A "$root/etc/udev/rules.d")" 65-vornadel-hub.rules
    expect_equal "$(ls -A "$root/run")" ''
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
    expect_equal "$(ls -A "$root/etc/udev/rules.d")" ''
    expect_equal "$(ls -A "$root/run")" ''
    expect_equal "$(cat "$root/calls")" ''
}

# --- the cases ------------------------------------------------------------------------------------------------------------

loads_what_the_shipped_file_names() {
    cp "$resources/config.ini" "$root$here/config.ini"
    run load
    expect_rule 1209:0001 1209:0002 1209:0003 1209:0004
}

triggers_only_what_matches() {
    run load
    expect_rule 1209:0001 1209:0002
    expect_calls 'udevadm control --reload' 'udevadm settle --timeout=20' 'udevadm trigger --action=change /sys/bus/usb/devices/1-1' \
        'udevadm trigger --action=change /sys/bus/usb/devices/2-1' 'udevadm settle --timeout=20'
}

changes_nothing_when_repeated() {
    run load
    local first
    first=$(cat "$rule")
    copy_bundle
    run load
    expect_rule 1209:0001 1209:0002
    expect_equal "$(cat "$rule")" "$first"
    expect_equal "$(grep -c trigger "$root/calls")" 2
    expect_equal "$(stat -c '%a' "$root/dev/bus/usb/001/012")" 664
}

reads_numbers_as_the_tool_does() {
    config '[support vid pid] ' 'vid_0a = 010 ; octal' 'SSPID_0A="0xABCD"' "HsPid_0a\t= 65535" 'VID_10 = 4617' \
        'SSPID_10 = 0x1' 'HSPID_10 = 0X2' 'VID_3F=0x00001209' 'SSPID_3F=7' 'HSPID_3F=\' '8' \
        'VID_40=1' 'SSPID_40=1' 'HSPID_40=1' '[]' 'VID_00=1' 'SSPID_00=1' 'HSPID_00=1'
    sed -i "s/\\\\t/\t/" "$root$here/config.ini"
    run load
    expect_rule 0008:abcd 0008:ffff 1209:0001 1209:0002 1209:0007 1209:0008
}

skips_what_is_incomplete_or_zero() {
    config '[DumpTool Config]' 'VID_00 = 0x1111' 'SSPID_00 = 1' 'HSPID_00 = 1' '[Support Vid Pid]' \
        'VID_01 = 0x2222' 'SSPID_01 = 1' 'VID_02 = 0' 'SSPID_02 = 2' 'HSPID_02 = 3' 'VID_03 =' 'SSPID_03 = 2' \
        'HSPID_03 = 3' 'VID_04 = ""' 'SSPID_04 = 2' 'HSPID_04 = 3' 'VID_05 = 0x1209' 'SSPID_05 = 5' 'HSPID_05 = 5' \
        'VID_06 = 0x1209' 'SSPID_06 = 5' 'HSPID_06 = 6'
    run load
    expect_rule 1209:0005 1209:0006
}

lets_the_last_of_two_values_count() {
    config '[Support Vid Pid]' 'VID_00 = 1' 'SSPID_00 = 2' 'HSPID_00 = 3' 'VID_00 = 0x1209' '[support vid pid]' 'sspid_00=5'
    run load
    expect_rule 1209:0005 1209:0003
}

refuses_numbers_that_are_none() {
    local value
    for value in '"0x1209\"; RUN+=\"/bin/sh"' '0x1209", RUN+="/bin/sh' '0x10000' '65536' '-1' '+1' '0x' '08' '0x12g9' \
        '1209h' '0x1209 0x1209' '$(id)' '`id`' '18446744073709556233' '" 0x1209"' '0x11209'; do
        config '[Support Vid Pid]' "VID_00 = $value" 'SSPID_00 = 1' 'HSPID_00 = 2' \
            'VID_01 = 0x1209' 'SSPID_01 = 3' 'HSPID_01 = 4'
        run load
        expect_refused 'VID_00 is'
    done
    config '[Support Vid Pid]' 'HSPID_3F = many'
    run load
    expect_refused 'HSPID_3F is not a number'
}

refuses_files_that_the_tool_does_not_read() {
    config '[Support Vid Pid]' 'VID_00 = 0x1209' 'SSPID_00 = 1' 'HSPID_00 = 2' 'some words'
    run load
    expect_refused 'line 5 is neither'
    config '[Support Vid Pid]' "# $(printf '%01100d' 0)" 'VID_00 = 0x1209' 'SSPID_00 = 1' 'HSPID_00 = 2'
    run load
    expect_refused 'line 2 is too long'
    config $'\xef\xbb\xbf[Support Vid Pid]' 'VID_00 = 0x1209' 'SSPID_00 = 1' 'HSPID_00 = 2'
    run load
    expect_refused 'line 1 is neither'
    printf '[Support Vid Pid]\nVID_00 = 1\0\n' >"$root$here/config.ini"
    run load
    expect_refused 'no text'
    head -c 70000 /dev/zero | tr '\0' '\n' >"$root$here/config.ini"
    run load
    expect_refused 'larger than 64 KiB'
    rm "$root$here/config.ini"
    run load
    expect_refused 'config.ini is missing'
    mkfifo "$root$here/config.ini"
    run load
    expect_refused 'config.ini is missing'
    rm "$root$here/config.ini"
    config '[Support Vid Pid]'
    run load
    expect_refused 'names no supported hub'
}

works_in_any_folder() {
    local folder
    for folder in '/opt/My Tool (new)/Contents/Resources' $'/opt/two\nlines/Resources\n' '/opt/-rf/$(id) `id` "quoted" '\''s/R' \
        '/opt/*/?/[a]'; do
        install_tool "$folder"
        copy_bundle
        run load
        expect_rule 1209:0001 1209:0002
        run unload
        expect_equal "$status" 0
        expect_equal "$(ls -A "$root/etc/udev/rules.d")" ''
    done
}

works_from_its_own_folder() {
    : >"$root/calls"
    "$chroot" "$root" /bin/sh -c "cd '$here' && PKEXEC_UID=$caller sh load && cd .. && sh Resources/unload" >"$root/out" 2>"$root/err"
    expect_equal "$?" 0
    expect_equal "$(cat "$root/out")" "load: /etc/udev/rules.d/65-vornadel-hub.rules is in place
unload: /etc/udev/rules.d/65-vornadel-hub.rules is gone"
}

# A path that passes a link and goes back from there ends elsewhere than its text says: here where the caller may write.
finds_its_folder_whatever_the_path() {
    ln -s "$here/HubUpdaterDriver.kext" "$root/tmp/link"
    echo 'exit 3' >"$root/tmp/hub-access.sh"
    local here=/tmp/link/..
    run load
    expect_rule 1209:0001 1209:0002
    run unload
    expect_equal "$status" 0
    expect_equal "$(ls -A "$root/etc/udev/rules.d")" ''
}

takes_the_caller_from_sudo() {
    : >"$root/calls"
    env -i SUDO_UID="$caller" "$chroot" "$root" "$here/load" >"$root/out" 2>"$root/err"
    status=$?
    expect_rule 1209:0001 1209:0002
    rm "$rule"
    env -i "$chroot" "$root" "$here/load" >"$root/out" 2>"$root/err"
    status=$? said=$(cat "$root/err")
    : >"$root/calls"
    expect_refused 'belongs to another user'
    env -i PKEXEC_UID='4711 -o' "$chroot" "$root" "$here/load" >"$root/out" 2>"$root/err"
    status=$? said=$(cat "$root/err")
    expect_refused 'who has called'
}

accepts_a_copy_of_roots() {
    copy_bundle 0
    run load
    expect_rule 1209:0001 1209:0002
}

refuses_a_changed_copy() {
    echo '# more' >>"$copy/hub-access.rules"
    run load
    expect_refused 'differs'
    copy_bundle
    sed -i 's/plugdev/plugdew/' "$copy/hub-access.rules" && chown "$caller" "$copy/hub-access.rules"
    run load
    expect_refused 'differs'
    copy_bundle
    : >"$copy/README.txt"
    run load
    expect_refused 'differs'
}

refuses_another_set_of_files() {
    install -o "$caller" -m 644 /dev/null "$copy/more"
    run load
    expect_refused 'the same files'
    rm "$copy/more"
    install -o "$caller" -m 644 /dev/null "$copy/.hidden"
    run load
    expect_refused 'the same files'
    rm "$copy/.hidden" "$copy/README.txt"
    run load
    expect_refused 'the same files'
    mv "$copy/hub-access.rules" "$copy/HUB-ACCESS.RULES"
    cp "$root$here/HubUpdaterDriver.kext/README.txt" "$copy/" && chown "$caller" "$copy/README.txt"
    run load
    expect_refused 'differs'
    install -d -o "$caller" "$copy/folder"
    run load
    expect_refused 'plain files'
}

refuses_links_and_pipes() {
    rm "$copy/README.txt"
    ln -s "$here/HubUpdaterDriver.kext/README.txt" "$copy/README.txt" && chown -h "$caller" "$copy/README.txt"
    run load
    expect_refused 'plain files'
    rm "$copy/README.txt"
    mkfifo "$copy/README.txt" && chown "$caller" "$copy/README.txt"
    run load
    expect_refused 'plain files'
    copy_bundle
    ln "$copy/README.txt" "$root/tmp/second"
    run load
    expect_refused 'second name'
    copy_bundle
    mv "$copy" "$root/tmp/elsewhere"
    ln -s elsewhere "$copy" && chown -h "$caller" "$copy"
    run load
    expect_refused 'is a link'
}

refuses_a_copy_that_is_no_folder() {
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

refuses_what_another_user_made() {
    copy_bundle "$stranger"
    run load
    expect_refused "sudo rm -r /tmp/HubUpdaterDriver.kext"
    copy_bundle
    chown "$stranger" "$copy"
    run load
    expect_refused "another user (uid $stranger)"
    copy_bundle
    chown "$stranger" "$copy/hub-access.rules"
    run load
    expect_refused 'a file of another user'
}

refuses_a_damaged_bundle() {
    local bundle=$root$here/HubUpdaterDriver.kext
    rm "$bundle/hub-access.rules"
    copy_bundle
    run load
    expect_refused 'holds no rule'
    ln -s README.txt "$bundle/hub-access.rules"
    run load
    expect_refused 'damaged'
    rm "$bundle/hub-access.rules"
    mkfifo "$bundle/hub-access.rules"
    run load
    expect_refused 'damaged'
    rm -r "$bundle"
    run load
    expect_refused 'missing beside this script'
}

replaces_what_lies_in_the_rules_place() {
    echo precious >"$root/etc/precious"
    ln -s ../../precious "$rule"
    run load
    expect_rule 1209:0001 1209:0002
    [ ! -L "$rule" ] || complain 'the link was kept'
    expect_equal "$(cat "$root/etc/precious")" precious
}

takes_access_from_hubs_no_longer_named() {
    run load
    config '[Support Vid Pid]' 'VID_00 = 0x1209' 'SSPID_00 = 0x0009' 'HSPID_00 = 0x0002'
    chmod 660 "$root/dev/bus/usb"/*/*
    chgrp 46 "$root/dev/bus/usb"/*/*
    run load
    expect_rule 1209:0009 1209:0002
    expect_calls 'udevadm control --reload' 'udevadm settle --timeout=20' 'setfacl -b /dev/bus/usb/002/003' \
        'udevadm trigger --action=change /sys/bus/usb/devices/2-1' 'udevadm settle --timeout=20' \
        'setfacl -b /dev/bus/usb/002/003' \
        'udevadm trigger --action=change /sys/bus/usb/devices/2-1' 'udevadm settle --timeout=20' \
        'udevadm trigger --action=change /sys/bus/usb/devices/1-1' \
        'udevadm trigger --action=change /sys/bus/usb/devices/2-2' 'udevadm settle --timeout=20'
    expect_equal "$(stat -c '%a %g' "$root/dev/bus/usb/002/003")" '664 0'
    expect_equal "$(stat -c '%a %g' "$root/dev/bus/usb/002/004")" '660 46'
    expect_equal "$(stat -c '%a %g' "$root/dev/bus/usb/001/012")" '660 46'
}

unloads() {
    run load
    config '[Support Vid Pid]'
    chmod 660 "$root/dev/bus/usb"/*/*
    chgrp 46 "$root/dev/bus/usb"/*/*
    run unload
    expect_equal "$status" 0
    expect_equal "$(ls -A "$root/etc/udev/rules.d")" ''
    expect_calls 'udevadm control --reload' 'udevadm settle --timeout=20' \
        'setfacl -b /dev/bus/usb/001/012' 'setfacl -b /dev/bus/usb/002/003' \
        'udevadm trigger --action=change /sys/bus/usb/devices/1-1' \
        'udevadm trigger --action=change /sys/bus/usb/devices/2-1' 'udevadm settle --timeout=20' \
        'setfacl -b /dev/bus/usb/001/012' 'setfacl -b /dev/bus/usb/002/003' \
        'udevadm trigger --action=change /sys/bus/usb/devices/1-1' \
        'udevadm trigger --action=change /sys/bus/usb/devices/2-1' 'udevadm settle --timeout=20'
    expect_equal "$(stat -c '%a %u %g' "$root/dev/bus/usb/001/012")" '664 0 0'
    expect_equal "$(stat -c '%a %u %g' "$root/dev/bus/usb/002/003")" '664 0 0'
    expect_equal "$(stat -c '%a %g' "$root/dev/bus/usb/002/004")" '660 46'
    run unload
    expect_equal "$status" 0
    expect_equal "$(cat "$root/out")" 'unload: nothing is installed'
    expect_calls ''
}

leaves_the_rules_of_others_alone() {
    echo '# other' >"$root/etc/udev/rules.d/64-other.rules"
    run load
    run unload
    expect_equal "$(ls -A "$root/etc/udev/rules.d")" 64-other.rules
}

goes_on_where_a_failed_unload_stopped() {
    run load
    chown 0:46 "$root/dev/bus/usb/001/012"
    chmod 660 "$root/dev/bus/usb/001/012"
    cp "$root/usr/sbin/udevadm" "$root/udevadm.kept"
    printf '#!/bin/sh\n[ "$1" != settle ]\n' >"$root/usr/sbin/udevadm"
    run unload
    expect_equal "$status" 1
    cp "$root/udevadm.kept" "$root/usr/sbin/udevadm"
    run unload
    expect_equal "$status" 0
    expect_equal "$(stat -c '%a %g' "$root/dev/bus/usb/001/012")" '664 0'
    expect_equal "$(ls -A "$root/etc/udev/rules.d")" ''
}

says_when_udev_does_not_answer() {
    printf '#!/bin/sh\nexit 1\n' >"$root/usr/sbin/udevadm"
    run load
    expect_equal "$status $said" "1 load: /etc/udev/rules.d/65-vornadel-hub.rules is in place, but udev does not answer; restart the machine"
    run unload
    expect_equal "$status $said" "1 unload: /etc/udev/rules.d/65-vornadel-hub.rules is gone, but udev does not answer; call this again or restart the machine"
    rm "$root/etc/udev/rules.d/.65-vornadel-hub.leaving" # what the next call would go on with
    rm "$root/usr/sbin/udevadm"
    [ ! -e "$root/usr/bin/udevadm" ] || mount --bind "$root/dev/null" "$root/usr/bin/udevadm"
    : >"$root/calls"
    run load
    expect_refused 'udev is not installed'
}

loads_where_no_rule_was_ever_made() {
    rmdir "$root/etc/udev/rules.d" "$root/etc/udev"
    run load
    expect_rule 1209:0001 1209:0002
    rm -r "$root/sys/bus"
    run load
    expect_rule 1209:0001 1209:0002
}

want_root_and_no_arguments() {
    local script
    for script in load unload reboot; do
        run "$script" now
        expect_equal "$status $said" "1 $script: takes no arguments"
        "$chroot" --userspec="$caller:$caller" "$root" "$here/$script" >"$root/out" 2>"$root/err"
        expect_equal "$? $(cat "$root/err")" "1 $script: only root can do this; run it with pkexec or sudo"
    done
    expect_equal "$(ls -A "$root/etc/udev/rules.d")$(cat "$root/calls")" ''
}

reboots() {
    run reboot
    expect_equal "$status" 0
    expect_calls 'reboot '
}

chroot=$(command -v chroot)
rule=$root/etc/udev/rules.d/65-vornadel-hub.rules
copy=$root/tmp/HubUpdaterDriver.kext
for current in $cases; do
    if [ -z "$only" ] || [ "$only" = "$current" ]; then
        make_root
        copy_bundle
        "$current"
        ran=$((ran + 1))
    fi
done
sum_up
