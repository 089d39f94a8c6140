#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# remember_hub: remembers its address on the bus; none if it is away.
remember_hub() {
    address=none
    ! device_folder "$super_speed" || read -r address 2>/dev/null <"$folder/devnum" || address=none
}

# hub_has_left: it is away, or already back at another address.
hub_has_left() {
    local now
    ! device_folder "$super_speed" || ! read -r now 2>/dev/null <"$folder/devnum" ||
        [ "$now" != "$address" ]
}

# reach POINT: waits until the running update has reached this point.
reach() {
    case $1 in
    started) ;;
    left_for_rom)
        update_reaches 'FW:'
        wait_until 20 'the restart into ROM code' hub_has_left
        ;;
    back_in_rom)
        reach left_for_rom
        wait_until 20 'the return in ROM code' on_bus "$super_speed"
        ;;
    left_for_flash)
        update_reaches 'Write Flash...'
        remember_hub
        update_reaches 'Reset to Flash Code...'
        wait_until 20 'the restart into flash code' hub_has_left
        ;;
    *) update_reaches "$1" ;;
    esac
}

points=(started FW: left_for_rom back_in_rom 'Erase Flash...' 'Write Flash...' '30%' 'Read Flash...'
    '70%' left_for_flash)

# lane SIGNAL STATUS NUMBER: one signal at each point. Only SIGKILL ends an update that has begun to
# erase; any other one lets it finish.
lane() {
    local signal=$1 wanted=$2 images=("$old_image" "$new_image") round=0 point
    use_hub "$3"
    start_hub
    for point in "${points[@]}"; do
        wait_for_hub
        round=$((round + 1))
        echo "--- $signal at $point"
        remember_hub
        start_update "${images[round % 2]}"
        reach "$point"
        kill "-$signal" "$update_pid"
        end_of_update
        if says update.out 'Erase Flash...' && [ "$signal" != KILL ]; then
            [ "$update_status" -eq 0 ] ||
                fail "SIG$signal at '$point': the update did not finish, but ended with $update_status"
            same flash.bin "${images[round % 2]}"
        else
            # The signal itself may end a program that has just been started, with the same status.
            [ "$update_status" -eq "$wanted" ] ||
                fail "SIG$signal at '$point': ended with $update_status, not $wanted"
            no_success_claimed
            says update.out 'Erase Flash...' || same flash.bin "${images[(round + 1) % 2]}"
        fi
        wait_for_hub
        update_well "${images[round % 2]}"
    done
    stop_hubs
}

# A second signal ends an update that would finish.
twice_lane() {
    local point
    use_hub 5
    start_hub
    for point in 'Erase Flash...' 'Write Flash...' '30%'; do
        wait_for_hub
        echo "--- two signals at $point"
        start_update "$new_image"
        update_reaches "$point"
        kill -TERM "$update_pid"
        poll=0.03 wait_until 20 'the update to notice the signal' says update.err 'finishing first'
        kill -INT "$update_pid"
        end_of_update
        [ "$update_status" -eq 143 ] || fail "two signals at '$point': ended with $update_status"
        no_success_claimed
        wait_for_hub
        update_well "$old_image"
    done
    stop_hubs
}

# The same with the window program and its update at start.
window_lane() {
    local ends=(KILL 137 'Erase Flash...' TERM 143 'Read Flash...' INT 130 'Reset to Flash Code...') i
    use_hub 4
    bundle tool demo-1.01.bin
    start_hub
    for ((i = 0; i < ${#ends[@]}; i += 3)); do
        wait_for_hub
        echo "--- the window: ${ends[i]} at ${ends[i + 2]}"
        open_window tool
        update_at_start_shows "${ends[i + 2]}"
        kill "-${ends[i]}" "$window_pid"
        end_of_window "${ends[i + 1]}"
        ! says window.out 'Update FW Success' || fail 'the window claimed a success'
        wait_for_hub
        update_well "$old_image"
    done
    stop_hubs
}

in_lanes lane KILL 137 1 -- lane TERM 143 2 -- lane INT 130 3 -- window_lane -- twice_lane
