#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# lane NUMBER FAULT STATUS TEXT IMAGE: hub 1 restarts with this fault, while two others with the same
# ids run their ROM code. IMAGE is in its flash afterwards.
lane() {
    use_hub "$1"
    start_twins mode=rom "fault=$2" mode=rom
    on_hub 2 "$3" "$4" update "$new_image"
    same flash-2.bin "$5"
    same flash-1.bin "$old_image"
    same flash-3.bin "$old_image"
    stop_hubs
}

in_lanes lane 1 late:5@1 0 'Update FW Success' "$new_image" \
    -- lane 2 never@1 1 'Fail To Open Rom Device' "$old_image" \
    -- lane 3 never@2 9 'Fail to Reset to Flash Code' "$new_image"
