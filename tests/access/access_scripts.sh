#!/bin/bash
# access_scripts.sh RESOURCES [CASE]: runs the administrator scripts as root in a temporary root: a
# mount namespace with its own /etc, /tmp, /run, /sys and /dev. udevadm, setfacl and reboot are
# programs there that record their calls. The machine is not changed. Without CASE it runs all
# cases; with --list instead, it lists them.
# shellcheck disable=SC1003,SC2016 # single quotes: the tests check that nothing expands the text
set -u

resources=$1
only=${2-}
caller=4711   # the person who pressed the button
stranger=4712 # another user of the machine

cases='load_and_unload read_the_configuration find_their_folder know_the_caller refuse_another_copy
    refuse_a_copy_exchanged_meanwhile refuse_a_damaged_bundle take_the_access_away
    continue_after_a_failure wait_for_the_tool_and_each_other want_root_and_no_arguments'

# shellcheck source=../support/own_root.sh
. "${0%/*}/../support/own_root.sh"

# --- the temporary root ---------------------------------------------------------------------------

recorder() {
    printf '#!/bin/sh\necho "%s $*" >>/calls\n' "$1" >"$root/usr/sbin/$1"
    chmod 755 "$root/usr/sbin/$1"
}

# before COMMAND TEXT: makes the shell run TEXT each time before it runs the command.
before() {
    printf '#!/bin/sh\n%s\nexec "/usr/bin/%s" "$@"\n' "$2" "$1" >"$root/usr/sbin/$1"
    chmod 755 "$root/usr/sbin/$1"
}

# plug NAME VID PID BUS NUMBER: an attached device; if VID is -, an interface, which has no ids.
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
    mkdir -p "$root"/{usr,etc/udev/rules.d,tmp,run,sys,dev,proc,opt,hostile}
    chmod 1777 "$root/tmp"
    local link
    for link in bin sbin lib lib64; do
        [ ! -e "/$link" ] || ln -s "usr/$link" "$root/$link"
    done
    mount --rbind /usr "$root/usr" && mount -t tmpfs -o mode=755 stubs "$root/usr/sbin" &&
        mount --rbind /proc "$root/proc" || exit 1
    cp -a /etc/alternatives /etc/passwd /etc/group "$root/etc/"
    mknod -m 666 "$root/dev/null" c 1 3
    recorder udevadm
    recorder setfacl
    recorder reboot
    # A hostile folder on the caller's PATH replaces every command that the scripts use.
    printf '#!/bin/sh\necho "$0" >>/hostile/used\n' >"$root/hostile/id"
    chmod 755 "$root/hostile/id"
    for link in awk cat chmod chown cmp cp dd find flock grep mkdir mv rm sed setfacl stat tail tr \
        udevadm wc; do
        ln "$root/hostile/id" "$root/hostile/$link"
    done
    plug usb1 1d6b 0002 1 1
    plug 1-1 1209 0002 1 12
    plug 1-1:1.0 - - - -
    plug 2-1 1209 0001 2 3
    plug 2-2 1209 0009 2 4
    plug 2-3 1d6b 0001 2 5
    install_tool "/opt/Vornadel.app/Contents/Resources"
}

# install_tool FOLDER: installs the tool's resources, with the ids 1209:0001 and 1209:0002 in
# config.ini. One file of the bundle has the largest allowed size.
install_tool() {
    here=$1
    bundle=$root$here/HubUpdaterDriver.kext
    mkdir -p "$root$here"
    cp -R "$resources/linux/." "$resources/config.ini" "$root$here"
    seq 100000 | head -c 65536 >"$bundle/large"
    ids 0x0001 0x0002
}

config() { printf '%s\n' "$@" >"$root$here/config.ini"; }
ids() { config '[Support Vid Pid]' 'VID_00 = 0x1209' "SSPID_00 = $1" "HSPID_00 = $2"; }

# copy_bundle [OWNER]: copies the bundle as the tool does before it starts load.
copy_bundle() {
    rm -rf "$copy"
    cp -R "$bundle" "$root/tmp"
    chown -R "${1-$caller}" "$copy"
}

