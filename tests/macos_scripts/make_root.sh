#!/bin/bash
# Builds a root that looks like a Mac to a script: only the folders, links and commands of a Mac, at
# their paths. Sourced by macos_scripts.sh; $root is the folder to build it in, $shell the shell for
# /bin/sh.
# shellcheck disable=SC2154,SC2016 # set there; the text in single quotes is for the commands made here
#
# Common commands are the host's own behind a wrapper ("door"), which accepts only options that
# macOS documents and the scripts need. Commands that only macOS has are recorders, which log their
# calls. /state holds the state of the machine: version, nvram, loaded drivers, refuse/COMMAND for
# each command that should fail, end_at/COMMAND for each that should end the script, and talks if
# the commands that change something should print it.

# door PATH REAL OPTION...: a command that passes these options to the host's command REAL. It logs
# its calls if its name is in $recorded.
recorded=' mktemp cp diff mkdir mv rm chown chmod '
door() {
    local path=$1 real=$2 name=${1##*/}
    shift 2
    set -- - "$@"
    {
        printf '#!/machine/bin/dash -p\nfor each; do case $each in %s) ;;\n' "$(IFS='|'; echo "$*")"
        printf -- '-*) echo "%s $each" >>/state/illegal; ' "$name"
        printf 'echo "%s: illegal option -- $each" >&2; exit 64 ;; esac; done\n' "$name"
        [[ $recorded != *" $name "* ]] || printf 'echo "%s $*" >>/state/calls\n' "$name"
        printf '[ ! -e /state/refuse/%s ] || { echo "%s: refused" >&2; exit 71; }\n' "$name" "$name"
        printf 'exec /machine/bin/%s "$@"\n' "$real"
    } >"$root$path"
    chmod 755 "$root$path"
}

# recorder PATH: a command that only macOS has. Its script comes from standard input.
recorder() {
    local path=$1 name=${1##*/}
    {
        printf '#!/machine/bin/dash -p\necho "%s $*" >>/state/calls\n' "$name"
        printf '[ ! -e /state/refuse/%s ] || { echo "%s: refused" >&2; exit 71; }\n' "$name" "$name"
        printf '[ "$PATH" = /usr/bin:/bin:/usr/sbin:/sbin ] || echo "PATH=$PATH" >>/state/illegal\n'
        printf 'PATH=/machine/bin\n'
        printf '[ ! -e /state/end_at/%s ] || kill -s "$(cat /state/end_at/%s)" "$PPID"\n' "$name" "$name"
        cat
    } >"$root$path"
    chmod 755 "$root$path"
}

make_commands() {
    door /usr/bin/find find -prune -type -user -perm -020 -002 -links
    door /usr/bin/diff diff -r -q
    door /usr/bin/mktemp mktemp -d
    door /usr/bin/id id -u -ru
    door /usr/bin/sed sed -n -e
    door /usr/bin/awk mawk -v
    door /bin/cp cp -R -P
    door /bin/mv mv
    door /bin/rm rm -rf
    door /bin/mkdir mkdir
    door /bin/chmod chmod -R
    door /usr/sbin/chown chown -R
    recorder /usr/bin/sw_vers <<'COMMAND'
[ "$*" = -productVersion ] || exit 64
cat /state/version
COMMAND
    recorder /usr/sbin/nvram <<'COMMAND'
case $#:$1 in
1:-p) [ ! -e /state/refuse/nvram-p ] && cat /state/nvram ;;
1:boot-args=*)
    [ ! -e /state/refuse/nvram-set ] || { echo "nvram: Error setting variable - 'boot-args'" >&2; exit 1; }
    { grep -v '^boot-args	' /state/nvram; printf 'boot-args\t%s\n' "${1#boot-args=}"; } >/state/nvram.new
    mv /state/nvram.new /state/nvram
    [ ! -e /state/talks ] || echo 'nvram: done'
    ;;
*) exit 64 ;;
esac
COMMAND
    recorder /usr/libexec/PlistBuddy <<'COMMAND'
