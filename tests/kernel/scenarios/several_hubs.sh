#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# Without a selection nothing is sent to any of them.
start_twins mode=rom mode=rom mode=rom mode=rom
count_requests
for _ in 1 2 3 4; do
    expect 4 '' "${ctl[@]}" update "$new_image"
    ! says said ' Success' || fail 'a success was claimed'
done
only_asked

# Each selected by its place, with the others beside it.
for hub in 4 2 1 3; do
    on_hub "$hub" 0 'Update FW Success' update "$new_image"
    same "flash-$hub.bin" "$new_image"
done

# All at once.
pids=()
for hub in 1 2 3 4; do
    status_of "$hub"
    timeout 600 "${ctl[@]}" --path "$place" update "$old_image" >"update-$hub" 2>&1 </dev/null &
    pids+=("$!")
done
for hub in 1 2 3 4; do
    wait "${pids[hub - 1]}" || fail "one of four updates at once failed: $(cat "update-$hub")"
    same "flash-$hub.bin" "$old_image"
done
stop_hubs
