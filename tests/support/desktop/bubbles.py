"""Listens to what the notification daemon is asked to show, and answers through the daemon as its user."""
import subprocess

from gi.repository import Gio, GLib

from .desktop import until


class Bubbles:
    def __init__(self, desktop):
        self.desktop, self.shown, self.closed = desktop, [], []
        self._asked = {}
        self._monitor = desktop.connect("SESSION")
        self._monitor.add_filter(self._look)
        rules = ["interface='org.freedesktop.Notifications'", "type='method_return'", "type='error'"]
        self._monitor.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring",
                                "BecomeMonitor", GLib.Variant("(asu)", (rules, 0)), None, Gio.DBusCallFlags.NONE, 5000, None)

    def wait(self, summary, count=1):
        """The last of at least that many bubbles of that title: a dictionary of summary, body, actions, hints, id."""
        return until(lambda: [b for b in list(self.shown) if b["summary"] == summary][count - 1:],
                     f"{count} notifications {summary!r}")[-1]

    def answer(self, summary, action):
        """Chooses an action by its label, in dunst's own list of actions."""
        bubble = self.wait(summary)
        keys = dict(zip(bubble["actions"][1::2], bubble["actions"][::2]))
        (self.desktop.folder / "wanted").write_text(f"[{bubble['id']},{keys[action]}]")
        subprocess.run(["dunstctl", "context"], env=self.desktop.env, check=True)

    def _look(self, _connection, message, incoming, *_):
        if incoming:
            kind, member = message.get_message_type(), message.get_member()
            if kind == Gio.DBusMessageType.METHOD_CALL and member == "Notify":
                names = ("app", "replaces", "icon", "summary", "body", "actions", "hints", "timeout")
                self._asked[message.get_sender(), message.get_serial()] = dict(zip(names, message.get_body().unpack()))
            elif kind == Gio.DBusMessageType.METHOD_CALL and member == "CloseNotification":
                self.closed.append(message.get_body().unpack()[0])
            elif kind == Gio.DBusMessageType.METHOD_RETURN:
                asked = self._asked.pop((message.get_destination(), message.get_reply_serial()), None)
                if asked is not None:
                    self.shown.append(asked | {"id": message.get_body().unpack()[0]})
            if kind == Gio.DBusMessageType.METHOD_CALL:
                return None  # else an error would be sent back, and the bus drops a monitor that speaks
        return message
