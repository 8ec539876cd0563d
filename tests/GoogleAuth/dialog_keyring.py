"""A Secret Service with one locked item and an unlock dialog that stays open for a while.

    dialog_keyring.py unlocked|dismissed      how the dialog ends
"""
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

ROOT, ITEM, PROMPT, SESSION = (f"/org/freedesktop/secrets{path}" for path in ("", "/collection/login/1", "/prompt/1", "/session/1"))
INTERFACES = """<node>
<interface name="org.freedesktop.Secret.Service"><property name="Collections" type="ao" access="read"/>
 <method name="OpenSession"><arg type="s"/><arg type="v"/><arg type="v" direction="out"/><arg type="o" direction="out"/></method>
 <method name="SearchItems"><arg type="a{ss}"/><arg type="ao" direction="out"/><arg type="ao" direction="out"/></method>
 <method name="Unlock"><arg type="ao"/><arg type="ao" direction="out"/><arg type="o" direction="out"/></method>
 <method name="GetSecrets"><arg type="ao"/><arg type="o"/><arg type="a{o(oayays)}" direction="out"/></method></interface>
<interface name="org.freedesktop.Secret.Item"><method name="GetSecret"><arg type="o"/><arg type="(oayays)" direction="out"/></method>
 <property name="Locked" type="b" access="read"/><property name="Attributes" type="a{ss}" access="read"/>
 <property name="Label" type="s" access="read"/><property name="Created" type="t" access="read"/>
 <property name="Modified" type="t" access="read"/></interface>
<interface name="org.freedesktop.Secret.Prompt"><method name="Prompt"><arg type="s"/></method><method name="Dismiss"/>
 <signal name="Completed"><arg type="b"/><arg type="v"/></signal></interface>
</node>"""


class Keyring:
    def __init__(self, bus, ending):
        self.bus, self.ending, self.locked = bus, ending, True
        secret = (SESSION, [], list(b"jeton-1"), "text/plain")
        self.answers = {
            "OpenSession": lambda algorithm, _: ("(vo)", (GLib.Variant("s", ""), SESSION)) if algorithm == "plain" else None,
            "SearchItems": lambda _: ("(aoao)", ([], [ITEM]) if self.locked else ([ITEM], [])),
            "Unlock": lambda _: ("(aoo)", ([], PROMPT)),
            "GetSecrets": lambda *_: ("(a{o(oayays)})", ({ITEM: secret},)),
            "GetSecret": lambda _: ("((oayays))", (secret,)),
            "Prompt": self.prompt,
            "Dismiss": lambda: ("()", ()),
        }
        for path, interface in zip((ROOT, ITEM, PROMPT), Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces):
            bus.register_object(path, interface, self.call, self.read, None)

    def call(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        answer = self.answers[method](*arguments.unpack())
        if answer is None:
            invocation.return_dbus_error("org.freedesktop.DBus.Error.NotSupported", "plain only")
        else:
            invocation.return_value(GLib.Variant(*answer))

    def read(self, _bus, _sender, _path, _interface, name):
        return {"Collections": GLib.Variant("ao", []), "Locked": GLib.Variant("b", self.locked),
                "Attributes": GLib.Variant("a{ss}", {"service": "fr.dravel.Essai.google", "account": "refresh-token"}),
                "Label": GLib.Variant("s", "Essai"), "Created": GLib.Variant("t", 0), "Modified": GLib.Variant("t", 0)}[name]

    def prompt(self, _window):
        GLib.timeout_add(3000, self.end)
        return "()", ()

    def end(self):
        self.locked = self.ending == "dismissed"
        if not self.locked:
            changed = ("org.freedesktop.Secret.Item", {"Locked": GLib.Variant("b", False)}, [])
            self.bus.emit_signal(None, ITEM, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                 GLib.Variant("(sa{sv}as)", changed))
        opened = GLib.Variant("ao", [] if self.locked else [ITEM])
        self.bus.emit_signal(None, PROMPT, "org.freedesktop.Secret.Prompt", "Completed",
                             GLib.Variant("(bv)", (self.locked, opened)))
        return False


connection = Gio.bus_get_sync(Gio.BusType.SESSION)
keyring = Keyring(connection, sys.argv[1])
Gio.bus_own_name_on_connection(connection, "org.freedesktop.secrets", Gio.BusNameOwnerFlags.NONE)
GLib.MainLoop().run()
