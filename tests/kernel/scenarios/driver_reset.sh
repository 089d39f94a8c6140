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

# The driver is another party on the same device: without it, or with it coming back, the update goes on.
start_hub
wait_for_hub
for step in 'Erase Flash...' 'Read Flash...'; do
    start_update "$new_image"
    update_reaches "$step"
    for ids in "$super_speed" "$high_speed"; do
        device_folder "$ids"
        interface=$(basename "$folder"/*:1.0)
        echo "$interface" >/sys/bus/usb/drivers/hub/unbind
        echo "$interface" >/sys/bus/usb/drivers/hub/bind
    done
    end_of_update
    [ "$update_status" -eq 0 ] || fail "the update failed when the hub driver was bound anew at '$step'"
    same flash.bin "$new_image"
    wait_for_hub
    update_well "$old_image"
    wait_for_hub
done

# A reset by another program, of either half, in each part of the update.
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
