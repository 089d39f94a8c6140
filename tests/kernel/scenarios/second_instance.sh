#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# finish: resumes the first program, which must succeed.
finish() {
    kill -CONT "$update_pid"
    cat <&"$told" >>said_by_first
    exec {told}<&-
    end_of "$update_pid" 'the first update' 60
    [ "$ended_with" -eq 0 ] || fail "the first update ended with $ended_with"
    says said_by_first 'Update FW Success' || fail 'the first update did not say that it succeeded'
    same flash.bin "$image"
}

# stopped: all threads of the first program are stopped, or it has ended.
stopped() {
    local file stat
    for file in "/proc/$update_pid"/task/*/stat; do
        { read -r stat <"$file"; } 2>/dev/null && [[ $stat == *') '[TZ]' '* ]] || return 1
    done
}

# hold_at STEP: starts the first program and stops it at this step, with the hub open. Fails if it
# was already past that.
hold_at() {
    local line
    : >said_by_first
    "${ctl[@]}" update "$image" >told 2>update.err </dev/null &
    update_pid=$!
    exec {told}<told
    while IFS= read -r line <&"$told" && echo "$line" >>said_by_first && [ "$line" != "$1" ]; do :; done
    kill -STOP "$update_pid"
    wait_until 20 'the first update to stop' stopped
    while read -r -t 0 -u "$told" && IFS= read -r line <&"$told"; do # the rest of its output
        echo "$line" >>said_by_first
    done
    says said_by_first "$1" || fail "the first update did not reach '$1'"
    ! says said_by_first 'Reset to Flash Code...'
}

# may_be_locked VID:PID: nobody holds the lock of this half. It is also free if it came back after
# the other was opened; a program that opens the hub needs both locks.
may_be_locked() {
    local node
    node=$(node_of "$1")
    flock -n "$node" true
}

# The hub restarts without delay, so both halves are on the bus when the first program opens it
# again. That program lists the half that came back last first; a program that starts now lists it
# last.
mkfifo told
start_hub latency=none
images=("$old_image" "$new_image")
round=0
for step in 'Erase Flash...' 'Write Flash...' 'Read Flash...'; do
    tries=0
    until
        round=$((round + 1))
        image=${images[round % 2]}
        wait_for_hub
        hold_at "$step"
    do
        finish
        [ $((tries += 1)) -lt 5 ] || fail "the first update could not be held at '$step'"
    done
    ! { may_be_locked "$super_speed" && may_be_locked "$high_speed"; } ||
        fail 'neither half is locked during the first update'
    expect 11 "busy: process $update_pid works on it" "${ctl[@]}" info
    expect 11 "busy: process $update_pid works on it" "${ctl[@]}" update "${images[(round + 1) % 2]}"
    expect 0 "busy (pid $update_pid)" "${ctl[@]}" list
    finish
    wait_for_hub
    may_be_locked "$super_speed" || fail 'the SuperSpeed half is still locked after the update'
    may_be_locked "$high_speed" || fail 'the high-speed half is still locked after the update'
done
stop_hubs
