"""Where the focus is after a flow, a panel and an alert, all pressed by Return; what Return and the arrow
keys do while the buttons are off; and that a screen reader does not move the progress bar.

    focus.py VORNADEL IMAGE
"""
import os
import sys

from accessibility import Failed, wait_for
from story import Story


def expect_focus(control):
    wait_for(lambda: "focused" in control.states, f"the focus on {control.name!r}")


with Story(*sys.argv[1:]) as story:
    window = story.program
    combos = [each.name for each, _ in window.window.tree() if each.role == "combo box"]

    for label in ("Read From Flash", "Load From *.bin"):
        button = window.find("button", label)
        button.act("SetFocus")
        expect_focus(button)
        window.key("Return")
        if label.startswith("Load"):
            panel = window.dialog()
            window.key("Escape")
            window.until_closed(panel)
        else:
            wait_for(lambda: "enabled" not in button.states, "the buttons to go off")
            window.key("Down", "space", "Return", "Up")
            story.until_told("Read Fw Success")
        expect_focus(button)

    with open(os.path.join(story.folder, "c.bin"), "w", encoding="ascii") as file:
        file.write("no image")
    window.key("Return")
    panel = window.dialog()
    name = window.file_name(panel)
    window.key("ctrl+a")
    window.type(file.name)
    window.until_ready(panel, name, file.name)
    window.key("Return")
    wait_for(lambda: window.dialog().role == "alert", "the alert")
    alert = window.dialog()
    window.key("Return")
    window.until_closed(alert)
    expect_focus(button)

    if combos != [each.name for each, _ in window.window.tree() if each.role == "combo box"]:
        raise Failed("a key has changed a list")

    bar = window.find("slider", "Progress")
    bar.value = 80
    bar.act("Increase")
    if bar.value != 0:
        raise Failed(f"the progress bar stands at {bar.value}")
    if window.quit() != 0:
        raise Failed("the program did not end well")
