#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub
wait_for_hub
expect 0 'Read Fw Success' "${ctl[@]}" read saved.bin
same saved.bin "$old_image"
same flash.bin "$old_image"

expect 0 'Erase FW Success' "${ctl[@]}" erase
head -c 32768 /dev/zero | tr '\0' '\377' >empty.bin
same flash.bin empty.bin
wait_for_hub
expect 0 'ROM code' "${ctl[@]}" info
expect 0 'Read Fw Success' "${ctl[@]}" read saved.bin
same saved.bin empty.bin
update_well "$new_image"
stop_hubs
