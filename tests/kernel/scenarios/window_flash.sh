#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

bundle tool
start_hub
wait_for_hub
open_window tool
window_shows flow 'Update FW Fail' # no image is configured, so the update at start fails
window_shows buttons on

window 'press btnRead_FwFlash'
window_shows flow 'Read Fw Success'
window_shows buttons on
same flash.bin "$old_image"
window 'press btnSave_FwFlash'
window_shows dialog QFileDialog
window "choose $work/saved.BIN"
window_shows dialog none
same saved.BIN "$old_image"

window 'press btnErase_FwFlash'
window_shows flow 'Erase FW Success'
window_shows buttons on
head -c 32768 /dev/zero | tr '\0' '\377' >empty.bin
same flash.bin empty.bin

window 'press btnSelect_EasyUpdate'
window_shows dialog QFileDialog
window "choose $new_image"
window_shows dialog none
window 'press btnUpdate_EasyUpdate'
window_shows flow 'Update FW Success'
window_shows buttons on
same flash.bin "$new_image"
window_shows hub 'fwVer:0101'
close_window
stop_hubs
