#!/bin/sh
# What load and unload have in common. They read this file; it does nothing by itself.
# shellcheck disable=SC2034,SC2154 # they use what is set here, and have set what is used

rules_directory=/etc/udev/rules.d
rule=$rules_directory/65-vornadel-hub.rules
# The next rule while it is being written; udev ignores it.
new_rule=$rules_directory/.65-vornadel-hub.new
# A rule whose devices have not all lost their access yet; udev ignores it. If a script fails or is
# killed, the next one continues from here.
leaving=$rules_directory/.65-vornadel-hub.leaving
# Both are in /run, where only root can create files.
lock=/run/vornadel-hub-access.lock
work=/run/vornadel-load

# fail TEXT: ends the script with one line that says why.
fail() {
    printf '%s: %s\n' "$program" "$1" >&2
    exit 1
}

# need_machine: fails without root or one of the commands that nothing works without.
need_machine() {
    [ "$(id -u)" -eq 0 ] || fail 'only root can do this; run it with pkexec or sudo'
    command -v udevadm >/dev/null || fail 'udev is not installed'
    command -v flock >/dev/null || fail 'flock (package util-linux) is not installed'
}

# wait_for_tool: waits until the tool no longer uses the hub, which may be in the middle of a
# restart. This script's standard input is then an anonymous file that nobody else can open, and the
# tool holds a lock on it while it uses the hub. Other kinds of standard input do not count: a lock
# on a terminal or on /dev/null could be anybody's.
wait_for_tool() {
    [ -f /proc/self/fd/0 ] || return 0
    flock -x -w 120 0 ||
        echo "$program: the hub has been in use for two minutes; not waiting any longer" >&2
}

# lock_out_others: lets one load or unload run at a time, and removes what a killed load left.
# Only root can open the lock file, so nobody else can hold the lock.
lock_out_others() {
    (umask 077 && : >>"$lock") 2>/dev/null || fail 'cannot write to /run'
    exec 9>>"$lock"
    flock -x -w 300 9 || fail 'another load or unload is still running; try again later'
    rm -rf "$work" && rm -f "$new_rule"
}

# ids_of_rule FILE: a line "VID PID" for each device of a rule that was made by load.
ids_of_rule() {
    id='"\([0-9a-f]\{4\}\)"'
    [ ! -f "$1" ] ||
        sed -n "s/^SUBSYSTEM.*ATTR{idVendor}==$id, ATTR{idProduct}==$id.*\$/\1 \2/p" "$1"
}

# attached IDS: the sysfs folders of the attached devices whose ids are in IDS, one per line.
attached() {
    for device in /sys/bus/usb/devices/*; do
        { read -r vid <"$device/idVendor" && read -r pid <"$device/idProduct"; } 2>/dev/null || continue
        if printf '%s\n' "$1" | grep -qxF -e "$vid $pid"; then
            printf '%s\n' "$device"
        fi
    done
}

# reset_access IDS: gives the nodes of these devices the owner and mode that they have without our
# rule. udev never takes back a group or an access list. What other rules grant comes back when udev
# looks at the device again.
reset_access() {
    attached "$1" | while IFS= read -r device; do
        { read -r bus <"$device/busnum" && read -r number <"$device/devnum"; } 2>/dev/null || continue
        node=$(printf '/dev/bus/usb/%03d/%03d' "$bus" "$number")
        [ -c "$node" ] || continue
        chown root:root "$node"
        if command -v setfacl >/dev/null; then
            setfacl -b "$node"
        fi
        chmod 0664 "$node"
    done
}

# reload_udev: makes udev read its rules again, and waits until it has stopped using the old ones.
reload_udev() {
    udevadm control --reload && udevadm settle --timeout=20
}

# retrigger IDS: makes udev apply its rules to these devices again, and waits until it has.
retrigger() {
    attached "$1" | (
        failed=0
        while IFS= read -r device; do
            # A device that was unplugged meanwhile is no failure.
            udevadm trigger --action=change "$device" </dev/null || [ ! -e "$device" ] || failed=1
        done
        exit "$failed"
    ) && udevadm settle --timeout=20
}

# take_access IDS: removes what a deleted rule has granted on these devices. Twice, because udev
# still obeys the tag uaccess while it handles the first event after the rule has gone.
take_access() {
    reset_access "$1"
    retrigger "$1" || return 1
    reset_access "$1"
    retrigger "$1" || return 1
    if [ -n "$(attached "$1")" ] && ! command -v setfacl >/dev/null; then
        echo "$program: setfacl is not installed; the user at the seat may keep access until the" \
            "hub is unplugged" >&2
    fi
}
