#!/bin/bash
# in_root.sh PACKAGES: installs the packages of a folder in a fresh Debian root, uses, upgrades,
# removes, purges and installs them again there. Needs root and debootstrap.
set -eu
packages=$1
root=$packages/root
mirror=${DEB_MIRROR:-http://deb.debian.org/debian}

fail() {
    echo "in_root: $1" >&2
    exit 1
}
[ "$(id -u)" -eq 0 ] || fail 'only root can make a fresh root'

if [ -z "${own_mounts-}" ]; then
    rm -rf "$root"
    debootstrap --variant=minbase --include=man-db,bash-completion,xvfb,xauth,x11-utils bookworm "$root" "$mirror" >"$packages/debootstrap.log" 2>&1 ||
        fail "debootstrap failed; see $packages/debootstrap.log"
    own_mounts=1 exec unshare --mount --propagation private "$0" "$@"
fi
apt-config dump | grep -E '^Acquire::(http|https|Check)' >"$root/etc/apt/apt.conf.d/this-machine" # a proxy, for example
rm -f "$root"/etc/dpkg/dpkg.cfg.d/docker* # it would leave out the man pages

# in_it COMMAND: in the root, with nothing of this machine's environment.
in_it() {
    chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive QT_QPA_PLATFORM=offscreen sh -ec "$1"
}

# expect STATUS TEXT COMMAND: the command ends with the status and prints the text.
expect() {
    local ended=0 output
    output=$(in_it "$3" 2>&1) || ended=$?
    if [ $ended -ne "$1" ] || [[ $output != *"$2"* ]]; then
        fail "$3 ended with $ended, not $1, or printed no \"$2\": $output"
    fi
}

mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"

mkdir -p "$root/debs/before"
rm -f "$root"/debs/*.deb "$root"/debs/before/*.deb
cp "$packages"/*.deb "$root/debs"
rm -f "$root"/debs/*-dbgsym_*
# The same packages as an older version, with an older configuration.
for package in "$root"/debs/*.deb; do
    old=$root/debs/unpacked
    dpkg-deb -R "$package" "$old"
    sed -i 's/^Version: .*/Version: 1.00/; s/(= [0-9.]*)/(= 1.00)/g' "$old/DEBIAN/control"
    [ ! -f "$old/etc/vornadel/config.ini" ] || echo '# older' >>"$old/etc/vornadel/config.ini"
    dpkg-deb -b "$old" "$root/debs/before" >/dev/null
    rm -rf "$old"
done

in_it 'apt-get -qq update && apt-get -qq -y install --no-install-recommends /debs/before/*.deb'
expect 0 'of this machine' 'vornadelctl version -v'
echo '# mine' >>"$root/etc/vornadel/config.ini"
echo '[PageConfig]' >"$root/etc/vornadel/definitions/Mine.INI"
in_it 'apt-get -qq -y -o Dpkg::Options::=--force-confold install --no-install-recommends /debs/*.deb'
expect 0 'mine' 'tail -n 1 /etc/vornadel/config.ini'

expect 0 'Demo Hub' 'vornadelctl --simulated-hub=latency=none list'
expect 0 'Restore FW Success' 'cd /tmp && vornadelctl --simulated-hub=latency=none --json erase --yes >/dev/null && vornadelctl --simulated-hub=latency=none restore | tail -n 1'
expect 0 'VORNADELCTL(1)' 'MANWIDTH=80 man vornadelctl | cat'
expect 0 'VORNADEL(1)' 'MANWIDTH=80 man vornadel | cat'
expect 0 'VORNADEL-VIRTUAL-HUB(1)' 'MANWIDTH=80 man vornadel-virtual-hub | cat'
expect 0 'verify' "bash -c '. /usr/share/bash-completion/bash_completion; _completion_loader vornadelctl; COMP_WORDS=(vornadelctl v) COMP_CWORD=1; \$(complete -p vornadelctl | sed \"s/.*-F \\([^ ]*\\).*/\\1/\") vornadelctl v vornadelctl; printf \"%s\n\" \"\${COMPREPLY[@]}\"'"
# The window as its desktop file starts it, offscreen and under X.
program=$(sed -n 's/^Exec=//p' "$root/usr/share/applications/org.vornadel.Vornadel.desktop")
expect 124 '' "timeout 3 $program --simulated-hub=latency=none"
expect 0 'Vornadel  1.02' "QT_QPA_PLATFORM=xcb xvfb-run -a sh -c '$program --simulated-hub=latency=none & for i in \$(seq 100); do xwininfo -root -tree | grep -o \"Vornadel  1.02\" && break; sleep 0.1; done; kill \$!'"

in_it 'apt-get -qq -y remove vornadel vornadelctl vornadel-common vornadel-virtual-hub'
[ -e "$root/etc/vornadel/config.ini" ] || fail 'a removal took the configuration along'
in_it 'dpkg --purge vornadel vornadelctl vornadel-common vornadel-virtual-hub'
in_it 'apt-get -qq -y install --no-install-recommends /debs/vornadelctl_*.deb /debs/vornadel-common_*.deb'
expect 0 'Demo Hub' 'vornadelctl --simulated-hub=latency=none list'
in_it 'apt-get -qq -y purge vornadelctl vornadel-common; apt-get -qq -y autoremove --purge'
left=$(find "$root" -xdev -iname '*vornadel*' ! -path "$root/debs/*" ! -path "$root/root/*" ! -path "$root/tmp/*" ! -path "$root/var/*" ! -path "$root/run/*" -printf '/%P\n')
[ "$left" = $'/etc/vornadel' ] || fail "a purge leaves: $left"
[ "$(ls -R "$root/etc/vornadel")" = "$(printf '%s:\ndefinitions\n\n%s/definitions:\nMine.INI' "$root/etc/vornadel" "$root/etc/vornadel")" ] ||
    fail "a purge leaves in /etc/vornadel: $(ls -R "$root/etc/vornadel")"
echo "in_root: installed, used, upgraded, removed, purged and installed again"
