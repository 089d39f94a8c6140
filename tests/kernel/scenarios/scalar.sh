#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

bundle tool demo-1.01.bin
start_hub
wait_for_hub
open_window tool
window_shows flow 'Update FW Success'
same flash.bin "$new_image"
end_of_window 0

bundle back demo-1.00.bin
wait_for_hub
expect 0 'Update FW Success' "$work/back/Vornadel.app/Contents/MacOS/vornadelctl" scalar
same flash.bin "$old_image"

# Without a hub the window stays and says why.
hub unplug
wait_for_no_hub
open_window tool
window_shows flow 'red FW:demo-1.01.bin(size=32768)'
window_shows flow 'Update FW Fail'
window_shows buttons on
close_window
stop_hubs
