#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# with_ids IMAGE SSPID HSPID: prints a demo image with these product ids, which are at 0x7E04.
with_ids() {
    head -c $((0x7E04)) "$1"
    printf '%b' "\\x${2:0:2}\\x${2:2}\\x${3:0:2}\\x${3:2}"
    tail -c +$((0x7E04 + 5)) "$1"
}

# A hub that comes back with the ids of its new image, which the configuration does not name.
with_ids "$new_image" "$(printf '%04x' $((id_base + 4)))" "$(printf '%04x' $((id_base + 5)))" >new.bin
with_ids "$old_image" "$ss_id" "$hs_id" >flash.bin
start_hubs --hub image=flash.bin
wait_for_hub
update_well new.bin
super_speed=1209:$(printf '%04x' $((id_base + 4)))
wait_until 20 'the hub with its new ids' on_bus "$super_speed"
expect 3 'no supported hub is attached' "${ctl[@]}" info
stop_hubs
