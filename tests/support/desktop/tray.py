"""Reads and clicks a tray icon's menu over the bus, as a panel does."""
from gi.repository import GLib

from .desktop import until

WATCHER, ITEM, MENU = "org.kde.StatusNotifierWatcher", "org.kde.StatusNotifierItem", "com.canonical.dbusmenu"


class Tray:
    def __init__(self, desktop):
        self.desktop = desktop

    def item(self):
        """(bus name, path) of the only registered item, or none."""
        try:
            entries = self._properties(WATCHER, "/StatusNotifierWatcher", WATCHER)["RegisteredStatusNotifierItems"]
        except GLib.Error:
            return None
        for entry in entries:
            name, slash, path = entry.replace("@", "").partition("/")  # GNOME's extension puts one between
            if self.desktop.owned(name):  # not what a killed program left there
                return name, slash + path if slash else "/StatusNotifierItem"
        return None

    def wait(self):
        return until(self.item, "a tray icon")

    def property(self, name):
        return self._properties(*self.wait(), ITEM).get(name)

    def tooltip(self):
        return self.property("ToolTip")[2]

    def activate(self):
        name, path = self.wait()
        self.desktop.call(name, path, ITEM, "Activate", GLib.Variant("(ii)", (0, 0)))

    def labels(self):
        """The whole menu as text: "-" separates, "[x]" is checked, "(…)" is disabled, "> " stands in a submenu."""
        return self._lines(self._layout()[1], "")

    def click(self, label):
        """Clicks the entry of that label, wherever it stands."""
        node = until(lambda: next((n for n in self._walk(self._layout()[1]) if self._label(n) == label), None),
                     f"the entry {label!r}")
        assert node[1].get("enabled", True), f"{label!r} is disabled"
        name, _ = self.wait()
        self.desktop.call(name, self.property("Menu"), MENU, "Event",
                          GLib.Variant("(isvu)", (node[0], "clicked", GLib.Variant("s", ""), 0)))

    def _layout(self):
        name, _ = self.wait()
        menu = self.property("Menu")
        self.desktop.call(name, menu, MENU, "AboutToShow", GLib.Variant("(i)", (0,)))
        return self.desktop.call(name, menu, MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))

    def _properties(self, name, path, interface):
        return self.desktop.call(name, path, "org.freedesktop.DBus.Properties", "GetAll", GLib.Variant("(s)", (interface,)))[0]

    def _walk(self, node):
        for kid in node[2]:
            yield kid
            yield from self._walk(kid)

    @staticmethod
    def _label(node):
        return node[1].get("label", "").replace("__", "_")

    def _lines(self, node, indent):
        lines = []
        for kid in node[2]:
            text = "-" if kid[1].get("type") == "separator" else self._label(kid)
            if kid[1].get("toggle-state") == 1:
                text = "[x] " + text
            lines.append(indent + (text if kid[1].get("enabled", True) else f"({text})"))
            lines += self._lines(kid, indent + "> ")
        return lines
