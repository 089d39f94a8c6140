#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# Ends the update that runs; what it says must be true, and an update afterwards must succeed.
must_have_told_the_truth() {
    end_of_update
    if [ "$update_status" -eq 0 ]; then
        same flash.bin "$new_image"
    else
        no_success_claimed
        says update.err 'Update FW Fail' || fail 'the update did not say that it failed'
    fi
    echo "the update ended with $update_status after: $1"
    wait_for_hub
    update_well "$old_image"
    wait_for_hub
}

# bind_anew VID:PID: takes the hub driver off this half and puts it back, and counts how often that was done. The half
# may leave for its restart at any moment.
bind_anew() {
    local interface
    device_folder "$1" || return 0
    wait_until 20 "the hub driver of $1" bound_or_gone "$1"
    interface=${folder##*/}:1.0
    if { echo "$interface" >/sys/bus/usb/drivers/hub/unbind; } 2>/dev/null; then
        bound=$((bound + 1))
        { echo "$interface" >/sys/bus/usb/drivers/hub/bind; } 2>/dev/null || off_bus "$1" || fail "the hub driver did not take $1 again"
    fi
}

bound_or_gone() { ! device_folder "$1" || [ -e "$folder/${folder##*/}:1.0/driver" ]; }

# The driver is another party on the same device: without it, or with it coming back, the update goes on. The hub is back
# at once, or its halves would still be on their way when the update goes on.
start_hub latency=none
wait_for_hub
bound=0
for step in 'Erase Flash...' 'Write Flash...'; do
    start_update "$new_image"
    update_reaches "$step"
    bind_anew "$super_speed"
    bind_anew "$high_speed"
    end_of_update
    [ "$update_status" -eq 0 ] || fail "the update failed when the hub driver was bound anew at '$step'"
    same flash.bin "$new_image"
    wait_for_hub
    update_well "$old_image"
    wait_for_hub
done
[ "$bound" -gt 0 ] || fail 'the hub driver was never bound anew while an update ran'
stop_hubs

# A reset by another program, of either half, in each part of the update.
start_hub
wait_for_hub
for step in 'Erase Flash...' 'Write Flash...' 'Read Flash...'; do
    start_update "$new_image"
    update_reaches "$step"
    for ids in "$super_speed" "$high_speed"; do
        node=$(node_of "$ids")
        usbreset "${node:13:7}" || echo "no reset of $ids"
    done
    must_have_told_the_truth "a reset at '$step'"
done
stop_hubs
