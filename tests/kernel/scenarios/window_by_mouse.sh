#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

if [ -z "${DISPLAY-}" ]; then
    exec /run/tree/tests/process/under_xvfb bash "$kernel_tests/guest/one" "$name" "$id_base"
fi

# click BUTTON: clicks at the position that the window reports.
click() {
    window "where $1"
    window_shows "at $1" ' '
    local lines x y
    mapfile -t lines < <(grep "^at $1: " window.out)
    read -r x y <<<"${lines[-1]#*: }"
    xdotool mousemove "$x" "$y" click 1
}

bundle tool
start_hub
hub unplug
wait_for_no_hub
open_window tool
wait_until 30 'the window on the screen' xdotool search --onlyvisible --name '^Vornadel  1[.]02$'
window_shows hub 'red Detect Zel Hub: Fail'
window_shows buttons on
hub plug
window_shows hub 'blue Detect Zel Hub : Success|fwVer:0100'

click btnSelect_EasyUpdate
window_shows dialog QFileDialog
wait_until 20 'the dialog to have the keyboard focus' \
    sh -c 'xdotool getactivewindow getwindowname | grep -qvx "Vornadel  1.02"'
xdotool key ctrl+a type --delay 20 "$new_image"
xdotool key Return
window_shows dialog none
click btnUpdate_EasyUpdate
window_shows flow 'Erase Flash...'
window_shows flow 'blue FW:'
window_shows flow 'Update FW Success'
window_shows buttons on
same flash.bin "$new_image"
window_shows hub 'blue Detect Zel Hub : Success|fwVer:0101'

hub unplug
window_shows hub 'red Detect Zel Hub: Fail'
# The key reaches the window only once it is active; at the last try the window may already be
# closed.
close_by_key() {
    gone "$window_pid" ||
        xdotool search --onlyvisible --name '^Vornadel  1[.]02$' windowactivate --sync key alt+F4 \
            2>/dev/null || :
    gone "$window_pid"
}
wait_until 30 'the window to close' close_by_key
end_of_window 0
stop_hubs
