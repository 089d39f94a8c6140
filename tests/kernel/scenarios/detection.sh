#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

bundle tool
start_hub
hub unplug
wait_for_no_hub
open_window tool
window_shows hub 'red Detect Zel Hub: Fail'
window_shows buttons on

# The update at start is over, so detection may open the hub and read the old image's version.
for round in 1 2; do
    hub plug
    window_shows hub 'blue Detect Zel Hub : Success|fwVer:0100'
    hub unplug
    window_shows hub 'red Detect Zel Hub: Fail'
    for event in Added Removed; do
        [ "$(grep -c "^Enter Device $event" window.err)" -gt "$round" ] ||
            fail "the window program did not print 'Enter Device $event'"
    done
done
close_window
same flash.bin "$old_image"
stop_hubs
