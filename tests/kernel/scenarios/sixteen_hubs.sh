#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# milliseconds_of COMMAND...: sets $took.
milliseconds_of() {
    local begin=${EPOCHREALTIME/[.,]/}
    "$@"
    took=$(((${EPOCHREALTIME/[.,]/} - begin) / 1000))
}

# update_at_once NUMBER...: updates these hubs, each by a program of its own.
update_at_once() {
    local number pids=()
    for number in "$@"; do
        timeout 1200 "${ctl[@]}" --path "${places[number]}" update "$new_image" \
            >"update-$number" 2>&1 </dev/null &
        pids[number]=$!
    done
    for number in "$@"; do
        wait "${pids[number]}" || fail "the update of hub $number failed: $(cat "update-$number")"
        says "update-$number" 'Update FW Success' || fail "hub $number: no success was said"
        same "flash-$number.bin" "$new_image"
    done
}

# They run their ROM code, as new hubs do: one restart less, because this machine takes seconds for each
# of sixteen restarts at once, and the program waits no longer than the window would.
rom=()
for _ in {1..16}; do rom+=(mode=rom); done
start_twins "${rom[@]}"
places=()
for ((number = 1; number <= twin_count; ++number)); do
    status_of "$number"
    places[number]=$place
done
count_requests
milliseconds_of update_at_once 1
one=$took
only_asked 1
hub 'unplug 1'
hub 'plug-rom 1'
wait_for_twins
milliseconds_of update_at_once "${!places[@]}"
echo "one hub: $one ms; sixteen at once: $took ms, on $(nproc) processors"
stop_hubs
