"""Starts and ends the parts of a headless desktop: X server, buses, window manager, panel, notifications, keyring …"""
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>{kind}</type><listen>unix:path={socket}</listen><auth>EXTERNAL</auth>{services}
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>"""

# A panel with nothing but a tray.
PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0"><property name="configver" type="int" value="2"/>
<property name="panels" type="array"><value type="int" value="1"/><property name="panel-1" type="empty">
<property name="position" type="string" value="p=6;x=0;y=0"/><property name="length" type="uint" value="100"/>
<property name="plugin-ids" type="array"><value type="int" value="1"/></property></property></property>
<property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property></channel>"""

# Bubbles never expire. Which action is taken is written to a file before dunst asks its "dmenu".
DUNST = """[global]
notification_limit = 0
idle_threshold = 0
markup = full
dmenu = {folder}/pick
[urgency_normal]
timeout = 0
"""
PICK = """#!/bin/sh
grep -m 1 -F -f "{folder}/wanted"
"""


def until(condition, what, seconds=20):
    """The first true value of the condition; fails the test when there is none in time."""
    end = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.05)
    return value


class Desktop:
    """with Desktop() as desktop: … desktop.start("notify") … desktop.run(["tacla"])"""

    ALL = ("wm", "a11y", "secrets", "notify", "logind", "panel")
    services = ""  # beside those of the test: elements of the session bus's configuration
    NAMES = {"notify": "org.freedesktop.Notifications", "secrets": "org.freedesktop.secrets", "a11y": "org.a11y.Bus",
             "notify of xfce": "org.freedesktop.Notifications", "panel": "org.kde.StatusNotifierWatcher"}

    def __init__(self, without=(), size="1280x900"):
        self.parts = [part for part in self.ALL if part not in without]
        self.size, self.processes = size, {}

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tacla-desk-", dir="/tmp"))
        home = self.folder / "home"
        for name in ("home/Documents", "home/.config/xfce4/xfconf/xfce-perchannel-xml", "services", "log", "bin"):
            (self.folder / name).mkdir(parents=True)
        (self.folder / "runtime").mkdir(mode=0o700)
        self.env = {"PATH": f"{self.folder}/bin:{os.environ['PATH']}", "HOME": str(home), "LC_ALL": "C.UTF-8",
                    "TZ": "Europe/Paris", "XDG_RUNTIME_DIR": str(self.folder / "runtime"), "XDG_SESSION_TYPE": "x11",
                    "XDG_CURRENT_DESKTOP": "XFCE", "GSETTINGS_BACKEND": "memory", "GIO_USE_VFS": "local",
                    "GVFS_DISABLE_FUSE": "1", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "LIBGL_ALWAYS_SOFTWARE": "1",
                    "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.folder}/runtime/bus",
                    "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/runtime/system"}
        try:
            self._configure(home)
            self._start_screen()
            self._start_buses()
            for part in self.parts:
                self.start(part)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for name in reversed(list(self.processes)):
            self.stop(name)
        shutil.rmtree(self.folder, ignore_errors=True)

    def run(self, command, name="program", kept=(), **extra):
        """Starts a program inside the desktop, without the variables that are None; it ends with the desktop."""
        environment = {name: value for name, value in (self.env | extra).items() if value is not None}
        with open(self.folder / "log" / name, "ab") as log:
            self.processes[name] = subprocess.Popen(command, env=environment, stdout=log, stderr=log, pass_fds=kept,
                                                    stdin=subprocess.DEVNULL, start_new_session=True)
        return self.processes[name]

    def stop(self, name):
        process = self.processes.pop(name, None)
        if process is None:
            return
        for number, patience in ((signal.SIGTERM, 5), (signal.SIGKILL, 5)):
            with contextlib.suppress(ProcessLookupError, subprocess.TimeoutExpired):
                os.killpg(process.pid, number)
                process.wait(patience)
        if name in self.NAMES:
            until(lambda: not self.owned(self.NAMES[name]), f"the end of {name}")

    def start(self, part):
        command = {
            "wm": ["openbox", "--sm-disable"],
            "a11y": ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately", "--a11y=1"],
            "secrets": ["sh", "-c", "echo | exec gnome-keyring-daemon --foreground --unlock --components=secrets"],
            "notify": ["dunst", "-conf", f"{self.folder}/dunstrc"],
            "notify of xfce": ["/usr/lib/x86_64-linux-gnu/xfce4/notifyd/xfce4-notifyd"],
            "logind": ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"],
            "panel": ["xfce4-panel", "--disable-wm-check", "--sm-client-disable"],
        }[part]
        self.run(command, part)
        until(lambda: self._ready(part), f"{part} to start ({self.log(part)[-400:]})", 40)

    def restart(self, part):
        self.stop(part)
        self.start(part)

    def log(self, name):
        path = self.folder / "log" / name
        return path.read_text(errors="replace") if path.exists() else ""

    def opened(self):
        """What programs asked to be opened: files and addresses, one a line."""
        return (self.folder / "opened").read_text().split("\n")[:-1]

    def call(self, name, path, interface, member, arguments=None, bus=None):
        return (bus or self.session).call_sync(name, path, interface, member, arguments, None,
                                               Gio.DBusCallFlags.NO_AUTO_START, 5000, None).unpack()

    def ask_bus(self, member, arguments=None, bus=None):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member, arguments, bus)[0]

    def owned(self, name, bus=None):
        return self.ask_bus("NameHasOwner", GLib.Variant("(s)", (name,)), bus)

    def offer_service(self, name, program):
        """Lets the session bus start the program for those who call its name."""
        (self.folder / "services" / f"{name}.service").write_text(f"[D-BUS Service]\nName={name}\nExec={program}\n")
        for member, arguments in (("UpdateActivationEnvironment", GLib.Variant("(a{ss})", (self.env,))),
                                  ("ReloadConfig", None)):
            self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member, arguments)

    def connections(self):
        return {name for name in self.ask_bus("ListNames") if name.startswith(":")}

    def sleep_and_wake(self):
        """What logind says around a suspend."""
        for asleep in (True, False):
            self.call("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.DBus.Mock", "EmitSignal",
                      GLib.Variant("(sssav)", ("org.freedesktop.login1.Manager", "PrepareForSleep", "b",
                                               [GLib.Variant("b", asleep)])), self.system)

    def network_back(self):
        """What NetworkManager says when the machine is connected."""
        path, interface = "/org/freedesktop/NetworkManager", "org.freedesktop.NetworkManager"
        self.system.emit_signal(None, path, interface, "StateChanged", GLib.Variant("(u)", (70,)))

    def offer_portal(self, interface, *method):
        """A portal with one method (name, arguments, result, what it does); returns what sends its signals."""
        portal = ("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop")

        def mock(member, signature, *arguments):
            self.call(*portal, "org.freedesktop.DBus.Mock", member, GLib.Variant(signature, (interface, *arguments)))
        self.run(["/usr/bin/python3", "-m", "dbusmock", "--session", *portal, interface], "portal")
        until(lambda: self.owned(portal[0]), "the portal")
        mock("AddMethod", "(sssss)", *method)
        return lambda name, kinds, *values: mock("EmitSignal", "(sssav)", name, kinds, [
            GLib.Variant(kind, value) for kind, value in zip(kinds, values)])

    def lock_keyring(self):
        self.call(self.NAMES["secrets"], "/org/freedesktop/secrets", "org.freedesktop.Secret.Service", "Lock",
                  GLib.Variant("(ao)", (["/org/freedesktop/secrets/collection/login"],)))

    def windows(self, program="tacla"):
        """The numbers of the program's windows and menus on the screen."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--classname", f"^{program}$"], env=self.env,
                               capture_output=True, text=True)
        return found.stdout.split()

    def connect(self, kind):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        with contextlib.suppress(GLib.Error):  # it does not listen yet
            return Gio.DBusConnection.new_for_address_sync(self.env[f"DBUS_{kind}_BUS_ADDRESS"], flags, None, None)

    def _configure(self, home):
        self._write("bus.conf", BUS.format(kind="session", socket=f"{self.folder}/runtime/bus",
                                           services=f"<servicedir>{self.folder}/services</servicedir>{self.services}"))
        self._write("system.conf", BUS.format(kind="system", socket=f"{self.folder}/runtime/system", services=""))
        self._write("home/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", PANEL)
        self._write("dunstrc", DUNST.format(folder=self.folder))
        self._write("opened", "")
        self._write("pick", PICK.format(folder=self.folder), 0o700)
        # Stands for the browser and the editor.
        self._write("bin/xdg-open", f'#!/bin/sh\nprintf "%s\\n" "$1" >> {self.folder}/opened\n', 0o700)
        service = pathlib.Path("/usr/share/dbus-1/services/org.xfce.Xfconf.service")
        if service.exists():
            shutil.copy(service, self.folder / "services")

    def _write(self, name, text, mode=0o600):
        path = self.folder / name
        path.write_text(text)
        path.chmod(mode)

    def _start_screen(self):
        # A number of its own: in another network name space the server would take one that is in use.
        self.env["DISPLAY"] = f":{10_000 + os.getpid()}"
        reading, writing = os.pipe()
        command = ["Xvfb", self.env["DISPLAY"], "-screen", "0", f"{self.size}x24", "-nolisten", "tcp", "-noreset"]
        self.run([*command, "-displayfd", str(writing)], "x", kept=[writing])
        os.close(writing)
        with os.fdopen(reading) as pipe:
            assert pipe.readline(), "the X server did not start: " + self.log("x")

    def _start_buses(self):
        for name in ("bus", "system"):
            self.run(["dbus-daemon", f"--config-file={self.folder}/{name}.conf", "--nofork", "--nopidfile"], name)
        self.session, self.system = (until(lambda: self.connect(kind), f"the {kind} bus") for kind in ("SESSION", "SYSTEM"))

    def _ready(self, part):
        if part == "wm":
            return subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], env=self.env, capture_output=True,
                                  text=True).stdout.count("window id")
        if part == "logind":
            return self.owned("org.freedesktop.login1", self.system)
        with contextlib.suppress(GLib.Error):
            if part == "panel":
                return self.call(self.NAMES[part], "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
                                 GLib.Variant("(ss)", (self.NAMES[part], "IsStatusNotifierHostRegistered")))[0]
            if part == "secrets":
                return not self.call(self.NAMES[part], "/org/freedesktop/secrets/aliases/default",
                                     "org.freedesktop.DBus.Properties", "Get",
                                     GLib.Variant("(ss)", ("org.freedesktop.Secret.Collection", "Locked")))[0]
            return self.owned(self.NAMES[part])
