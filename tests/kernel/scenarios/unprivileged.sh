#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

user=4711
stranger=4712
group=$(getent group plugdev | cut -d: -f3)
[ -n "$group" ] || fail 'there is no group plugdev'
bundle /tmp/scenarios/installed
chmod -R a+rX /tmp/scenarios/installed
installed=/tmp/scenarios/installed/Vornadel.app/Contents

as_user() {
    as=(setpriv --reuid "$user" --regid "$user" --groups "$group")
    ctl=("${as[@]}" env HOME=/tmp XDG_STATE_HOME=/tmp/state-of-user "$installed/MacOS/vornadelctl")
}
as_stranger() {
    as=(setpriv --reuid "$stranger" --regid "$stranger" --clear-groups)
    ctl=("${as[@]}" env HOME=/tmp XDG_STATE_HOME=/tmp/state-of-stranger "$installed/MacOS/vornadelctl")
}

# may_write: whether the user may write to the nodes of both halves.
may_write() {
    "${as[@]}" test -w "$(node_of "$super_speed")" && "${as[@]}" test -w "$(node_of "$high_speed")"
}

refused() {
    ! may_write || fail "user ${as[2]} may write to the hub's nodes"
    expect 0 'no access' "${ctl[@]}" list
    expect 5 'permission is missing' "${ctl[@]}" info
    expect 5 'permission is missing' "${ctl[@]}" update "$new_image"
    says said 'Update FW Fail' || fail 'the update did not say that it failed'
    same flash.bin "$old_image"
}

start_hub
wait_for_hub
as_user
refused

cp -R "$installed/Resources/HubUpdaterDriver.kext" /tmp/
chown -R "$user" /tmp/HubUpdaterDriver.kext
SUDO_UID=$user patience=120 expect 0 'is in place' "$installed/Resources/load"
as_stranger
refused
as_user
may_write || fail "the user may not write to the hub's nodes"
update_well "$new_image"
wait_for_hub
update_well "$old_image"
wait_for_hub

SUDO_UID=$user patience=120 expect 0 'is gone' "$installed/Resources/unload"
refused
hub unplug
wait_for_no_hub
hub plug
wait_for_hub
refused
stop_hubs
