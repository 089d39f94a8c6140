"""The whole story by keyboard alone: choose, update, read, find a property, edit it, undo and redo that,
edit the serial number, save, load, undo, load again, erase. The tree is only looked at.

    by_keyboard.py VORNADEL IMAGE
"""
import sys

from accessibility import wait_for, Failed
from story import Story, FLASH_SIZE


class Keyboard:
    def __init__(self, program):
        self._program = program
        self._before = 0

    def press(self, *names):
        self._before = len(self._program.focused())
        self._program.key(*names)

    def go_to(self, role, name, within=""):
        """Presses Tab until that control has the focus."""
        target = self._program.find(role, name, within)
        for _ in range(60):
            if "focused" in target.states:
                return target
            self.press("Tab")
            wait_for(lambda: len(self._program.focused()) > self._before, f"the way to {name!r}")
        raise Failed(f"the Tab key does not reach {name!r}")

    def until_at(self, name):
        """Waits until the last keys have brought the focus to an entry of that name."""
        wait_for(lambda: any(each.name == name for each in self._program.focused()[self._before:]),
                 f"the focus on {name!r}")

    def push(self, name, within=""):
        self.go_to("button", name, within)
        self.press("Return")

    def answer_file_dialog(self, path):
        dialog = self._program.dialog()
        field = self._program.file_name(dialog)
        self.press("ctrl+a")
        self._program.type(path)
        self._program.until_ready(dialog, field, path)
        self.press("Return")
        self._program.until_closed(dialog)


with Story(*sys.argv[1:]) as story:
    keys = Keyboard(story.program)

    keys.push("...", "Easy")
    keys.answer_file_dialog(story.chosen)
    story.until_text(story.field("Serial Number", "Easy"), "SN0001")
    keys.push("Update")
    story.until_told("Update FW Success")
    story.expect_flash(story.image)

    keys.push("Read From Flash")
    story.until_told("Read Fw Success")
    keys.press("ctrl+f")
    story.program.type("ssc mode")
    story.until_cell(0, 1, "3 : Automatic")
    keys.press("Down")
    keys.until_at("SSC Mode")
    keys.press("Return")
    keys.until_at("3 : Automatic")
    keys.press("Up", "Up")
    keys.until_at("1 : Center-spread")
    keys.press("Return")
    story.until_cell(0, 1, "1 : Center-spread")
    keys.press("ctrl+z")
    story.until_cell(0, 1, "3 : Automatic")
    keys.press("ctrl+shift+z")
    story.until_cell(0, 1, "1 : Center-spread")
    serial = keys.go_to("text", "Serial Number", "FirmWare")
    keys.press("ctrl+a")
    story.program.type("SN0042")
    story.program.find("label", "2 unsaved edits")
    keys.press("ctrl+s")
    keys.answer_file_dialog(story.saved)
    story.until_saved()

    keys.push("Load From *.bin")
    keys.answer_file_dialog(story.chosen)
    story.until_text(serial, "SN0001")
    keys.press("ctrl+z")
    story.until_text(serial, "SN0042")
    keys.press("Down")  # the menu with the images used last
    keys.until_at(f"1  {story.chosen}")
    keys.press("Return")
    story.until_text(serial, "SN0001")
    keys.push("Erase Flash")
    story.until_told("Erase FW Success")
    story.expect_flash(b"\xff" * FLASH_SIZE)
    if story.program.quit() != 0:
        raise Failed("the program failed at its end")
