#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# lane NUMBER FAULT STATUS TEXT ARGUMENT...: the command on a hub with this fault ends like this.
lane() {
    use_hub "$1"
    start_twins "fault=$2"
    on_hub 1 "${@:3}"
    stop_hubs
}

in_lanes lane 1 ignore@rom 7 'Fail To Open Rom Device' update "$new_image" \
    -- lane 2 ignore@flash 9 'Fail to Reset to Flash Code' update "$new_image" \
    -- lane 3 same-mode@2 9 'Fail to Reset to Flash Code' update "$new_image" \
    -- lane 4 ignore@erase 8 'Fail to Erase flash' erase --yes
