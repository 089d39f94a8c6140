#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# lane NUMBER FAULT STATUS TEXT HOLDS: hub 2 restarts with this fault, while two others with the same
# ids run their ROM code. Then the check HOLDS of its flash is true.
lane() {
    use_hub "$1"
    start_twins mode=rom "fault=$2" mode=rom
    on_hub 2 "$3" "$4" update "$new_image"
    $5 2
    unchanged 1
    unchanged 3
    stop_hubs
}

in_lanes lane 1 late:5@1 0 'Update FW Success' updated \
    -- lane 2 never@1 7 'Fail To Open Rom Device' unchanged \
    -- lane 3 never@2 9 'Fail to Reset to Flash Code' updated
