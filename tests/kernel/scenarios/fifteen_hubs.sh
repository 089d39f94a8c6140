#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

# attach: attaches fifteen hubs and configures all of them. They run their ROM code, so the tool can
# write without a restart. After a restart it could find another hub, if the right one is not back
# yet.
attach() {
    local hubs=() ids=() i
    for ((i = 1; i <= 15; ++i)); do
        use_hub "$i"
        cp "$old_image" "flash-$ss_id.bin"
        hubs+=(--hub "image=flash-$ss_id.bin,ids=$super_speed:$hs_id,latency=none,mode=rom")
        ids+=("$ss_id:$hs_id")
    done
    start_hubs "${hubs[@]}"
    for ((i = 1; i <= 15; ++i)); do
        use_hub "$i"
        wait_for_hub
    done
    configure config.ini '' "${ids[@]}"
}

# find_first: sets $first to the number of the hub that the tool takes: the first supported half it
# lists.
find_first() {
    local id
    expect 0 'supported hub' "${ctl[@]}" list
    [ "$(grep -c 'supported hub' said)" -eq 30 ] ||
        fail "$(grep -c 'supported hub' said) halves of hubs are listed, not 30"
    id=$(grep -m 1 'supported hub' said)
    first=$(((0x${id:5:4} - id_base) / 2))
}

# others_untouched: every hub but the first has its old flash and has received no request. One may
# have received the open-time request, if it was opened while the first was still away after its
# restart.
others_untouched() {
    local i opened=0
    for ((i = 1; i <= 15; ++i)); do
        [ "$i" -ne "$first" ] || continue
        same "flash-$(printf '%04x' $((id_base + 2 * i))).bin" "$old_image"
        hub "status $i"
        case $answer in
        *' requests=0 '*) ;;
        *' requests=1 '*) [ $((opened += 1)) -eq 1 ] || fail "the tool opened several other hubs: $answer" ;;
        *) fail "the tool sent requests to hub $i instead of hub $first: $answer" ;;
        esac
    done
}

attach
find_first
expect 0 'Update FW Success' "${ctl[@]}" update "$new_image"
same "flash-$(printf '%04x' $((id_base + 2 * first))).bin" "$new_image"
others_untouched
stop_hubs
