"""What the stories of the window have in common: their hub, their files, and what they wait for."""
import os
import shutil
import tempfile

from accessibility import Accessible, Failed, wait_for
from desktop import Program

FLASH_SIZE = 32768
BLOCK = 0x7E00  # of the demo images
SERIAL = BLOCK + 43 + 22  # two strings of 10 bytes and a header
CHANGED = {
    BLOCK + 11: 0x0B,  # "SSC Mode" from 3 to 1, bits 2 and 1 of 0x0F
    BLOCK + 42: 0x02,  # the serial number has been edited
    SERIAL + 4: ord("4"),  # SN0001 became SN0042
    SERIAL + 5: ord("2"),
}


def content(path):
    with open(path, "rb") as file:
        return file.read()


class Story:
    """The window with a simulated hub that runs its ROM code first, which saves a restart."""

    def __init__(self, vornadel, image, scalar=False, hub="latency=none,mode=rom"):
        self.image = content(image)
        self._folder = tempfile.TemporaryDirectory()
        self.folder = self._folder.name
        self.flash = os.path.join(self.folder, "hub.bin")
        # A short name, because it is typed.
        self.chosen = os.path.join(self.folder, "a.bin")
        self.saved = os.path.join(self.folder, "b.bin")
        with open(self.chosen, "wb") as file:
            file.write(self.image)
        if scalar:
            vornadel = self._in_scalar_mode(vornadel)
        self.program = Program([vornadel, f"--simulated-hub={hub},image={self.flash}"],
                               self.folder, HOME=self.folder, XDG_STATE_HOME=self.folder,
                               XDG_CONFIG_HOME=self.folder)

    def _in_scalar_mode(self, vornadel):
        """A copy of the bundle, with another configuration."""
        bundle = os.path.join(self.folder, "Vornadel.app")
        shutil.copytree(vornadel[:vornadel.index("/Contents/MacOS/")], bundle)
        config = os.path.join(bundle, "Contents/Resources/config.ini")
        text = content(config).replace(b"ScalarMode = 0", b"ScalarMode = 1")
        with open(config, "wb") as file:
            file.write(text)
        return os.path.join(bundle, "Contents/MacOS/Vornadel")

    def __enter__(self):
        self.program.__enter__()
        self.until_idle()
        return self

    def __exit__(self, *failure):
        self.program.__exit__(*failure)
        self._folder.cleanup()

    def field(self, name, box):
        return self.program.find("text", name, box)

    def until_idle(self):
        button = self.program.find("button", "LoadUpdateDriver")
        wait_for(lambda: "enabled" in button.states, "the buttons")

    def until_told(self, last):
        """Waits for the last line of a flow, for its announcement, and for the buttons."""
        told = self.field("Update FW Info", "Update Firmware")
        wait_for(lambda: told.text.endswith(last + "\n"), repr(last))
        notice = self.program.find("notification", last)
        wait_for(lambda: ("StateChanged", "showing", notice.path, 1) in self.program.bus.events(),
                 "the announcement of " + repr(last))
        self.until_idle()

    def until_text(self, field, text):
        wait_for(lambda: field.text == text, f"{field.name} to read {text!r}")

    def cell(self, row, column):
        table = self.program.find("table", "Properties")
        return Accessible(table.bus, *table.call("Table", "GetAccessibleAt", "(ii)", row, column)[0])

    def until_cell(self, row, column, text):
        wait_for(lambda: self.cell(row, column).name == text, f"the cell to read {text!r}")

    def until_saved(self):
        expected = bytearray(self.image)
        for offset, byte in CHANGED.items():
            expected[offset] = byte
        wait_for(lambda: os.path.exists(self.saved), "the saved file")
        if content(self.saved) != expected:
            raise Failed("the saved file has other changes")

    def expect_flash(self, expected):
        if content(self.flash) != expected:
            raise Failed("the flash is not as expected")
