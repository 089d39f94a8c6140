#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers
# shellcheck source=../guest/twins
. "$kernel_tests/guest/twins"

# during_update STATUS ARGUMENT...: until the running update ends, the command ends with this status
# each time.
during_update() {
    local wanted=$1 status tries=0
    shift
    while ! gone "$update_pid"; do
        status=0
        timeout 600 "${ctl[@]}" "$@" >second 2>&1 </dev/null || status=$?
        if [ "$status" -ne "$wanted" ] && ! gone "$update_pid"; then
            cat second
            fail "the second program ended with $status, not $wanted"
        fi
        [ "$status" -eq "$wanted" ] || return 0 # it began after the update's end
        tries=$((tries + 1))
    done
    echo "the second program was refused $tries times"
    [ "$tries" -ge 2 ] || fail 'the update was over too soon'
}

# lane NUMBER STATUS SELECTED HUB...: hub 1 is updated; meanwhile a second program, a read, is refused with
# this status. SELECTED: it names hub 1 too.
lane() {
    local wanted=$2 selected=$3 arguments=()
    use_hub "$1"
    start_twins "${@:4}"
    status_of 1
    : >update.out
    env --default-signal=INT "${ctl[@]}" --path "$place" update "$new_image" \
        >update.out 2>update.err </dev/null &
    update_pid=$!
    update_reaches 'FW:'
    [ -z "$selected" ] || arguments=(--path "$place")
    count_requests
    during_update "$wanted" "${arguments[@]}" read second.bin
    end_of_update
    [ "$update_status" -eq 0 ] || fail "the update ended with $update_status"
    only_asked 1
    same flash-1.bin "$new_image"
    wait_for_twins
    stop_hubs
}

slow=fault=late:5@1,fault=late:5@2
in_lanes lane 1 11 selected "$slow" \
    -- lane 2 11 '' "$slow" \
    -- lane 3 4 '' "$slow" '' \
    -- lane 4 4 '' "$slow" mode=rom