# run_with VARIABLE=VALUE... -- SCRIPT ARGUMENTS...: runs a script with these variables, a hostile
# environment and $input as standard input. Sets `status` and `said` (standard error); /calls holds
# the recorded calls.
input=/dev/null
run_with() {
    local variables=()
    while [ "$1" != -- ]; do
        variables+=("$1")
        shift
    done
    shift
    : >"$root/calls"
    (
        umask 0
        timeout 600 env -i PATH=/hostile CDPATH=/ ENV=/hostile/env "${variables[@]}" "$chroot" "$root" "$@"
        exit $?
    ) >"$root/out" 2>"$root/err" <"$input"
    status=$?
    said=$(cat "$root/err")
}

# run SCRIPT ARGUMENTS...: runs a script as pkexec does.
run() {
    local script=$1
    shift
    run_with PKEXEC_UID="$caller" -- "$here/$script" "$@"
}

# --- what is expected -----------------------------------------------------------------------------

expect_calls() { expect_equal "$(cat "$root/calls")" "$(printf '%s\n' "$@")"; }
expect_said() { expect_equal "$status $said" "$1"; }
rules() { ls -A "$root/etc/udev/rules.d"; }
left_in_run() { find "$root/run" -mindepth 1 ! -name vornadel-hub-access.lock; }

# The calls that the scripts make.
reload=('udevadm control --reload' 'udevadm settle --timeout=20')
high_speed_taken='setfacl -b /dev/bus/usb/001/012'
super_speed_taken='setfacl -b /dev/bus/usb/002/003'
high_speed_triggered='udevadm trigger --action=change /sys/bus/usb/devices/1-1'
super_speed_triggered='udevadm trigger --action=change /sys/bus/usb/devices/2-1'
settled='udevadm settle --timeout=20'

# open_nodes: changes the nodes as the rule does. node BUS/NUMBER: mode, owner and group of a node.
open_nodes() { chmod 660 "$root/dev/bus/usb"/*/* && chgrp 46 "$root/dev/bus/usb"/*/*; }
node() { stat -c '%a %u %g' "$root/dev/bus/usb/$1"; }

# expect_rule VID:PID...: the script succeeded, the rule names exactly these hubs (comments do not
# count), and no other file is left.
expect_rule() {
    expect_equal "$status" 0
    local want='' ids
    for ids in "$@"; do
        want+='SUBSYSTEM=="usb", ENV{DEVTYPE}=="usb_device", '
        want+="ATTR{idVendor}==\"${ids%:*}\", ATTR{idProduct}==\"${ids#*:}\", "
        want+='GROUP="plugdev", MODE="0660", TAG+="uaccess"'$'\n'
    done
    expect_equal "$(grep -v '^#' "$rule")"$'\n' "$want"
    expect_equal "$(stat -c '%a %u %g' "$rule")" '644 0 0'
    expect_equal "$(rules)" 65-vornadel-hub.rules
    expect_equal "$(left_in_run)" ''
}

# expect_gone: the script succeeded, and no rule is left.
expect_gone() { expect_equal "$status$(rules)" 0; }

# expect_refused TEXT: load failed with one line that contains TEXT, and changed nothing.
expect_refused() {
    [ "$status" -ne 0 ] || complain "load did not refuse: '$1'"
    [ "$status" -ne 124 ] || complain 'load hung'
    case $said in
    *$'\n'*) complain 'load printed more than one line' ;;
    "load: "*"$1"*) ;;
    *) complain "load did not print '$1'" ;;
    esac
    expect_equal "$(rules)" ''
    expect_equal "$(left_in_run)" ''
    expect_equal "$(cat "$root/calls")" ''
}

# --- the cases ------------------------------------------------------------------------------------

