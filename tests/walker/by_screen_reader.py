"""The whole story by screen reader alone: choose, update, read, choose a page and a controller type,
edit a property and the serial number, save, load, erase. No key, no mouse: only what assistive
technology asks the program to do.

    by_screen_reader.py VORNADEL IMAGE
"""
import sys

from accessibility import wait_for
from story import Story, FLASH_SIZE


class Reader:
    def __init__(self, program):
        self._program = program

    def push(self, name, within=""):
        self._program.find("button", name, within).act()

    def answer_file_dialog(self, path):
        dialog = self._program.dialog()
        field = wait_for(lambda: next((each for each, _ in dialog.tree()
                                       if each.role == "text" and "focused" in each.states), None),
                         "the field for the file name")
        field.write(path)
        self._program.until_ready(dialog, field, path).act()
        self._program.until_closed(dialog)

    def pick(self, label, entry):
        """Picks an entry of a combo box, which is found by its label."""
        combo = self._program.labelled(label)
        combo.act("ShowMenu")
        combo.find("list item", entry).act("Toggle")
        wait_for(lambda: combo.name == entry, f"{label} to be {entry}")

    def pick_in_cell(self, cell, entry):
        """Picks an entry of the list that opens when the row is selected."""
        before = len(self._program.focused())
        cell.act("Toggle")
        wait_for(lambda: [each for each in self._program.focused()[before:] if each.role == "list item"],
                 "the list of the cell")[0].parent.find("list item", entry).act("Toggle")


with Story(*sys.argv[1:]) as story:
    reader = Reader(story.program)

    reader.push("...", "Easy")
    reader.answer_file_dialog(story.chosen)
    story.until_text(story.field("Serial Number", "Easy"), "SN0001")
    reader.push("Update")
    story.until_told("Update FW Success")
    story.expect_flash(story.image)

    reader.pick("ICType", "SimHub-B.INI")
    reader.pick("ICType", "SimHub-A.INI")
    reader.push("Read From Flash")
    story.until_told("Read Fw Success")
    reader.pick("PageName", "System")
    reader.pick("PageName", "SSC")
    reader.pick_in_cell(story.cell(2, 1), "1 : Center-spread")
    story.until_cell(2, 1, "1 : Center-spread")
    serial = story.field("Serial Number", "FirmWare")
    serial.write("SN0042")
    reader.push("Save to *.bin")
    reader.answer_file_dialog(story.saved)
    story.until_saved()

    reader.push("Load From *.bin")
    reader.answer_file_dialog(story.chosen)
    story.until_text(serial, "SN0001")
    reader.push("Erase Flash")
    story.until_told("Erase FW Success")
    story.expect_flash(b"\xff" * FLASH_SIZE)
