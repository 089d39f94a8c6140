#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub
wait_for_hub
start_update "$new_image"
for step in 'Erase Flash...' 'Write Flash...' 'Read Flash...'; do
    update_reaches "$step"
    expect 1 'Fail To Open Rom Device' "${ctl[@]}" update "$old_image"
done
end_of_update
[ "$update_status" -eq 0 ] || fail "the first update ended with $update_status"
says update.out 'Update FW Success' || fail 'the first update did not say that it succeeded'
same flash.bin "$new_image"
stop_hubs
