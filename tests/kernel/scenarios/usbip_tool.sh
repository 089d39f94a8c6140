#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub mode=rom --serve
timeout 20 usbip list -r 127.0.0.1 >listed 2>&1 || fail "usbip list ended with $?: $(cat listed)"
cat listed
mapfile -t bus_ids < <(sed -n 's/^ *\([^ :]*\): .*(1209:[0-9a-f]*)$/\1/p' listed)
[ "${#bus_ids[@]}" -eq 2 ] || fail "usbip lists ${#bus_ids[@]} devices, not 2"
for bus_id in "${bus_ids[@]}"; do
    timeout 20 usbip attach -r 127.0.0.1 -b "$bus_id" || fail "usbip attach ended with $?"
done
wait_for_hub
expect 0 'ROM code' "${ctl[@]}" info
timeout 20 usbip port >ports 2>&1
cat ports
[ "$(grep -c 'usbip://127.0.0.1' ports)" -eq 2 ] || fail 'usbip does not show both halves'

# usbip does not attach a hub again that has restarted, so this does it.
attach_again() {
    wait_until 30 'the hub to leave for its restart' off_bus "$super_speed"
    for bus_id in "${bus_ids[@]}"; do
        wait_until 20 'to attach the hub again' timeout 20 usbip attach -r 127.0.0.1 -b "$bus_id"
    done
}
start_update "$new_image"
attach_again
end_of_update
[ "$update_status" -eq 0 ] || fail "the update ended with $update_status"
same flash.bin "$new_image"
wait_for_hub
expect 0 'flash code' "${ctl[@]}" info

# The hubs of other scenarios have ports too; those that usbip attached name its server.
timeout 20 usbip port 2>/dev/null |
    awk '/^Port/ { port = $2 + 0 } /usbip:\/\/127.0.0.1/ { print port }' >ports
while read -r port; do
    timeout 20 usbip detach -p "$port"
done <ports
wait_for_no_hub
stop_hubs