load_and_unload() {
    local first other=$root/etc/udev/rules.d/64-other.rules
    run load
    expect_rule 1209:0001 1209:0002
    expect_equal "$(cat "$root/out")" 'load: /etc/udev/rules.d/65-vornadel-hub.rules is in place'
    expect_calls "${reload[@]}" "$high_speed_triggered" "$super_speed_triggered" "$settled"
    expect_equal "$(stat -c %a "$root/run/vornadel-hub-access.lock")" 600
    first=$(cat "$rule")
    copy_bundle
    run load
    expect_rule 1209:0001 1209:0002
    expect_equal "$(cat "$rule")" "$first"
    expect_equal "$(node 001/012)" '664 0 0'

    config '[Support Vid Pid]'
    echo '# other' >"$other"
    open_nodes
    run unload
    expect_equal "$status $(rules)" '0 64-other.rules'
    expect_equal "$(cat "$root/out")" 'unload: /etc/udev/rules.d/65-vornadel-hub.rules is gone'
    expect_calls "${reload[@]}" "$high_speed_taken" "$super_speed_taken" \
        "$high_speed_triggered" "$super_speed_triggered" "$settled" "$high_speed_taken" "$super_speed_taken" \
        "$high_speed_triggered" "$super_speed_triggered" "$settled"
    expect_equal "$(node 001/012) $(node 002/003)" '664 0 0 664 0 0'
    expect_equal "$(node 002/004)" '660 0 46'
    run unload
    expect_equal "$status $(cat "$root/out")" '0 unload: nothing is installed'
    expect_calls ''

    # A link in the rule's place is replaced, never followed. A folder is left alone.
    rm "$other"
    ids 0x0001 0x0002
    echo precious >"$root/etc/precious"
    ln -s ../../precious "$rule"
    run load
    expect_rule 1209:0001 1209:0002
    expect_equal "$(cat "$root/etc/precious")" precious
    rm "$rule"
    mkdir "$rule"
    run load
    expect_equal "$status ${said##*$'\n'}" '1 load: cannot write /etc/udev/rules.d/65-vornadel-hub.rules'
    expect_equal "$(rules)$(ls -A "$rule")" 65-vornadel-hub.rules

    # A machine without udev rules and without USB; the shipped config.ini.
    rm -r "$root/etc/udev" "$root/sys/bus"
    cp "$resources/config.ini" "$root$here/config.ini"
    run load
    expect_rule 1209:0001 1209:0002 1209:0003 1209:0004
    expect_equal "$(stat -c %a "$root/etc/udev/rules.d")" 755
}

# ids_of LINE...: the ids that the scripts read from these lines of config.ini.
ids_of() { printf '%s\n' "$@" | LC_ALL=C awk -f "$root$here/supported-ids.awk"; }

read_the_configuration() {
    local value
    expect_equal "$(ids_of '[support vid pid] ' 'vid_0a = 010 ; octal' 'SSPID_0A="0xABCD"' \
        $'HsPid_0a\t= 65535' 'VID_10 = 4617' 'SSPID_10 = 0x1' 'HSPID_10 = 0X2' 'VID_3F=0x00001209' \
        'SSPID_3F=7' 'HSPID_3F=\' '8' 'VID_40=1' 'SSPID_40=1' 'HSPID_40=1' '[]' \
        'VID_00=1' 'SSPID_00=1' 'HSPID_00=1')" \
        $'0008 abcd\n0008 ffff\n1209 0001\n1209 0002\n1209 0007\n1209 0008'
    for value in '0x1209", RUN+="/bin/sh' '0x10000' '65536' '-1' '+1' '0x' '08' '0x12g9' '1209h' \
        '0x1209 0x1209' '$(id)' '`id`' '18446744073709556233' '" 0x1209"' '0x11209'; do
        ids_of '[Support Vid Pid]' "VID_00 = $value" 'VID_01 = 0x1209' 'SSPID_01 = 3' 'HSPID_01 = 4' \
            >"$root/ids" && complain "$value was read as a number"
        [[ $(cat "$root/ids") == 'config.ini: VID_00 is'* ]] ||
            complain "$value was answered with '$(cat "$root/ids")'"
    done
    expect_equal "$(ids_of '[Support Vid Pid]' 'HSPID_3F = many')" 'config.ini: HSPID_3F is not a number'
    expect_equal "$(ids_of '[Support Vid Pid]' 'some words')" \
        'config.ini: line 2 is neither a section, a key with its value nor a comment'
    expect_equal "$(ids_of $'\xef\xbb\xbf[Support Vid Pid]')" \
        'config.ini: line 1 is neither a section, a key with its value nor a comment'
    expect_equal "$(ids_of '' "# $(printf '%01100d' 0)")" 'config.ini: line 2 is too long'

    ids '"0x1\"; RUN+=\"/bin/sh"' 2
    run load
    expect_refused 'SSPID_00 is not a number'
    config '[Support Vid Pid]'
    run load
    expect_refused 'names no supported hub'
    printf '[Support Vid Pid]\nVID_00 = 1\0\n' >"$root$here/config.ini"
    run load
    expect_refused 'not a text file'
    ids 1 2
    head -c 65536 /dev/zero | tr '\0' '\n' >>"$root$here/config.ini"
    truncate -s 65536 "$root$here/config.ini"
    run load
    expect_rule 1209:0001 1209:0002
    rm "$rule"
    echo >>"$root$here/config.ini"
    run load
    expect_refused 'larger than 64 KiB'
    rm "$root$here/config.ini"
    run load
    expect_refused 'config.ini is missing'
    mkfifo "$root$here/config.ini"
    run load
    expect_refused 'config.ini is missing'
}

