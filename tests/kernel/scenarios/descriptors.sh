#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub
wait_for_hub

# half VID:PID SPEED: checks that the half runs at this speed, with the kernel's hub driver.
half() {
    device_folder "$1"
    [ "$(cat "$folder/speed")" = "$2" ] || fail "$1 runs at $(cat "$folder/speed") Mbit/s"
    [ "$(cat "$folder/bDeviceClass")" = 09 ] || fail "$1 is not of hub class"
    local interface=("$folder"/*:1.0)
    wait_until 10 'the hub driver' test -e "${interface[0]}/driver"
    [ "$(basename "$(readlink "${interface[0]}/driver")")" = hub ] || fail "$1 has another driver than hub"
}
half "$super_speed" 5000
half "$high_speed" 480

for ids in "$super_speed" "$high_speed"; do
    lsusb -v -d "$ids" >described 2>complained
    cat described complained
    [ ! -s complained ] || fail "lsusb complains: $(head -n 1 complained)"
    if grep -aiE 'unrecogni|invalid|warning|junk|too short|unexpected|bad' described >complained; then
        fail "lsusb complains: $(head -n 1 complained)"
    fi
    grep -q '^Hub Descriptor' described || fail "lsusb shows no hub descriptor of $ids"
    grep -q '^Binary Object Store' described || fail "lsusb shows no capabilities of $ids"
    grep -q '^Device Status' described || fail "lsusb shows no status of $ids"
done
stop_hubs
wait_for_no_hub
