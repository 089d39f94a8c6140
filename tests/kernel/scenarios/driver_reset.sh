#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# bind_anew VID:PID: unbinds the hub driver from this half, binds it again and counts this. The half
# may leave for its restart at any moment.
bind_anew() {
    local interface
    device_folder "$1" || return 0
    wait_until 20 "the hub driver of $1" bound_or_gone "$1"
    interface=${folder##*/}:1.0
    if { echo "$interface" >/sys/bus/usb/drivers/hub/unbind; } 2>/dev/null; then
        bound=$((bound + 1))
        # Fails if the half has left meanwhile; if it has come back, the kernel has bound it itself.
        { echo "$interface" >/sys/bus/usb/drivers/hub/bind; } 2>/dev/null ||
            wait_until 20 "the hub driver to take $1 again" bound_or_gone "$1"
    fi
}

bound_or_gone() { ! device_folder "$1" || [ -e "$folder/${folder##*/}:1.0/driver" ]; }

# The kernel goes on setting up a hub for some 300 ms after it has bound it. A reset meanwhile makes it
# submit a transfer twice, of which it complains.
is_set_up_or_gone() {
    local milliseconds
    device_folder "$1" || return 0
    { read -r milliseconds <"$folder/power/connected_duration"; } 2>/dev/null || return 0
    [ "$milliseconds" -ge 2000 ]
}

images=("$old_image" "$new_image")
round=0

# begin_update STEP: starts an update with the image that is not in the flash; stops it at this
# step.
begin_update() {
    round=$((round + 1))
    image=${images[round % 2]}
    wait_for_hub
    start_update "$image"
    update_reaches "$1"
    kill -STOP "$update_pid"
}

go_on() {
    kill -CONT "$update_pid"
    end_of_update
}

# The update must not need the hub driver, nor be disturbed when it is bound again. The hub restarts
# without delay; otherwise its halves would still be missing when the update goes on.
start_hub latency=none
bound=0
for step in 'Erase Flash...' 'Write Flash...'; do
    begin_update "$step"
    bind_anew "$super_speed"
    bind_anew "$high_speed"
    go_on
    [ "$update_status" -eq 0 ] || fail "the update failed when the hub driver was bound anew at '$step'"
    same flash.bin "$image"
done
[ "$bound" -gt 0 ] || fail 'the hub driver was never bound anew while an update ran'
stop_hubs
wait_for_no_hub

# A reset of either half by another program may end the update. Its result must be true, and the
# next update must succeed.
start_hub
round=0
resets=0
for step in 'Erase Flash...' 'Write Flash...'; do
    begin_update "$step"
    for ids in "$super_speed" "$high_speed"; do
        wait_until 20 "the kernel to set up $ids" is_set_up_or_gone "$ids"
        if on_bus "$ids" && node=$(node_of "$ids") && usbreset "${node:13:7}"; then
            resets=$((resets + 1))
        fi
    done
    go_on
    echo "the update ended with $update_status after a reset at '$step'"
    if [ "$update_status" -ne 0 ]; then
        no_success_claimed
        says update.err 'Update FW Fail' || fail 'the update did not say that it failed'
        wait_for_hub
        update_well "$image"
    fi
    same flash.bin "$image"
done
[ "$resets" -gt 0 ] || fail 'the hub was never reset while an update ran'
wait_for_hub
update_well "$old_image"
stop_hubs
