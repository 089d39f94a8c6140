#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub
wait_for_hub
expect 0 'flash code' "${ctl[@]}" info
update_well "$new_image"
wait_for_hub
expect 0 '0101' "${ctl[@]}" info

hub unplug
wait_for_no_hub
hub plug-rom
wait_for_hub
expect 0 'ROM code' "${ctl[@]}" info
update_well "$old_image"
wait_for_hub
expect 0 'flash code' "${ctl[@]}" info
stop_hubs
