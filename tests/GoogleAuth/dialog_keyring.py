"""A Secret Service, for python-dbusmock, with one locked item and an unlock dialog that stays open for a while.

Parameter: "ending", how the dialog ends, "unlocked" or "dismissed".
"""
import dbus
from dbusmock import get_object
from gi.repository import GLib

BUS_NAME, MAIN_OBJ, SYSTEM_BUS = "org.freedesktop.secrets", "/org/freedesktop/secrets", False
MAIN_IFACE = "org.freedesktop.Secret.Service"
ITEM, PROMPT = MAIN_OBJ + "/collection/login/1", MAIN_OBJ + "/prompt/1"
ITEM_IFACE, PROMPT_IFACE = "org.freedesktop.Secret.Item", "org.freedesktop.Secret.Prompt"


def load(mock, parameters):
    mock.unlocks = parameters["ending"] == "unlocked"
    mock.AddProperties(MAIN_IFACE, {"Collections": dbus.Array([], "o")})
    attributes = {"service": "fr.dravel.Essai.google", "account": "refresh-token"}
    mock.AddObject(ITEM, ITEM_IFACE, {"Locked": dbus.Boolean(True), "Attributes": dbus.Dictionary(attributes, "ss"), "Label": "Essai",
                                      "Created": dbus.UInt64(0), "Modified": dbus.UInt64(0)},
                   [("GetSecret", "o", "(oayays)", "ret = (args[0], b'', b'jeton-1', 'text/plain')")])
    mock.AddObject(PROMPT, PROMPT_IFACE, {}, [("Prompt", "s", "", f"get_object('{MAIN_OBJ}').OpenDialog()"),
                                              ("Dismiss", "", "", "")])


@dbus.service.method(MAIN_IFACE, in_signature="sv", out_signature="vo")
def OpenSession(_self, algorithm, _input):
    if algorithm != "plain":
        raise dbus.DBusException("plain only", name="org.freedesktop.DBus.Error.NotSupported")
    return "", MAIN_OBJ + "/session/1"


@dbus.service.method(MAIN_IFACE, in_signature="a{ss}", out_signature="aoao")
def SearchItems(_self, _attributes):
    return ([], [ITEM]) if get_object(ITEM).Get(ITEM_IFACE, "Locked") else ([ITEM], [])


@dbus.service.method(MAIN_IFACE, in_signature="ao", out_signature="aoo")
def Unlock(_self, _objects):
    return [], PROMPT


@dbus.service.method(MAIN_IFACE)
def OpenDialog(self):
    def end():
        if self.unlocks:
            get_object(ITEM).UpdateProperties(ITEM_IFACE, {"Locked": dbus.Boolean(False)})
        opened = dbus.Array([dbus.ObjectPath(ITEM)] if self.unlocks else [], "o")
        get_object(PROMPT).EmitSignal(PROMPT_IFACE, "Completed", "bv", [not self.unlocks, opened])
    GLib.timeout_add(3000, end)
