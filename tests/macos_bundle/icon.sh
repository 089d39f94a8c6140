#!/bin/bash
# icon.sh BUNDLE: checks that the icon named in the bundle's Info.plist is a valid icon file, with a
# picture of the right size for each type of entry.
set -u

bundle=$1
icon=$bundle/Contents/Resources/$(xmllint --nonet --xpath \
    "string(/plist/dict/key[.='CFBundleIconFile']/following-sibling::*[1])" "$bundle/Contents/Info.plist")
declare -A sizes=([icp4]=16 [icp5]=32 [ic07]=128 [ic08]=256 [ic09]=512 [ic10]=1024 [ic11]=32 [ic12]=64 [ic13]=256 [ic14]=512)
failures=0

complain() {
    echo "FAILED: $1" >&2
    failures=$((failures + 1))
}

read -ra bytes < <(od -An -v -tu1 "$icon" | tr -s ' \n' ' ')
total=${#bytes[@]}

# number AT: four bytes, high byte first.
number() { echo $((bytes[$1] << 24 | bytes[$1 + 1] << 16 | bytes[$1 + 2] << 8 | bytes[$1 + 3])); }

# text AT LENGTH
text() {
    local each
    for each in "${bytes[@]:$1:$2}"; do
        # shellcheck disable=SC2059 # the octal number is for the second printf
        printf "\\$(printf '%03o' "$each")"
    done
}

# judge_picture AT LENGTH TYPE: checks a PNG, from its first chunk to its last.
judge_picture() {
    local at=$1 end=$(($1 + $2)) want=${sizes[$3]-}
    [ -n "$want" ] || complain "there is no entry type '$3'"
    [ "${bytes[*]:at:8}" = '137 80 78 71 13 10 26 10' ] || complain "$3 is no PNG"
    [ "$(text $((at + 12)) 4) $(number $((at + 16))) $(number $((at + 20)))" = "IHDR $want $want" ] ||
        complain "$3 is not $want pixels wide and high"
    [ "${bytes[at + 25]}" -eq 6 ] || complain "$3 has no transparency"
    [ "$(text $((end - 8)) 4)" = IEND ] || complain "$3 is cut off"
}

[ "$(text 0 4)" = icns ] || complain "$icon is no icon file"
[ "$(number 4)" -eq "$total" ] || complain "it says that it has $(number 4) bytes, and has $total"
at=8
found=''
while [ $((at + 8)) -le "$total" ]; do
    kind=$(text $at 4)
    length=$(number $((at + 4)))
    if [ "$length" -le 41 ] || [ $((at + length)) -gt "$total" ]; then
        complain "the entry $kind cannot have $length bytes"
        break
    fi
    case " $found " in
    *" $kind "*) complain "$kind is there twice" ;;
    esac
    found="$found $kind"
    judge_picture $((at + 8)) $((length - 8)) "$kind"
    at=$((at + length))
done
[ "$at" -eq "$total" ] || complain 'there is something behind the last entry'
for kind in "${!sizes[@]}"; do
    case " $found " in
    *" $kind "*) ;;
    *) complain "the picture of ${sizes[$kind]} pixels, $kind, is missing" ;;
    esac
done
[ "$failures" -eq 0 ]
