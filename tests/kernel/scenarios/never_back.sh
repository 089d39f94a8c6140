#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# lane NUMBER FAULT STATUS REASON IMAGE: if the hub does not return from a restart, the update fails
# with the status and the reason, and the image is in the flash. Plugged in again, the hub accepts an
# update.
lane() {
    use_hub "$1"
    start_hub "fault=$2"
    wait_for_hub
    start_update "$new_image"
    end_of_update
    failed_update "$3" "$4"
    same flash.bin "$5"
    hub unplug
    hub plug
    wait_for_hub
    update_well "$old_image"
    stop_hubs
}

in_lanes lane 1 never@1 7 'the hub did not return to' "$old_image" \
    -- lane 2 never@2 9 'verified, but the hub did not return to' "$new_image"
