#!/bin/sh
# access_policy.sh FOLDER: checks the polkit action file. It must be well-formed, have one action
# for each administrator script, and require an administrator's password, for a restart each time.
set -u

policy=$1/org.vornadel.hub-access.policy
failures=0

complain() {
    echo "FAILED: $1" >&2
    failures=$((failures + 1))
}

# ask XPATH: evaluates the expression on the file.
ask() { xmllint --nonet --xpath "$1" "$policy"; }

command -v xmllint >/dev/null || complain 'xmllint (package libxml2-utils) is missing'
xmllint --nonet --noout "$policy" || complain "$policy is not well-formed"
[ "$(ask 'count(/policyconfig/action)')" = 3 ] || complain 'there are not three actions'
for script in load unload reboot; do
    keep=_keep
    [ "$script" != reboot ] || keep=''
    [ -x "$1/$script" ] || complain "$script cannot be run"
    action="/policyconfig/action[@id='org.vornadel.hub-access.$script']"
    [ "$(ask "string($action/annotate[@key='org.freedesktop.policykit.exec.path'])")" = \
        "/opt/Vornadel.app/Contents/Resources/$script" ] ||
        complain "the action of $script runs something else"
    [ "$(ask "string-length($action/message) > 20 and string-length($action/description) > 0")" = true ] ||
        complain "the action of $script does not describe itself"
    [ "$(ask "concat($action/defaults/allow_any, ' ', $action/defaults/allow_inactive, ' ', \
        $action/defaults/allow_active)")" = "auth_admin auth_admin auth_admin$keep" ] ||
        complain "the action of $script requires the wrong authorization"
done
[ "$failures" -eq 0 ]
