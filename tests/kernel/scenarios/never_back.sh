#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# lane SSPID HSPID FAULT REASON IMAGE: a restart without return ends the update with the reason and that image in the
# flash. Plugged in anew, the hub takes an update.
lane() {
    configure config.ini '' 0x1209 "0x$1" "0x$2"
    ctl+=(--config config.ini)
    start_hub "ids=1209:$1:$2,fault=$3"
    wait_for_hub "1209:$1" "1209:$2"
    start_update "$new_image"
    failed_update "$4"
    same flash.bin "$5"
    hub unplug
    hub plug
    wait_for_hub "1209:$1" "1209:$2"
    update_well "$old_image"
    stop_hubs
}

in_lanes lane 0300 0301 never@1 'Fail To Open Rom Device' "$old_image" \
    -- lane 0302 0303 never@2 'Fail to Reset to Flash Code' "$new_image"