find_their_folder() {
    install_tool $'/opt/-rf/My Tool (new)/two\nlines/$(id) `id`/"quoted" '\''s/*/?/[a]/R\n'
    copy_bundle
    run load
    expect_rule 1209:0001 1209:0002
    run unload
    expect_gone
    run_with PKEXEC_UID="$caller" -- /bin/sh -c 'cd "$0" && /bin/sh load && cd .. && /bin/sh */unload' "$here"
    expect_gone
    # Because of the link, this path leads to the tool's folder. Its text leads to /tmp, where the
    # caller can write.
    ln -s "$here/HubUpdaterDriver.kext" "$root/tmp/link"
    echo 'exit 3' >"$root/tmp/hub-access.sh"
    here=/tmp/link/..
    run load
    expect_rule 1209:0001 1209:0002
    run unload
    expect_gone
}

know_the_caller() {
    run_with SUDO_UID="$caller" -- "$here/load"
    expect_rule 1209:0001 1209:0002
    run unload
    run_with -- "$here/load"
    expect_refused "another user (uid $caller)"
    run_with PKEXEC_UID='4711 -o' -- "$here/load"
    expect_refused 'who called'
    copy_bundle 0
    run load
    expect_rule 1209:0001 1209:0002
    run unload
    copy_bundle "$stranger"
    run load
    expect_refused 'sudo rm -r /tmp/HubUpdaterDriver.kext'
    copy_bundle
    chown "$stranger" "$copy/hub-access.rules"
    run load
    expect_refused 'a file of another user'
}

# refuse_file TEXT COMMAND...: load must refuse with TEXT a copy that the command has changed. The
# caller owns what the command creates.
refuse_file() {
    local text=$1
    shift
    copy_bundle
    "$@"
    [ -L "$copy" ] || [ ! -d "$copy" ] || chown -hR "$caller" "$copy"
    run load
    expect_refused "$text"
}

refuse_another_copy() {
    refuse_file differs sed -i 's/plugdev/plugdew/' "$copy/hub-access.rules"
    refuse_file differs sed -i '$a# more' "$copy/hub-access.rules"
    refuse_file differs truncate -s 0 "$copy/README.txt"
    refuse_file differs dd if=/dev/zero of="$copy/large" bs=1 seek=65535 count=1 conv=notrunc status=none
    refuse_file differs mv "$copy/hub-access.rules" "$copy/HUB-ACCESS.RULES"
    refuse_file 'the same files' touch "$copy/more"
    refuse_file 'the same files' touch "$copy/.hidden"
    refuse_file 'the same files' rm "$copy/README.txt"
    refuse_file 'plain files' mkdir "$copy/folder"
    refuse_file 'plain files' ln -sf "$here/HubUpdaterDriver.kext/README.txt" "$copy/README.txt"
    refuse_file 'plain files' mkfifo "$copy/pipe"
    refuse_file 'second hard link' ln "$copy/README.txt" "$root/tmp/second"
    refuse_file 'is missing' rm -r "$copy"
    install -o "$caller" -m 644 /dev/null "$copy"
    run load
    expect_refused 'is not a folder'
    rm "$copy" && mkfifo "$copy" && chown "$caller" "$copy"
    run load
    expect_refused 'is not a folder'
    copy_bundle
    mv "$copy" "$root/tmp/elsewhere"
    ln -s elsewhere "$copy" && chown -h "$caller" "$copy"
    run load
    expect_refused 'is a link'
}

