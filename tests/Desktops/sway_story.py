"""Tacla on sway with waybar and mako: Wayland without X11. Runs inside a root that has them; the argument begins the names of
the pictures."""
import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PICTURES = sys.argv.pop(1)
CONFIG = """xwayland disable
output HEADLESS-1 resolution {size} scale {scale}
output * bg #335577 solid_color
for_window [app_id=".*"] floating enable
"""
WAYBAR = '{ "layer": "top", "height": 30, "modules-right": ["tray", "clock"], "tray": { "icon-size": 20 } }'
TODAY = datetime.date.today().isoformat()
NAME, ITEM, MENU = "fr.dravel.Tacla", "org.kde.StatusNotifierItem", "com.canonical.dbusmenu"


def until(condition, what, seconds=30):
    end = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.05)
    return value


class Sway(unittest.TestCase):
    size, scale, tasks, welcomed = "1280x720", 1, f"- [ ] Pain · {TODAY} 00:00\n", True

    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        runtime = self.home / "runtime"
        runtime.mkdir(mode=0o700)
        self.env = os.environ | {"HOME": str(self.home), "XDG_RUNTIME_DIR": str(runtime), "XDG_CURRENT_DESKTOP": "sway",
                                 "XDG_SESSION_TYPE": "wayland", "WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman",
                                 "WLR_LIBINPUT_NO_DEVICES": "1", "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus"}
        self.file = self.home / "taches.md"
        self.file.write_text(self.tasks)
        self.env["TACLA_FILE"] = str(self.file)
        settings = self.home / ".config/fr.dravel.Tacla"
        settings.mkdir(parents=True)
        if self.welcomed:
            (settings / "preferences.json").write_text('{"onboardingDone": true}')
        (self.home / "sway").write_text(CONFIG.format(size=self.size, scale=self.scale))
        (self.home / "waybar").write_text(WAYBAR)
        self.run_program("dbus-daemon", "--session", "--nofork", f"--address=unix:path={runtime}/bus")
        self.bus = until(self.connect, "the bus")
        self.run_program("sway", "-c", str(self.home / "sway"))
        self.env["SWAYSOCK"] = str(until(lambda: next(runtime.glob("sway-ipc.*.sock"), None), "sway"))
        self.env["WAYLAND_DISPLAY"] = until(
            lambda: next((p.name for p in runtime.glob("wayland-*") if p.suffix != ".lock"), None), "its display")
        self.run_program("waybar", "-c", str(self.home / "waybar"))
        self.run_program("mako")
        until(lambda: self.owned("org.kde.StatusNotifierWatcher") and self.owned("org.freedesktop.Notifications"), "bar, bubbles")

    def connect(self):
        try:
            return Gio.DBusConnection.new_for_address_sync(
                self.env["DBUS_SESSION_BUS_ADDRESS"], Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
                Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        except GLib.Error:
            return None

    def run_program(self, *command, **environment):
        with open(self.home / "log", "ab") as log:
            program = subprocess.Popen(command, env=self.env | environment, stdout=log, stderr=log, stdin=subprocess.DEVNULL)
        self.addCleanup(program.wait)
        self.addCleanup(program.terminate)
        return program

    def call(self, name, path, interface, member, signature="()", *arguments):
        return self.bus.call_sync(name, path, interface, member, GLib.Variant(signature, arguments), None, 0, 5000, None).unpack()

    def owned(self, name):
        return self.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", "(s)", name)[0]

    def windows(self):
        """By application: its place on the screen, and whether it has the focus."""
        def walk(node):
            if node.get("app_id"):
                yield node["app_id"], node
            for kid in node["nodes"] + node["floating_nodes"]:
                yield from walk(kid)
        tree = subprocess.run(["swaymsg", "-t", "get_tree"], env=self.env, capture_output=True, check=True).stdout
        return dict(walk(json.loads(tree)))

    def focused(self):
        return next((name for name, window in self.windows().items() if window["focused"]), None)

    def sway(self, *command):
        subprocess.run(["swaymsg", *command], env=self.env, check=True, capture_output=True)

    def picture(self, name):
        time.sleep(1)  # until all is painted
        subprocess.run(["grim", f"{PICTURES}-{name}.png"], env=self.env, check=True)

    def properties(self):
        items = self.call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
                          "(ss)", "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems")[0]
        for item in items:
            owner, slash, path = item.partition("/")
            found = self.call(owner, slash + path or "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll", "(s)",
                              ITEM)[0]
            if found["Id"] == NAME:
                return owner, found
        return None

    def choose(self, label):
        owner, item = until(self.properties, "the icon")
        self.call(owner, item["Menu"], MENU, "AboutToShow", "(i)", 0)
        for number, entry, _ in self.call(owner, item["Menu"], MENU, "GetLayout", "(iias)", 0, -1, [])[1][2]:
            if entry.get("label") == label:
                self.call(owner, item["Menu"], MENU, "Event", "(isvu)", number, "clicked", GLib.Variant("i", 0), 0)

    def launch(self, **environment):
        program = self.run_program("tacla", **environment)
        until(self.properties, "the icon")
        return program

    def cover(self):
        self.run_program("foot", "--app-id=cover", "sleep", "600")
        until(lambda: self.focused() == "cover", "another window in front")


