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
    case $step in
    # Reading is so quick that the update may already be at "Reset to Flash Code".
    Read*) failed_update 'Fail to Re' ;;
    *) failed_update 'Fail to Write Flash' ;;
    esac
    wait_for_no_hub
    hub plug
    wait_for_hub
    update_well "$old_image"
    wait_for_hub
done
stop_hubs
