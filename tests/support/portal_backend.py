"""A desktop behind the portal: answers what a story has written down, and writes down what it was asked."""
import json
import pathlib
import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.impl.portal.desktop.essai"
PATH = "/org/freedesktop/portal/desktop"
IMPL = "org.freedesktop.impl.portal."
QUESTION = '<arg type="o" direction="in"/>{}<arg type="a{{sv}}" direction="in"/><arg type="u" direction="out"/><arg type="a{{sv}}" direction="out"/>'


def method(name, kinds):
    return f'<method name="{name}">{QUESTION.format("".join(f"""<arg type="{kind}" direction="in"/>""" for kind in kinds))}</method>'


INTERFACES = {
    "FileChooser": method("OpenFile", ("s", "s", "s")) + method("SaveFile", ("s", "s", "s")),
    "AppChooser": method("ChooseApplication", ("s", "s", "as")),
    "GlobalShortcuts": method("CreateSession", ("o", "s")) + method("BindShortcuts", ("o", "a(sa{sv})", "s")) + """
        <signal name="Activated"><arg type="o"/><arg type="s"/><arg type="t"/><arg type="a{sv}"/></signal>
        <signal name="ShortcutsChanged"><arg type="o"/><arg type="a(sa{sv})"/></signal>
        <property name="version" type="u" access="read"/>""",
    "Session": '<method name="Close"/><signal name="Closed"/><property name="version" type="u" access="read"/>'}


def serve(answers, heard, interfaces):
    bus, loop, session, sessions = Gio.bus_get_sync(Gio.BusType.SESSION), GLib.MainLoop(), [], {}

    def on_call(connection, sender, path, interface, member, parameters, invocation):
        if member == "Tell":
            name, arguments = parameters.unpack()[0], parameters.get_child_value(1).get_variant()
            whole = GLib.Variant.new_tuple(GLib.Variant("o", session[-1]), *[arguments.get_child_value(i)
                                                                             for i in range(arguments.n_children())])
            connection.emit_signal(None, PATH, IMPL + "GlobalShortcuts", name, whole)
            return invocation.return_value(None)
        said = parameters.unpack()
        with open(heard, "a") as file:
            file.write(json.dumps([member, *said], default=list) + "\n")
        if member == "Close":
            bus.unregister_object(sessions.pop(path))
            return invocation.return_value(None)
        if member == "CreateSession":
            session.append(said[1])
            if said[1] in sessions:  # a portal that ended did not close it
                bus.unregister_object(sessions.pop(said[1]))
            sessions[said[1]] = bus.register_object(said[1], interfaces_of("Session")[0], on_call, lambda *_: GLib.Variant("u", 1), None)
        outcome, results = json.loads(pathlib.Path(answers).read_text()).get(member, [0, {}])
        invocation.return_value(GLib.Variant("(ua{sv})", (outcome, {
            name: GLib.Variant(kind, [(i, {k: GLib.Variant("s", v) for k, v in p.items()}) for i, p in value]
                               if kind.startswith("a(") else value)
            for name, (kind, value) in results.items()})))

    def interfaces_of(*names):
        return Gio.DBusNodeInfo.new_for_xml("<node>" + "".join(
            f'<interface name="{IMPL}{name}">{INTERFACES[name]}</interface>' for name in names) + "</node>").interfaces

    for interface in interfaces_of(*interfaces):
        bus.register_object(PATH, interface, on_call, lambda *_: GLib.Variant("u", 1), None)
    tell = Gio.DBusNodeInfo.new_for_xml('<node><interface name="fr.essai.Portal"><method name="Tell"><arg type="s" direction="in"/>'
                                        '<arg type="v" direction="in"/></method></interface></node>').interfaces[0]
    bus.register_object(PATH, tell, on_call, None, None)
    Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE, None, None)
    loop.run()


if __name__ == "__main__":
    serve(*sys.argv[1:3], sys.argv[3:])
