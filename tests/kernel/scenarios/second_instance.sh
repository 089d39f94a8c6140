#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# finish: lets the first program go on to its end, which must be a success.
finish() {
    kill -CONT "$update_pid"
    cat <&"$told" >>said_by_first
    exec {told}<&-
    end_of "$update_pid" 'the first update' 60
    [ "$ended_with" -eq 0 ] || fail "the first update ended with $ended_with"
    says said_by_first 'Update FW Success' || fail 'the first update did not say that it succeeded'
    same flash.bin "$image"
}

# held_up: the first program is stopped with all its threads, or has ended.
held_up() {
    local file stat
    for file in "/proc/$update_pid"/task/*/stat; do
        { read -r stat <"$file"; } 2>/dev/null && [[ $stat == *') '[TZ]' '* ]] || return 1
    done
}

# hold_at STEP: starts the first program and holds it up there, with the hub in its hands. False when it could not be held
# before it was through.
hold_at() {
    local line
    : >said_by_first
    "${ctl[@]}" update "$image" >told 2>update.err </dev/null &
    update_pid=$!
    exec {told}<told
    while IFS= read -r line <&"$told" && echo "$line" >>said_by_first && [ "$line" != "$1" ]; do :; done
    kill -STOP "$update_pid"
    wait_until 20 'the first update to be held up' held_up
    while read -r -t 0 -u "$told" && IFS= read -r line <&"$told"; do # what it had said by then
        echo "$line" >>said_by_first
    done
    says said_by_first "$1" || fail "the first update did not come to '$1'"
    ! says said_by_first 'Reset to Flash Code...'
}

# may_be_locked VID:PID: nobody holds the lock of that half. A half that came back after the other was opened is free, too: who
# opens it needs both.
may_be_locked() {
    local node
    node=$(node_of "$1")
    flock -n "$node" true
}

# A hub that is back at once has both its halves on the bus when the first program opens it again. The last to arrive is
# the first one there, and for a program that starts now it is the other way round.
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
    ! { may_be_locked "$super_speed" && may_be_locked "$high_speed"; } || fail 'neither half is locked during the first update'
    expect 1 'another program has it open' "${ctl[@]}" info
    expect 1 'Fail To Open Rom Device' "${ctl[@]}" update "${images[(round + 1) % 2]}"
    finish
    wait_for_hub
    may_be_locked "$super_speed" || fail 'the SuperSpeed half is still locked after the update'
    may_be_locked "$high_speed" || fail 'the high-speed half is still locked after the update'
done
stop_hubs
