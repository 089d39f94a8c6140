#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# lane NUMBER FAULT STATUS TEXT HOLDS: hub 2 has this fault at a restart; the next hub, hub 3, takes
# its place or stands beside it. Then the check HOLDS of its flash is true.
lane() {
    use_hub "$1"
    start_twins '' "fault=$2" ''
    on_hub 2 "$3" "$4" update "$new_image"
    $5 2
    unchanged 1
    unchanged 3
    stop_hubs
}

in_lanes lane 1 moved@1 7 'Fail To Open Rom Device' unchanged \
    -- lane 2 moved@2 9 'Fail to Reset to Flash Code' updated \
    -- lane 3 swapped@1 7 'Fail To Open Rom Device' unchanged \
    -- lane 4 swapped@2 9 'Fail to Reset to Flash Code' updated