# The caller replaces files between the check and the use.
refuse_a_copy_exchanged_meanwhile() {
    before dd "case \$1 in
        if=./README.txt) ln -sf '$here/HubUpdaterDriver.kext/README.txt' README.txt ;; esac"
    run load
    expect_refused differs
    copy_bundle
    before dd 'case $1 in if=./README.txt) rm -f README.txt; mkfifo README.txt ;; esac'
    run load
    expect_refused differs
    rm "$root/usr/sbin/dd"
    copy_bundle
    before stat '[ -e /tmp/first ] ||
        { mv /tmp/HubUpdaterDriver.kext /tmp/first; mkdir /tmp/HubUpdaterDriver.kext; }'
    run load
    expect_refused 'is not a folder'
}

refuse_a_damaged_bundle() {
    mv "$bundle/hub-access.rules" "$root/kept"
    copy_bundle
    run load
    expect_refused 'contains no rule'
    ln -s README.txt "$bundle/hub-access.rules"
    run load
    expect_refused 'damaged'
    rm "$bundle/hub-access.rules" && mkfifo "$bundle/hub-access.rules"
    run load
    expect_refused 'damaged'
    rm "$bundle/hub-access.rules" && cp "$root/kept" "$bundle/hub-access.rules"
    echo >>"$bundle/large"
    run load
    expect_refused 'damaged'
    rm -r "$bundle"
    run load
    expect_refused 'missing beside this script'
}

take_the_access_away() {
    run load
    ids 0x0009 0x0002
    open_nodes
    run load
    expect_rule 1209:0009 1209:0002
    expect_calls "${reload[@]}" "$super_speed_taken" "$super_speed_triggered" "$settled" \
        "$super_speed_taken" "$super_speed_triggered" "$settled" \
        "$high_speed_triggered" 'udevadm trigger --action=change /sys/bus/usb/devices/2-2' "$settled"
    expect_equal "$(node 002/003)" '664 0 0'
    expect_equal "$(node 002/004) $(node 001/012)" '660 0 46 660 0 46'
}

# udev_fails WORD: each udevadm command with this word fails.
udev_fails() { printf '#!/bin/sh\n[ "$1" != %s ]\n' "$1" >"$root/usr/sbin/udevadm"; }

continue_after_a_failure() {
    local word leaving=$root/etc/udev/rules.d/.65-vornadel-hub.leaving in_place is_gone
    in_place='1 load: /etc/udev/rules.d/65-vornadel-hub.rules is in place'
    is_gone='1 unload: /etc/udev/rules.d/65-vornadel-hub.rules is gone'
    run load
    for word in control trigger; do # before unload withdraws access, and halfway through
        open_nodes
        udev_fails $word
        run unload
        case $word in
        control) expect_said "$is_gone, but udev does not answer; run this again or restart the machine" ;;
        trigger) expect_said "$is_gone; run this again or unplug the hub" ;;
        esac
        expect_equal "$(stat -c %a "$leaving")" 644
        recorder udevadm
        open_nodes
        run unload
        expect_gone
        expect_equal "$(node 001/012) $(node 002/003)" '664 0 0 664 0 0'
        run load
    done

    ids 0x0009 0x0002
    udev_fails trigger
    run load
    expect_said "$in_place; hubs that it no longer names stay accessible until they are unplugged"
    open_nodes
    recorder udevadm
    run load
    expect_rule 1209:0009 1209:0002
    expect_equal "$(node 002/003) $(node 002/004)" '664 0 0 660 0 46'
    udev_fails settle
    run load
    expect_said "$in_place, but udev does not answer; restart the machine"

    # A killed load leaves files; the next load removes them.
    recorder udevadm
    before chmod 'kill -KILL "$PPID"'
    run load
    expect_equal "$status" 137
    if [ "$(rules | wc -l)" -ne 2 ] || [ -z "$(left_in_run)" ]; then
        complain 'load was killed at another moment'
    fi
    rm "$root/usr/sbin/chmod"
    run load
    expect_rule 1209:0009 1209:0002
    run unload

    rm "$root/usr/sbin/udevadm"
    [ ! -e "$root/usr/bin/udevadm" ] || mount --bind "$root/dev/null" "$root/usr/bin/udevadm"
    : >"$root/calls"
    run load
    expect_refused 'udev is not installed'
}

