#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub
wait_for_hub
expect 0 'Read Fw Success' "${ctl[@]}" read saved.bin
same saved.bin "$old_image"
same flash.bin "$old_image"

expect 1 'exists, and is not replaced without --force' "${ctl[@]}" read saved.bin

expect 10 'erase asks first' "${ctl[@]}" erase
same flash.bin "$old_image"
expect 0 'Erase FW Success' "${ctl[@]}" erase --yes
head -c 32768 /dev/zero | tr '\0' '\377' >empty.bin
same flash.bin empty.bin
wait_for_hub
expect 0 'ROM code' "${ctl[@]}" info
expect 0 'The flash is blank' "${ctl[@]}" read --force saved.bin
same saved.bin empty.bin

# The erase has saved what it erased; the blank flash was not saved.
update_well "$new_image"
wait_for_hub
backups=("$XDG_STATE_HOME"/vornadel/backups/*.bin)
[ "${#backups[@]}" -eq 1 ] || fail "there are ${#backups[@]} backups, not 1"
same "${backups[0]}" "$old_image"
expect 0 'Already up to date' "${ctl[@]}" update "$new_image"

wait_for_hub
expect 8 'version: 0100 -> 0101' "${ctl[@]}" verify "$old_image"
wait_for_hub
expect 0 "Restoring ${backups[0]}" "${ctl[@]}" restore
same flash.bin "$old_image"
wait_for_hub
expect 0 'Verify FW Success' "${ctl[@]}" verify "${backups[0]}"
wait_for_hub
expect 0 '' "${ctl[@]}" restart --rom
wait_for_hub
expect 0 'ROM code' "${ctl[@]}" info --all
stop_hubs
