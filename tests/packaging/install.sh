#!/bin/bash
# install.sh CMAKE BUILD: installs BUILD below a folder of its own, with three prefixes, and uses
# what is there.
set -u
cmake=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_STATE_HOME=$work/state QT_QPA_PLATFORM=offscreen
failed=0

wrong() {
    echo "FAILED: $*"
    failed=1
}

# expect STATUS TEXT COMMAND...: the command ends with the status, and prints the text.
expect() {
    local status=$1 text=$2 ended=0 output
    shift 2
    output=$("$@" 2>&1) || ended=$?
    [ $ended -eq "$status" ] || wrong "$* ended with $ended: $output"
    [[ $output == *"$text"* ]] || wrong "$* printed no \"$text\": $output"
}

# install_to ROOT PREFIX
install_to() {
    DESTDIR=$1 "$cmake" --install "$build" --prefix "$2" --strip >"$work/log" 2>&1 || {
        wrong "cmake --install --prefix $2"
        cat "$work/log"
    }
}

while IFS='|' read -r prefix etc; do
    root=$work/root
    rm -rf "$root"
    install_to "$root" "$prefix"
    bin=$root$prefix/bin
    resources=$root$prefix/lib/vornadel/Vornadel.app/Contents/Resources
    config=$root$etc/vornadel/config.ini

    expect 0 "resources:     $resources" "$bin/vornadelctl" version -v
    expect 0 'Vornadel 1.02 (' "$bin/vornadel" --version
    expect 0 'vornadel-virtual-hub 1.02 (' "$bin/vornadel-virtual-hub" --version
    expect 0 'Demo Hub' "$bin/vornadelctl" --simulated-hub=latency=none list

    # The installed configuration is the one that is read, and the administrator's stays.
    printf '[Support Vid Pid]\nVID_00 = 1\nSSPID_00 = 2\nHSPID_00 = 3\n' >"$config"
    install_to "$root" "$prefix"
    expect 3 'no supported hub is attached' "$bin/vornadelctl" --simulated-hub=latency=none info

    cp "$root$prefix/share/vornadel/definitions/SimHub-A.INI" "$root$etc/vornadel/definitions/Mine.INI"
    for controller in SimHub-B Mine; do
        expect 0 'SSC Enable' "$bin/vornadelctl" image properties "$PWD/examples/demo-1.00.bin" --ic $controller
    done

    action=$root$prefix/share/polkit-1/actions/org.vornadel.hub-access.policy
    xmllint --noout --nonet "$action" || wrong "$action is no XML"
    started=$(sed -n 's,.*exec.path">\(.*\)</annotate>,\1,p' "$action")
    [ "$(wc -l <<<"$started")" -eq 3 ] || wrong "$action allows not three scripts: $started"
    while read -r script; do
        [ -x "$root$script" ] || wrong "the polkit action names $script, which is not there"
    done <<<"$started"
    outside=$(cd "$root" && find . -type f ! -path ".$prefix/*" ! -path ".$etc/vornadel/*")
    [ -z "$outside" ] || wrong "files are outside $prefix and $etc: $outside"
done <<'END'
/usr|/etc
/usr/local|/usr/local/etc
/opt/x y|/etc/opt/x y
END

shares="$root/opt/x y/share"
expect 0 '' desktop-file-validate "$shares/applications/org.vornadel.Vornadel.desktop"
expect 0 '' appstreamcli validate --no-net "$shares/metainfo/org.vornadel.Vornadel.metainfo.xml"
grep -q "^vornadel (1\.02) " debian/changelog || wrong "debian/changelog has another version"
exit $failed