class FirstStart(Sway):
    size, welcomed, tasks = "1280x720", False, ""

    def test_the_whole_window_is_on_the_screen(self):
        self.launch()
        window = until(lambda: self.windows().get(NAME), "the window")["rect"]
        self.picture("first-start")
        self.assertGreaterEqual(window["y"], 30, "below the bar")
        self.assertLessEqual(window["y"] + window["height"], 720)


class Raised(Sway):
    def test_means_in_front(self):
        self.launch()
        self.assertNotIn(NAME, self.windows(), "nobody asked for the window")
        self.choose("Ouvrir Tacla…")
        until(lambda: self.focused() == NAME, "the window")
        self.cover()
        self.choose("Ouvrir Tacla…")
        until(lambda: self.focused() == NAME, "the covered window, by the menu")
        self.sway(f'[app_id="cover"]', "focus")
        subprocess.run(["tacla"], env=self.env, check=True)
        until(lambda: self.focused() == NAME, "the covered window, by a second start")
        self.sway(f'[app_id="cover"]', "focus")
        self.call(NAME, "/fr/dravel/Tacla", "org.freedesktop.Application", "ActivateAction", "(sava{sv})", "late", [], {})
        until(lambda: self.focused() == NAME, "the covered window, by the launcher")
        self.picture("raised")


class Tile(Sway):
    tasks = f"- [ ] Appeler le garage à propos de la courroie · {TODAY} 00:00\n- [ ] Pain · {TODAY}\n"

    def test_half_a_screen_is_enough(self):
        self.launch()
        self.choose("Ouvrir Tacla…")
        until(lambda: self.windows().get(NAME), "the window")
        self.cover()
        self.sway('[app_id=".*"]', "floating", "disable")
        for width in (640, 480):
            self.sway("output", "HEADLESS-1", "resolution", f"{2 * width}x720")
            until(lambda: self.windows()[NAME]["rect"]["width"] == width == self.windows()[NAME]["geometry"]["width"],
                  f"{width} pixels, all of them drawn")
            self.picture(f"tile-{width}")


class Reminder(Sway):
    tasks = f"- [ ] Pain · {TODAY} 00:00\n- [ ] Vin · {TODAY} 00:01\n"

    def notifications(self):
        said = subprocess.run(["makoctl", "list"], env=self.env, capture_output=True, text=True, check=True).stdout
        try:
            return {entry["summary"]["data"]: entry["id"]["data"] for entry in json.loads(said)["data"][0]}
        except ValueError:  # of later versions
            pairs = [line.split(": ", 1) for line in said.splitlines() if line.startswith("Notification ")]
            return {title: int(number.split()[1]) for number, title in pairs}

    def test_stays_and_is_answered(self):
        self.launch()
        shown = until(lambda: len(self.notifications()) == 2 and self.notifications(), "both reminders")
        self.picture("reminder")
        for title, action in (("Pain", "DONE"), ("Vin", "TOMORROW")):
            subprocess.run(["makoctl", "invoke", "-n", str(shown[title]), action], env=self.env, check=True)
        tomorrow = datetime.date.today() + datetime.timedelta(1)
        wanted = f"- [x] Pain · {TODAY} 00:00 · ✅ {TODAY}\n- [ ] Vin · {tomorrow} 00:01\n"
        until(lambda: self.file.read_text() == wanted, "both answers")
        self.assertEqual(self.windows(), {}, "answering opens no window")


class Scales(Sway):
    def test_one_and_a_half_and_two(self):
        self.launch()
        self.choose("Ouvrir Tacla…")
        until(lambda: self.windows().get(NAME), "the window")
        for scale in ("1.5", "2"):
            self.sway("output", "HEADLESS-1", "resolution", "2560x1440", "scale", scale)
            self.picture(f"scale-{scale}")


unittest.main(verbosity=2)
