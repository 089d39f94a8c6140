#!/usr/bin/python3
"""application.py BUNDLE VERSION OLDEST: checks what makes the bundle an application. Info.plist must
have all keys, with OLDEST as the oldest system, and the icon a picture of the right size for each
type of entry."""
import plistlib
import struct
import sys

SIZES = {b"icp4": 16, b"icp5": 32, b"ic07": 128, b"ic08": 256, b"ic09": 512,
         b"ic10": 1024, b"ic11": 32, b"ic12": 64, b"ic13": 256, b"ic14": 512}

bundle, version, oldest = sys.argv[1:]

with open(bundle + "/Contents/Info.plist", "rb") as file:
    text = file.read()
assert b'<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN"' in text, "the document type is missing"
assert text.count(b"<key>") == 15, "a key is missing or repeated"
info = plistlib.loads(text)
assert info == {
    "CFBundlePackageType": "APPL",
    "CFBundleInfoDictionaryVersion": "6.0",
    "CFBundleIdentifier": "org.vornadel.Vornadel",
    "CFBundleName": "Vornadel",
    "CFBundleExecutable": "Vornadel",
    "CFBundleIconFile": "Vornadel.icns",
    "CFBundleVersion": version,
    "CFBundleShortVersionString": version,
    "CFBundleDevelopmentRegion": "en",
    "NSHighResolutionCapable": True,
    "NSPrincipalClass": "NSApplication",
    "CFBundleDisplayName": "Vornadel",
    "CFBundleSupportedPlatforms": ["MacOSX"],
    "LSApplicationCategoryType": "public.app-category.utilities",
    "LSMinimumSystemVersion": oldest,
}, info

with open(bundle + "/Contents/Resources/" + info["CFBundleIconFile"], "rb") as file:
    icon = file.read()
assert icon[:8] == b"icns" + struct.pack(">I", len(icon)), "not an icon file, or its length is wrong"
found = []
at = 8
while at < len(icon):
    kind, length = struct.unpack(">4sI", icon[at:at + 8])
    picture = icon[at + 8:at + length]
    size = SIZES[kind]
    assert picture[:8] == b"\x89PNG\r\n\x1a\n", f"{kind} is not a PNG"
    header = b"IHDR" + struct.pack(">II", size, size)
    assert picture[12:24] == header, f"{kind} is not {size} pixels wide and high"
    assert picture[25] == 6, f"{kind} has no transparency"
    assert picture[-8:-4] == b"IEND", f"{kind} is truncated"
    found.append(kind)
    at += length
assert sorted(found) == sorted(SIZES), f"the pictures are {found}"
