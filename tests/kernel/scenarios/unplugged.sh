#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

start_hub
wait_for_hub
for step in 'Write Flash...' 'Read Flash...'; do
    start_update "$new_image"
    update_reaches "$step"
    kill -STOP "$update_pid" # otherwise it could finish before the hub is gone
    hub unplug
    kill -CONT "$update_pid"
    end_of_update
    # Reading is so quick that the update may already be at "Reset to Flash Code".
    if says update.out 'Reset to Flash Code...'; then
        failed_update 9 'Fail to Reset to Flash Code'
    else
        failed_update 7 'the hub was unplugged'
    fi
    wait_for_no_hub
    hub plug
    wait_for_hub
    update_well "$old_image"
    wait_for_hub
done
stop_hubs
