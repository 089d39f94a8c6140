"""The whole story by screen reader alone: choose, update, read, choose a page and a controller type,
edit a property and the serial number, save, load, erase. No key, no mouse: only what assistive
technology asks the program to do.

    by_screen_reader.py VORNADEL IMAGE
"""
import sys

from reader import Reader
from story import Story, FLASH_SIZE

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
    reader.pick_in_cell(story.cell(0, 1), "0 : SimHub-A, 4 ports")
    serial = story.field("Serial Number", "FirmWare")
    serial.write("SN0042")
    story.program.find("label", "2 unsaved edits")
    reader.push("Save to *.bin")
    reader.answer_file_dialog(story.saved)
    story.until_saved()

    reader.push("Load From *.bin")
    reader.answer_file_dialog(story.chosen)
    story.until_text(serial, "SN0001")
    reader.push("Erase Flash")
    story.until_told("Erase FW Success")
    story.expect_flash(b"\xff" * FLASH_SIZE)
