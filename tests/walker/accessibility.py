"""The accessibility tree of a program, as assistive technology gets it.

Speaks AT-SPI over D-Bus by way of Gio. libatspi is not used: it caches, and it asks for all properties
of an object at once, which crashes Qt 6.4.
"""
import time

from gi.repository import Gio, GLib

PATIENCE = 60  # seconds for one condition, even on a busy machine
CALL_MILLISECONDS = 5000

# Atspi.Role and Atspi.StateType by number; the roles that Qt uses.
ROLES = {
    2: "alert", 7: "check box", 11: "combo box", 16: "dialog", 20: "filler", 23: "frame", 29: "label",
    31: "list", 32: "list item", 33: "menu", 34: "menu bar", 35: "menu item", 39: "panel",
    41: "popup menu", 42: "progress bar", 43: "button", 48: "scroll bar", 49: "scroll pane",
    50: "separator", 51: "slider", 52: "spin button", 53: "split pane", 54: "status bar", 55: "table",
    56: "table cell", 57: "column header", 58: "row header", 61: "text", 62: "toggle button",
    63: "tool bar", 64: "tool tip", 65: "tree", 67: "unknown", 69: "window", 75: "application",
    91: "tree item", 98: "grouping", 101: "notification",
}
STATES = {
    1: "active", 4: "checked", 7: "editable", 8: "enabled", 10: "expanded", 11: "focusable", 12: "focused",
    16: "modal", 22: "selectable", 23: "selected", 25: "showing", 30: "visible", 43: "read-only",
}

ATSPI = "org.a11y.atspi."
NOT_YET = (Gio.DBusError.NO_REPLY, Gio.DBusError.TIMEOUT)


class Failed(Exception):
    """Something that the program did not do."""


class Gone(Exception):
    """The object or the program is not there, or does not answer just now."""


def wait_for(condition, what, patience=PATIENCE):
    """The first true value of the condition. An object that is gone counts as false."""
    end = time.monotonic() + patience
    while True:
        try:
            value = condition()
            if value:
                return value
        except Gone:
            pass
        if time.monotonic() > end:
            raise Failed(f"waited in vain for {what}")
        time.sleep(0.02)


class Bus:
    """The accessibility bus of this desktop, with all events on it."""

    def __init__(self):
        session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                    Gio.DBusCallFlags.NONE, CALL_MILLISECONDS, None).unpack()[0]
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self._events = []
        self.connection.signal_subscribe(None, ATSPI + "Event.Object", None, None, None,
                                         Gio.DBusSignalFlags.NONE, self._on_event)
        self.call(ATSPI + "Registry", "/org/a11y/atspi/registry", ATSPI + "Registry", "RegisterEvent",
                  GLib.Variant("(sass)", ("object:", [], "")))

    def call(self, peer, path, interface, method, arguments=None):
        try:
            return self.connection.call_sync(peer, path, interface, method, arguments, None,
                                             Gio.DBusCallFlags.NONE, CALL_MILLISECONDS, None).unpack()
        except GLib.Error as error:
            raise Gone(f"{method} of {path}: {error.message}") from None

    def events(self):
        """All events so far: (name, detail, path, value)."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self._events

    def _on_event(self, _connection, _sender, path, _interface, name, arguments):
        detail, number, _, value, *_ = arguments.unpack()
        self._events.append((name, detail, path, value if isinstance(value, str) else number))


class Accessible:
    """One object of a program's tree. Every value is asked for anew."""

    def __init__(self, bus, peer, path):
        self.bus, self.peer, self.path = bus, peer, path

    def __eq__(self, other):
        return isinstance(other, Accessible) and self.path == other.path

    def __hash__(self):
        return hash(self.path)

    def call(self, interface, method, signature=None, *arguments):
        variant = GLib.Variant(signature, arguments) if signature else None
        return self.bus.call(self.peer, self.path, ATSPI + interface, method, variant)

    def _property(self, interface, name):
        return self.bus.call(self.peer, self.path, "org.freedesktop.DBus.Properties", "Get",
                             GLib.Variant("(ss)", (ATSPI + interface, name)))[0]

    @property
    def role(self):
        number = self.call("Accessible", "GetRole")[0]
        return ROLES.get(number, str(number))

    @property
    def name(self):
        return self._property("Accessible", "Name")

    @property
    def description(self):
        return self._property("Accessible", "Description")

    @property
    def states(self):
        low, high = self.call("Accessible", "GetState")[0]
        return {name for bit, name in STATES.items() if (low | high << 32) >> bit & 1}

    @property
    def interfaces(self):
        return {name.rsplit(".", 1)[-1] for name in self.call("Accessible", "GetInterfaces")[0]}

    @property
    def parent(self):
        return Accessible(self.bus, *self._property("Accessible", "Parent"))

    @property
    def children(self):
        return [Accessible(self.bus, peer, path) for peer, path in self.call("Accessible", "GetChildren")[0]
                if not path.endswith("/null")]

    @property
    def text(self):
        return self.call("Text", "GetText", "(ii)", 0, -1)[0]

    @property
    def value(self):
        return self._property("Value", "CurrentValue")

    @value.setter
    def value(self, number):
        self.bus.call(self.peer, self.path, "org.freedesktop.DBus.Properties", "Set",
                      GLib.Variant("(ssv)", (ATSPI + "Value", "CurrentValue", GLib.Variant("d", number))))

    @property
    def extents(self):
        """x, y, width and height on the screen, in device-independent pixels."""
        return self.call("Component", "GetExtents", "(u)", 0)[0]

    @property
    def actions(self):
        return [action[0] for action in self.call("Action", "GetActions")[0]]

    @property
    def labels(self):
        """The names of the labels of this object. Qt gives a combo box no other name."""
        labelled_by = 2
        return [Accessible(self.bus, *label).name for kind, labels in self.call("Accessible", "GetRelationSet")[0]
                if kind == labelled_by for label in labels]

    def showing(self):
        try:
            return "showing" in self.states
        except Gone:
            return False

    def tree(self, depth=0):
        """This object and all that are showing below it, each with its depth."""
        if depth and not self.showing():
            return
        yield self, depth
        for child in self.children:
            yield from child.tree(depth + 1)

    def find(self, role, name, within=None):
        """The one object of that role and name that is showing, once it is there; `within` is a part of
        the name of the box around it."""

        def one():
            found = [each for each, _ in self.tree() if each.role == role and each.name == name and
                     (within is None or within in each.parent.name)]
            return found[0] if len(found) == 1 else None

        return wait_for(one, f"one {role} {name!r}")

    # What a screen reader does for the person.
    def act(self, name="Press"):
        self.call("Action", "DoAction", "(i)", self.actions.index(name))

    def write(self, text):
        """Replaces the whole text."""
        if not self.call("EditableText", "SetTextContents", "(s)", text)[0]:
            raise Failed(f"{self.name} does not take a text")
