#!/bin/sh
# What load and unload have in common. They read this file; it does nothing by itself.
# shellcheck disable=SC2034,SC2154 # they use what is set here, and have set what is used

rules_directory=/etc/udev/rules.d
rule=$rules_directory/65-vornadel-hub.rules
# A rule whose devices have not all lost their access yet; udev takes no notice of it. Whoever is called next goes on
# where a script that failed or was killed has stopped.
leaving=$rules_directory/.65-vornadel-hub.leaving

# fail TEXT: ends the script with one line of why.
fail() {
    printf '%s: %s\n' "$program" "$1" >&2
    exit 1
}

# need_machine: root and udev, without which nothing can be done.
need_machine() {
    [ "$(id -u)" -eq 0 ] || fail 'only root can do this; run it with pkexec or sudo'
    command -v udevadm >/dev/null || fail 'udev is not installed'
}

# ids_of_rule FILE: a line "VID PID" for each device of a rule that was made by load.
ids_of_rule() {
    [ ! -f "$1" ] || sed -n \
        's/^SUBSYSTEM.*ATTR{idVendor}=="\([0-9a-f]\{4\}\)", ATTR{idProduct}=="\([0-9a-f]\{4\}\)".*$/\1 \2/p' "$1"
}

# attached IDS: the sysfs folders of the attached devices whose ids are among the lines of IDS, one on a line.
attached() {
    for device in /sys/bus/usb/devices/*; do
        { read -r vid <"$device/idVendor" && read -r pid <"$device/idProduct"; } 2>/dev/null || continue
        if printf '%s\n' "$1" | grep -qxF -e "$vid $pid"; then
            printf '%s\n' "$device"
        fi
    done
}

# reset_access IDS: gives the nodes of these devices the owner and mode that udev gives them without us. udev never
# takes back a group or an access list by itself; what other rules grant comes back when udev looks again.
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

# reload_udev: has udev read its rules again, and waits until nothing is under way by the old ones.
reload_udev() {
    udevadm control --reload && udevadm settle --timeout=20
}

# retrigger IDS: has udev apply its rules again to these devices, and waits until it has.
retrigger() {
    attached "$1" | (
        failed=0
        while IFS= read -r device; do
            # A device that has been unplugged meanwhile is no failure.
            udevadm trigger --action=change "$device" </dev/null || [ ! -e "$device" ] || failed=1
        done
        exit "$failed"
    ) && udevadm settle --timeout=20
}

# take_access IDS: makes sure that nothing of a rule that is gone stays with these devices. Twice, because udev goes by the
# tag uaccess once more while it handles the first event after the rule has gone.
take_access() {
    reset_access "$1"
    retrigger "$1" || return 1
    reset_access "$1"
    retrigger "$1" || return 1
    if [ -n "$(attached "$1")" ] && ! command -v setfacl >/dev/null; then
        printf '%s: setfacl is not installed: the seat may keep its access until the hub is unplugged\n' "$program" >&2
    fi
}