# while_waiting COMMAND...: starts unload, and runs the command while unload waits. Until then
# unload must change nothing; afterwards it must succeed.
while_waiting() {
    { run unload; echo "$status" >"$root/status"; } &
    timeout 600 cat "$root/waits" >/dev/null || complain 'unload did not wait'
    expect_equal "$(rules) $(cat "$root/calls")" '65-vornadel-hub.rules '
    "$@"
    wait $!
    status=$(cat "$root/status") said=$(cat "$root/err")
    expect_gone
}

wait_for_the_tool_and_each_other() {
    local held calls='case "$*" in *" $(cat /lock)") echo >/waits ;; esac'
    mkfifo "$root/waits"
    before flock "$calls"
    # unload waits for the tool's lock first. It ignores a standard input that is not a plain file.
    echo none >"$root/lock"
    run load
    : >"$root/input"
    input=$root/input
    exec {held}<"$root/input"
    flock -s "$held"
    echo 0 >"$root/lock"
    while_waiting flock -u "$held"
    expect_equal "$said" ''
    input=/dev/null
    echo none >"$root/lock"
    run load
    exec {held}<&-
    # It also waits for another script's lock.
    echo 9 >"$root/lock"
    exec {held}<"$root/run/vornadel-hub-access.lock"
    flock -x "$held"
    while_waiting flock -u "$held"
    exec {held}<&-

    # Both waits end. unload withdraws access even if the tool keeps its lock.
    printf '#!/bin/sh\necho "flock $*" >>/calls\n[ "$4" != "$(cat /lock)" ]\n' >"$root/usr/sbin/flock"
    echo none >"$root/lock"
    run load
    input=$root/input
    echo 0 >"$root/lock"
    run unload
    expect_said '0 unload: the hub has been in use for two minutes; not waiting any longer'
    expect_gone
    expect_equal "$(grep flock "$root/calls")" $'flock -x -w 120 0\nflock -x -w 300 9'
    echo 9 >"$root/lock"
    run load
    expect_equal "$status $said" '1 load: another load or unload is still running; try again later'
    # load waits for the tool only if it withdraws access.
    echo none >"$root/lock"
    run load
    expect_equal "$(grep flock "$root/calls")" 'flock -x -w 300 9'
    ids 0x0009 0x0002
    run load
    expect_equal "$(grep flock "$root/calls")" $'flock -x -w 300 9\nflock -x -w 120 0'
    input=/dev/null
    run unload
    expect_equal "$(grep flock "$root/calls")" 'flock -x -w 300 9'
}

want_root_and_no_arguments() {
    local script
    for script in load unload reboot; do
        run "$script" now
        expect_said "1 $script: takes no arguments"
        "$chroot" --userspec="$caller:$caller" "$root" "$here/$script" >"$root/out" 2>"$root/err"
        expect_equal "$? $(cat "$root/err")" "1 $script: only root can do this; run it with pkexec or sudo"
    done
    expect_equal "$(rules)$(cat "$root/calls")" ''
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
        [ ! -e "$root/hostile/used" ] ||
            complain "used from the caller's PATH: $(sort -u "$root/hostile/used")"
        input=/dev/null
        ran=$((ran + 1))
    fi
done
sum_up
