"""What a screen reader is told of every control, compared with a table: role, name, description.

    controls.py VORNADEL IMAGE
"""
import sys

from accessibility import Failed
from story import Story

EASY = "Easy Updae Firmware Form *.bin file"
FLASH = "FirmWare From Flash & Detail Config ->"
SHORTCUTS = ("Ctrl+R: Read From Flash\nCtrl+O: Load From *.bin\nCtrl+S: Save to *.bin\n"
             "Ctrl+Z: undo an edit\nCtrl+Shift+Z: repeat it\nCtrl+F: find a property\n"
             "Ctrl+C: copy the selected rows\nF1: the manual")
FAILED = "Wrong firmware file\nUpdate FW Fail"  # the update at start has no image
PASSWORD = "Asks for an administrator's password and "
RECENT = "; hold, or press Down, for the ones used last"

# Each box with its description, and its controls.
HELP = [
    ("button", "LoadUpdateDriver", PASSWORD + "gives access to the hub"),
    ("button", "UnloadUpdateDriver", PASSWORD + "withdraws access to the hub"),
    ("button", "Get Log", "Copies the log file to the desktop"),
]
NORMAL_MODE = [
    ("Help Box", SHORTCUTS, HELP),
    ("Update Firmware Box", "", [
        ("text", "Detect Hub Info", ""),
        ("text", "Update FW Info", FAILED),
        ("slider", "Progress", FAILED),
    ]),
    (EASY, "", [
        *[("text", name, EASY) for name in ("VID", "SSPID", "HSPID", "ver", "Manufacturer", "Product",
                                            "Serial Number", "Firmware file")],
        ("button", "...", "Choose a firmware file" + RECENT),
        ("button", "Update", "Writes the chosen firmware file to the hub"),
    ]),
    (FLASH, "", [
        *[("text", name, FLASH) for name in ("VID", "SSPID", "HSPID", "ver", "Manufacturer", "Product",
                                             "Serial Number", "Container ID")],
        ("button", "Read From Flash", "Reads the hub's whole flash into this box (Ctrl+R)"),
        ("button", "Load From *.bin", "Loads an image from a file into this box" + RECENT + " (Ctrl+O)"),
        ("button", "Erase Flash", "Erases the hub's whole flash at once, without asking"),
        ("button", "Save to *.bin", "Saves the image of this box, with your changes, to a file (Ctrl+S)"),
    ]),
    (FLASH, "", [
        ("text", "Description", ""),
        ("text", "Binary Data", ""),
        ("combo box", "PageName", "Which properties the table lists"),
        ("combo box", "ICType", "The file that describes the controller's properties"),
        ("table", "Properties", ""),
    ]),
]
SCALAR_MODE = [
    ("Help Box", "F1: the manual", HELP),
    ("Scalar Update", "", [
        ("text", "Firmware file", "Scalar Update"),
        ("button", "..", "Choose a firmware file" + RECENT),
        ("button", "ScalarUpdate", "Writes the firmware file to the hub and, after a success, ends the program"),
    ]),
    NORMAL_MODE[1],
]
CONTROLS = {"button", "text", "slider", "combo box", "table", "check box", "spin button"}


def heard(box):
    """The controls of a box. A combo box is called as its label; its own name is the entry."""
    return [(each.role, (each.labels or [""])[0] if each.role == "combo box" else each.name, each.description)
            for each in box.children if each.showing() and each.role in CONTROLS]


for scalar, boxes in ((False, NORMAL_MODE), (True, SCALAR_MODE)):
    with Story(*sys.argv[1:], scalar=scalar) as story:
        content = story.program.window.children[0].children[0]
        told = [(box.name, box.description, heard(box)) for box in content.children
                if box.showing() and box.role == "panel"]
    for expected, actual in zip(boxes, told):
        if expected != actual:
            raise Failed(f"expected {expected}\ntold     {actual}")
    if len(told) != len(boxes):
        raise Failed(f"{len(told)} boxes")
