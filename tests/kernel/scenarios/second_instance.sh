#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# The first program is held up while the second one tries, or it could have ended meanwhile. The hub is back early enough
# for both its halves to be there when the first program opens it again: the two programs see them in different orders.
start_hub latency=none
wait_for_hub
start_update "$new_image"
for step in 'Erase Flash...' 'Write Flash...' 'Read Flash...'; do
    update_reaches "$step"
    kill -STOP "$update_pid"
    expect 1 'it is in use' "${ctl[@]}" info
    expect 1 'Fail To Open Rom Device' "${ctl[@]}" update "$old_image"
    kill -CONT "$update_pid"
done
end_of_update
[ "$update_status" -eq 0 ] || fail "the first update ended with $update_status"
says update.out 'Update FW Success' || fail 'the first update did not say that it succeeded'
same flash.bin "$new_image"
stop_hubs
