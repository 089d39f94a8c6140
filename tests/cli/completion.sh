#!/bin/bash
# Checks what bash, zsh and fish offer for the beginning of a command line.
#
#   completion.sh FOLDER    with the completions of the three shells
set -eu
folder=$1
failed=0

# expect LINE OFFER...: each shell offers all of these, and none that has a "!" before it.
expect() {
    local line=$1 shell offer got
    shift
    for shell in bash zsh fish; do
        case $shell in
        bash) got=$(in_bash "$line") ;;
        zsh) got=$(in_zsh "$line") ;;
        fish) got=$(in_fish "$line") ;;
        esac
        for offer in "$@"; do
            case $offer in
            !*) ! grep -qxF -- "${offer#!}" <<<"$got" || complain "$shell offers ${offer#!} after '$line'" ;;
            *) grep -qxF -- "$offer" <<<"$got" || complain "$shell does not offer $offer after '$line', but: $got" ;;
            esac
        done
    done
}

complain() {
    echo "completion: $1" >&2
    failed=1
}

in_bash() {
    # shellcheck disable=SC2016 # expanded by the other shell
    bash --norc -c '
        . "$1/vornadelctl.bash"
        read -ra COMP_WORDS <<<"$2"
        [[ $2 != *" " ]] || COMP_WORDS+=("")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        _vornadelctl
        printf "%s\n" "${COMPREPLY[@]}"
    ' bash "$folder" "$1"
}

# With the completion system of zsh, but for the functions that show the offers.
in_zsh() {
    # shellcheck disable=SC2016
    zsh -fc '
        fpath=($1 $fpath)
        autoload -Uz compinit && compinit -D -u
        [[ $_comps[vornadelctl] == _vornadelctl ]] || print "zsh does not know it"
        _describe() { print -l -- ${${(P)@[-1]}%%:*} }
        _files() { print -l -- *(N) }
        compadd() { print -l -- ${@[2,-1]} }
        words=(${(s: :)2})
        [[ $2 != *" " ]] || words+=("")
        CURRENT=${#words}
        offers=(${(f)"$(source $1/_vornadelctl)"})
        print -l -- ${(M)offers:#${words[-1]}*}
    ' zsh "$folder" "$1"
}

in_fish() {
    # shellcheck disable=SC2016
    fish --no-config -c '
        source $argv[1]/vornadelctl.fish
        complete -C $argv[2] | string replace -r "\t.*" ""
        true # string replace fails if it replaces nothing
    ' "$folder" "$1"
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
touch "$work/new.bin"
cd "$work"
export HOME=$work

expect 'vornadelctl ' update image list '!set' '!new.bin'
expect 'vornadelctl up' update '!image'
expect 'vornadelctl --path 2-3 image ' set diff '!update'
expect 'vornadelctl image set --def' --definitions '!--force'
expect 'vornadelctl image set new.bin -' --output --json --path '!--dry-run'
expect 'vornadelctl update n' new.bin
expect 'vornadelctl list n' '!new.bin'
expect 'vornadelctl --progress p' plain '!bar'
expect 'vornadelctl update new.bin --path ' '!new.bin'
expect 'vornadelctl --config n' new.bin
exit $failed
