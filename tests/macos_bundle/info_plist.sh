#!/bin/bash
# info_plist.sh BUNDLE SOURCE VERSION OLDEST: checks that the bundle's Info.plist is a property list with
# everything that a Mac needs to know about the application.
set -u

bundle=$1
plist=$bundle/Contents/Info.plist
version=$3
oldest=$4 # system
failures=0

complain() {
    echo "FAILED: $1" >&2
    failures=$((failures + 1))
}

# ask XPATH: queries the file.
ask() { xmllint --nonet --xpath "$1" "$plist"; }

# expect KEY ELEMENT VALUE
expect() {
    local value="/plist/dict/key[.='$1']/following-sibling::*[1]"
    [ "$(ask "concat(name($value), ' ', normalize-space($value))")" = "$2 $3" ] ||
        complain "$1 is '$(ask "string($value)")' and not the $2 '$3'"
}

command -v xmllint >/dev/null || complain 'xmllint (package libxml2-utils) is missing'
xmllint --nonet --noout "$plist" || complain "$plist is not well-formed"
[ "$(head -n 2 "$plist" | tail -n 1)" = '<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">' ] ||
    complain 'it does not say which kind of file it is'
[ "$(ask 'concat(name(/*), /plist/@version, count(/plist/*), count(/plist/dict))')" = plist1.011 ] ||
    complain 'it is not one dictionary'
[ "$(ask 'count(/plist/dict/*[position() mod 2 = 1][name() != "key"]) + count(/plist/dict/*[position() mod 2 = 0][name() = "key"])')" = 0 ] ||
    complain 'its keys and values do not take turns'
[ "$(ask 'count(/plist/dict/key[. = preceding-sibling::key])')" = 0 ] || complain 'a key is there twice'
! grep -n '@' "$plist" || complain 'something was not filled in'

expect CFBundlePackageType string APPL
expect CFBundleInfoDictionaryVersion string 6.0
expect CFBundleIdentifier string org.vornadel.Vornadel
expect CFBundleName string Vornadel
expect CFBundleExecutable string Vornadel
expect CFBundleIconFile string Vornadel.icns
expect CFBundleVersion string "$version"
expect CFBundleShortVersionString string "$version"
expect CFBundleDevelopmentRegion string en
expect NSHighResolutionCapable true ''
expect NSPrincipalClass string NSApplication
expect CFBundleDisplayName string Vornadel
expect CFBundleSupportedPlatforms array MacOSX
expect LSApplicationCategoryType string public.app-category.utilities
expect LSMinimumSystemVersion string "$oldest"
[ "$(ask 'count(/plist/dict/key)')" = 15 ] || complain 'it has keys that nobody has looked at'
[ "$failures" -eq 0 ]