[ "$#:$1:$2" = '3:-c:Print :CFBundleIdentifier' ] || exit 64
sed -n '/<key>CFBundleIdentifier</{n;s,^.*<string>\(.*\)</string>.*$,\1,p;}' "$3" | grep .
COMMAND
    # Accepts a driver only from folders of root, like the system.
    recorder /sbin/kextload <<'COMMAND'
[ $# -eq 1 ] && [ -d "$1" ] && [ "$(id -u)" = 0 ] || exit 64
[ -z "$(find "${1%/*}" ! -user 0 -o ! -group 0 -o -perm /022 -o \
    -type d ! -perm 755 -o -type f ! -perm -444)" ] || exit 71
rm -rf /state/driver && cp -a "$1" /state/driver
echo org.vornadel.HubUpdaterDriver >/state/loaded
[ ! -e /state/talks ] || echo 'kextload: done'
COMMAND
    recorder /sbin/kextunload <<'COMMAND'
[ "$*" = '-b org.vornadel.HubUpdaterDriver' ] && [ -s /state/loaded ] || exit 64
: >/state/loaded
[ ! -e /state/talks ] || echo 'kextunload: done'
COMMAND
    recorder /usr/sbin/kextstat <<'COMMAND'
[ "$*" = -l ] || exit 64
for driver in com.apple.kpi.libkern org.vornadel.HubUpdaterDriver.other $(cat /state/loaded); do
    echo "  142    0 0xffffff7f80000000 0x4000     0x4000     $driver (1.0.0) <5 4 3>"
done
COMMAND
    recorder /sbin/shutdown <<'COMMAND'
[ "$*" = '-r now' ] || exit 64
COMMAND
}

# newer_system: the later replacement of the kext commands.
newer_system() {
    recorder /usr/bin/kmutil <<'COMMAND'
case $1 in
load) [ "$#:$2" = 3:-p ] && [ -d "$3" ] && echo org.vornadel.HubUpdaterDriver >/state/loaded ;;
unload) [ "$*" = 'unload -b org.vornadel.HubUpdaterDriver' ] && : >/state/loaded ;;
showloaded)
    [ "$*" = 'showloaded --list-only' ] &&
        sed 's/.*/  142  0 0 0x4000 0x4000 & (1.0.0) UUID <5 4>/' /state/loaded
    ;;
*) exit 64 ;;
esac || exit
[ "$1" = showloaded ] || [ ! -e /state/talks ] || echo "kmutil $1: done"
COMMAND
    rm "$root"/sbin/kext* "$root/usr/sbin/kextstat"
}

make_root() {
    umount -R "$root" 2>/dev/null
    mount -t tmpfs -o mode=755 macos "$root" || { echo "FAILED: cannot mount a tmpfs" >&2; exit 1; }
    mkdir -p "$root"/{bin,sbin,dev,machine/bin,state/{refuse,end_at},private/{etc,tmp,var/db}} \
        "$root"/{usr/{bin,sbin,lib,lib64,libexec},Applications}
    chmod 1777 "$root/private/tmp"
    ln -s private/etc private/tmp private/var usr/lib usr/lib64 "$root"
    mount --bind /usr/bin "$root/machine/bin" && mount --bind /usr/lib "$root/usr/lib" || exit 1
    [ ! -d /usr/lib64 ] || mount --bind /usr/lib64 "$root/usr/lib64" || exit 1
    cp "$(command -v "$shell")" "$root/bin/sh"
    mknod -m 666 "$root/dev/null" c 1 3
    echo 'root:*:0:0::/var/root:/bin/sh' >"$root/private/etc/passwd"
    echo 'wheel:*:0:root' >"$root/private/etc/group"
    echo 10.15.7 >"$root/state/version"
    printf 'SystemAudioVolume\t%%80\nboot-args\t-v  debug=0x144\n' >"$root/state/nvram"
    : >"$root/state/loaded"
    make_commands
}
