"""What a screen reader asks a program to do for a person: no key, no mouse."""
from accessibility import wait_for


class Reader:
    def __init__(self, program):
        self._program = program

    def push(self, name, within=""):
        self._program.find("button", name, within).act()

    def answer_file_dialog(self, path):
        dialog = self._program.dialog()
        field = self._program.file_name(dialog)
        field.write(path)
        self._program.until_ready(dialog, field, path).act()
        self._program.until_closed(dialog)

    def pick(self, label, entry):
        """Picks an entry of a combo box, which is found by its label."""
        combo = self._program.labelled(label)
        combo.act("ShowMenu")
        combo.find("list item", entry).act("Toggle")
        wait_for(lambda: combo.name == entry, f"{label} to be {entry}")

    def open_list(self, cell):
        """Selects the row, which opens the list of its value. Returns the list."""
        before = len(self._program.focused())
        cell.act("Toggle")
        return wait_for(lambda: [each for each in self._program.focused()[before:] if each.role == "list item"],
                        "the list of the cell")[0].parent

    def pick_in_cell(self, cell, entry):
        self.open_list(cell).find("list item", entry).act("Toggle")
