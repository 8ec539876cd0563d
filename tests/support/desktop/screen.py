"""Finds and uses the widgets on the screen by accessible name. Speaks AT-SPI over D-Bus: its library can block for ever."""
import contextlib
import subprocess

from gi.repository import Gio, GLib

from .desktop import until

A = "org.a11y.atspi."
STATES = {4: "checked", 11: "focusable", 12: "focused", 23: "selected", 24: "sensitive", 25: "showing"}


class Widget:
    def __init__(self, bus, reference):
        self.bus, self.reference = bus, tuple(reference)

    def call(self, interface, member, signature=None, *arguments):
        return self.bus.call_sync(*self.reference, A + interface, member,
                                  GLib.Variant(signature, arguments) if signature else None, None, 0, 5000, None).unpack()

    def get(self, interface, name):
        return self.bus.call_sync(*self.reference, "org.freedesktop.DBus.Properties", "Get",
                                  GLib.Variant("(ss)", (A + interface, name)), None, 0, 5000, None).unpack()[0]

    @property
    def name(self):
        return self.get("Accessible", "Name")

    @property
    def role(self):
        return self.call("Accessible", "GetRoleName")[0]

    @property
    def states(self):
        words = self.call("Accessible", "GetState")[0]
        return {word for bit, word in STATES.items() if words[bit // 32] >> bit % 32 & 1}

    @property
    def children(self):
        return [Widget(self.bus, kid) for kid in self.call("Accessible", "GetChildren")[0]]

    @property
    def text(self):
        return self.call("Text", "GetText", "(ii)", 0, self.get("Text", "CharacterCount"))[0]

    @property
    def actions(self):
        try:
            return [action[0] for action in self.call("Action", "GetActions")[0]]
        except GLib.Error:
            return []

    def press(self):
        actions = self.actions
        wanted = next((a for a in ("Press", "Toggle", "Click") if a in actions), None)
        assert wanted, f"{self.name!r} cannot be pressed: {actions}"
        self.call("Action", "DoAction", "(i)", actions.index(wanted))

    def type(self, text):
        assert self.call("EditableText", "SetTextContents", "(s)", text)[0], f"{self.name!r} refused {text!r}"

    def focus(self):
        self.call("Component", "GrabFocus")
        until(lambda: "focused" in self.states, f"the focus in {self.name!r}")  # the window's, too


class Screen:
    def __init__(self, desktop, program="tacla"):
        self.desktop, self.program = desktop, program
        address = desktop.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        self.bus = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def _within(self, widget):
        with contextlib.suppress(GLib.Error):  # it went away meanwhile
            if "showing" in widget.states:
                yield widget
                for kid in widget.children:
                    yield from self._within(kid)

    def widgets(self):
        """Everything of the program that shows, in the order of the tree."""
        for program in Widget(self.bus, ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")).children:
            with contextlib.suppress(GLib.Error):
                for window in program.children if program.name.lower() == self.program else ():
                    yield from self._within(window)

    def find(self, name, role=""):
        for widget in self.widgets():
            with contextlib.suppress(GLib.Error):
                if widget.name.replace("\xa0", " ") == name and role in widget.role:  # before Qt's own colons, of late
                    return widget
        return None

    def kinds(self):
        """A control of each role that takes the focus."""
        return {widget.role: widget for widget in self.widgets()
                if widget.name and {"focusable", "sensitive"} <= widget.states}

    def wait(self, name, role=""):
        return until(lambda: self.find(name, role), f"{role or 'widget'} {name!r} on the screen")

    def wait_gone(self, name, role=""):
        until(lambda: not self.find(name, role), f"{name!r} to leave the screen")

    def inside(self, name, wanted):
        """The widget of that name within the one of the other name: the menu button of a task's row."""
        def find():
            whole = self.find(name)
            return whole and next((w for w in self._within(whole) if w.name == wanted), None)
        return until(find, f"{wanted!r} in {name!r}")

    def press(self, name, role=""):
        self.wait(name, role).press()

    def check(self, name, on):
        """Toggles a switch unless it stands as wanted."""
        switch = self.wait(name, "check box")
        if ("checked" in switch.states) != on:
            switch.press()

    def has_keys(self, title):
        """Whether the window of that title gets the keys, as the X server sees it: a program may know it earlier."""
        told = subprocess.run(["xdotool", "getwindowfocus", "getwindowname"], env=self.desktop.env, capture_output=True, text=True)
        return told.stdout.strip() == title

    def key(self, *keys):
        """Real keys, to the window that has the focus."""
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], env=self.desktop.env, check=True)


class Reader:
    """Says what a screen reader says as the focus moves: the pages, lists and groups that it comes into, then the control's
    name, role, state and description."""

    def __init__(self, screen):
        self.bus, self.said, self.around, self.focus, self.early = screen.bus, [], [], None, []
        for event in ("state-changed:focused", "text-caret-moved"):
            self.bus.call_sync("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", A + "Registry", "RegisterEvent",
                               GLib.Variant("(sass)", (f"object:{event}", [], "")), None, 0, 5000, None)
        self.bus.signal_subscribe(None, A + "Event.Object", "StateChanged", None, "focused", 0, self._focused)
        self.bus.signal_subscribe(None, A + "Event.Object", "TextCaretMoved", None, None, 0, self._caret_moved)

    def _focused(self, _bus, sender, path, _interface, _member, arguments):
        if arguments[1] != 1:
            return
        self.focus = path
        with contextlib.suppress(GLib.Error):  # it went away meanwhile
            self.said.append(self._words(Widget(self.bus, (sender, path))))

    def _caret_moved(self, _bus, _sender, path, *_rest):
        if self.focus not in (None, path):
            self.early.append(path)  # a field of whose text is told first is never named

    def _words(self, widget):
        around, parent = [], widget
        while (parent := Widget(self.bus, parent.get("Accessible", "Parent"))).role not in ("frame", "dialog", "application"):
            if parent.name and parent.role in ("panel", "list"):
                around.insert(0, parent)
        entered = [one for one in around if one.reference not in self.around]
        self.around = [one.reference for one in around]
        words = [f"[{', '.join(filter(None, (one.name, one.get('Accessible', 'Description'))))}]" for one in entered]
        state = "checked" if "checked" in widget.states else ""
        told = (widget.name, widget.role, state, widget.get("Accessible", "Description"))
        return " ".join([*words, ", ".join(filter(None, told))])

    def hears(self, wanted):
        """Waits until that is what was said last."""
        def heard():
            while GLib.MainContext.default().iteration(False):
                pass
            return self.said and self.said[-1] == wanted and not self.early
        try:
            until(heard, wanted, 10)
        except AssertionError:
            raise AssertionError(f"said last, not {wanted!r}: {self.said[-4:]}, text before focus: {self.early}") from None
