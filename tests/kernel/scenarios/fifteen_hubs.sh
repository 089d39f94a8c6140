#!/bin/bash
# shellcheck disable=SC2034,SC2154 # `one` reads this after the helpers

hubs=()
ids=()
for ((i = 1; i <= 15; ++i)); do
    number=$(printf '%02x' "$i")
    cp "$old_image" "flash-$number.bin"
    hubs+=(--hub "image=flash-$number.bin,ids=1209:01$number:02$number")
    ids+=(0x1209 "0x01$number" "0x02$number")
done
start_hubs "${hubs[@]}"
for ((i = 1; i <= 15; ++i)); do
    number=$(printf '%02x' "$i")
    wait_for_hub "1209:01$number" "1209:02$number"
done
configure config.ini '' "${ids[@]}"
ctl+=(--config config.ini)

expect 0 'supported hub' "${ctl[@]}" list
[ "$(grep -c 'supported hub' said)" -eq 30 ] || fail "$(grep -c 'supported hub' said) halves of hubs are listed, not 30"
first=$(grep -m 1 'supported hub' said | cut -c 8-9 | tr A-F a-f)
cp "flash-$first.bin" flash.bin
expect 0 'Update FW Success' "${ctl[@]}" update "$new_image"
for ((i = 1; i <= 15; ++i)); do
    number=$(printf '%02x' "$i")
    if [ "$number" = "$first" ]; then
        same "flash-$number.bin" "$new_image"
    else
        same "flash-$number.bin" "$old_image"
    fi
done
stop_hubs
