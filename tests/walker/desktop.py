"""A program on this display: started, looked at, used by keys and by mouse, and ended."""
import os
import signal
import subprocess

from accessibility import Accessible, Bus, Failed, Gone, wait_for, ATSPI


def run(*command):
    return subprocess.run(command, check=False, capture_output=True, text=True).stdout


class Program:
    """A Qt program with one main window. Use it in a `with` statement."""

    def __init__(self, command, folder, **environment):
        self._log = open(os.path.join(folder, "output"), "w+", encoding="utf-8", errors="replace")
        environment = {**os.environ, "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", **environment}
        self.bus = Bus()
        self.process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                                        stdout=self._log, stderr=self._log)

    def __enter__(self):
        try:
            self.root = wait_for(self._root, "the program on the accessibility bus")
            self.window = wait_for(lambda: self.root.children[0], "the window")
            wait_for(self._active, "the window to become active")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._log.close()

    def output(self):
        with open(self._log.name, encoding="utf-8", errors="replace") as log:
            return log.read()

    def _root(self):
        if self.process.poll() is not None:
            raise Failed(f"the program ended with {self.process.returncode}:\n{self.output()}")
        registry = Accessible(self.bus, ATSPI + "Registry", "/org/a11y/atspi/accessible/root")
        for child in registry.children:
            if self.bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                             "GetConnectionUnixProcessID", _peer(child))[0] == self.process.pid:
                return child
        return None

    def _active(self):
        # openbox can miss a window that opens while it starts, until the next event.
        run("xprop", "-root", "-f", "NUDGE", "8s", "-set", "NUDGE", "x")
        return "active" in self.window.states

    def find(self, role, name, within=None):
        return self.window.find(role, name, within)

    def labelled(self, label):
        """The combo box with that label."""
        return next(each for each, _ in self.window.tree() if each.role == "combo box" and label in each.labels)

    def dialog(self):
        """The dialog that is open, once there is one."""

        def top():
            open_now = [each for each in self.root.children if each.role in ("dialog", "alert")
                        and "active" in each.states]
            return open_now[-1] if open_now else None

        return wait_for(top, "a dialog")

    @staticmethod
    def file_name(dialog):
        """The field of the file dialog that has the focus from the start."""
        return wait_for(lambda: next((each for each, _ in dialog.tree()
                                      if each.role == "text" and "focused" in each.states), None),
                        "the field for the file name")

    @staticmethod
    def until_ready(dialog, field, path):
        """Waits until the file dialog takes the path. It looks for the file in the background."""
        wait_for(lambda: field.text == path, "the path in the field")
        buttons = [each for each, _ in dialog.tree() if each.role == "button" and each.name in ("Open", "Save")]
        wait_for(lambda: "enabled" in buttons[0].states, "the button of the file dialog")
        return buttons[0]

    def until_closed(self, dialog):
        """Waits until the dialog is closed and keys go to the window again."""
        wait_for(lambda: not dialog.showing(), "the dialog to close")
        wait_for(self._active, "the window to become active again")

    def focused(self):
        """All that has got the keyboard focus so far. Cell editors are only here, not in the tree."""
        return [Accessible(self.bus, self.root.peer, path) for name, detail, path, number in self.bus.events()
                if (name, detail, number) == ("StateChanged", "focused", 1)]

    def key(self, *names):
        run("xdotool", "key", "--delay", "0", *names)

    def type(self, text):
        run("xdotool", "type", "--delay", "1", "--", text)

    def click(self, node, button=1):
        x, y, width, height = node.extents
        run("xdotool", "mousemove", str(x + width // 2), str(y + height // 2), "click", str(button))

    def quit(self):
        """Closes the window as a window manager does. Returns the exit status."""
        self.key("alt+F4")
        wait_for(lambda: self.process.poll() is not None, "the program to end")
        return self.process.returncode


def _peer(node):
    from gi.repository import GLib
    return GLib.Variant("(s)", (node.peer,))
