"""Takes a picture of the screen in every state of the window.

    pictures.py VORNADEL IMAGE FOLDER light|dark [window]

With `window`, only the one of the README, with the window's frame.
"""
import os
import subprocess
import sys
import tempfile
import time

from accessibility import wait_for
from reader import Reader
from story import Story

VORNADEL, IMAGE, FOLDER, PALETTE = sys.argv[1:5]
ONLY_WINDOW = "window" in sys.argv[5:]
DARK = """[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=252,252,252
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
"""


class Album:
    """A story whose states are put into files, `01-start.png` and so on."""

    pages = 0

    def __init__(self, **how):
        self.story = Story(VORNADEL, IMAGE, **how)

    def __enter__(self):
        self.story.__enter__()
        self.reader = Reader(self.story.program)
        return self

    def __exit__(self, *failure):
        self.story.__exit__(*failure)

    def shoot(self, name):
        Album.pages += 1
        if not ONLY_WINDOW:
            take(f"{Album.pages:02}-{name}.png", "root")

    def choose(self, path):
        self.reader.push("...", "Easy")
        self.reader.answer_file_dialog(path)


def take(name, *window):
    time.sleep(0.3)  # nothing tells when the last change has been painted
    subprocess.run(["import", "-window", *window, os.path.join(FOLDER, name)], check=True)


settings = tempfile.TemporaryDirectory()
if PALETTE == "dark":  # as a desktop with dark colours has it
    with open(os.path.join(settings.name, "kdeglobals"), "w", encoding="ascii") as scheme:
        scheme.write(DARK)
    os.environ.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5", XDG_CONFIG_DIRS=settings.name)

with Album(hub="latency=none,mode=rom,fault=flip@write#3") as album:
    story, reader, program = album.story, album.reader, album.story.program
    album.shoot("start")
    reader.push("...", "Easy")
    panel = program.dialog()
    album.shoot("file-panel")
    reader.answer_file_dialog(story.chosen)
    album.shoot("image-chosen")
    album.choose("/proc/self/mem")
    album.shoot("unreadable-file-chosen")
    album.choose(story.chosen)
    reader.push("Update")
    story.until_told("Fail to verify flash\nUpdate FW Fail")
    album.shoot("update-failed")
    reader.push("Update")
    told = story.field("Update FW Info", "Update Firmware")
    wait_for(lambda: told.text.endswith("Reset to Flash Code...\n"), "the last step")
    album.shoot("update-running")
    story.until_told("Update FW Success")
    album.shoot("update-succeeded")
    reader.push("Read From Flash")
    story.until_told("Read Fw Success")
    album.shoot("flash-read")
    reader.pick_in_cell(story.cell(2, 1), "1 : Center-spread")
    story.until_cell(2, 1, "1 : Center-spread")
    serial = story.field("Serial Number", "FirmWare")
    serial.write("SN0042")
    album.shoot("edited")
    if ONLY_WINDOW:
        active = subprocess.run(["xdotool", "getactivewindow"], check=True, capture_output=True, text=True).stdout
        take("window.png", active.strip(), "-frame")
        sys.exit()
    program.key("ctrl+f")
    program.find("text", "Find a property").write("port")
    album.shoot("search")
    program.key("Escape")
    reader.pick_in_cell(story.cell(1, 1), "0 : Disable")
    story.until_cell(1, 1, "0 : Disable")
    album.shoot("rows-locked")
    entries = reader.open_list(story.cell(2, 1))
    album.shoot("list-of-a-cell")
    entries.find("list item", "2 : Up-spread").act("Toggle")
    alert = program.dialog()
    album.shoot("alert")
    alert.find("button", "OK").act()

with Album(hub="latency=none,ids=0001:0002:0003") as album:
    album.shoot("hub-absent")

with Album(scalar=True, hub="latency=none") as album:
    album.shoot("scalar-mode")
