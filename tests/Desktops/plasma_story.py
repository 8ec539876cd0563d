"""Tacla on Plasma: KWin as a window of an X server without a screen, where xdotool has the pointer."""
import json
import os
import shutil
import signal
import subprocess

from gi.repository import Gio, GLib
from PIL import ImageGrab

from everywhere import NAME, Desktop, Everywhere, Screen, Wayland, day, main, told_on, until

WORDS = '<node><interface name="fr.dravel.Story"><method name="say"><arg type="s" direction="in"/></method></interface></node>'
# Of both releases: windows and areas are called otherwise.
SCRIPT = """const all = workspace.windowList ? workspace.windowList() : workspace.clientList(),
    front = workspace.windowList ? workspace.activeWindow : workspace.activeClient,
    rectangle = r => [r.x, r.y, r.width, r.height].map(Math.round);
callDBus("%s", "/", "fr.dravel.Story", "say", JSON.stringify((() => { %s })()));"""
WINDOWS = "return all.map(w => [String(w.desktopFileName || w.resourceClass), rectangle(w.frameGeometry), w === front, w.minimized]);"
AREA = """return rectangle(!workspace.windowList ? workspace.clientArea(KWin.MaximizeArea, 0, 1)
    : workspace.clientArea(KWin.MaximizeArea, workspace.screens[0], workspace.desktops[0]));"""
BRING = """const wanted = all.find(w => String(w.desktopFileName || w.resourceClass) === "%s");
    if (workspace.windowList) workspace.activeWindow = wanted; else workspace.activeClient = wanted;
    return true;"""


class Plasma(Wayland):
    version, lock = 6 if shutil.which("kded6") else 5, ("--no-lockscreen",)

    def _start_screen(self):
        Desktop._start_screen(self)
        self.display = self.env.pop("DISPLAY")
        super()._start_screen()

    def start_shell(self):
        self.env |= {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": str(self.version),
                     "XDG_MENU_PREFIX": "plasma-", "LIBGL_ALWAYS_SOFTWARE": "1", "KWIN_COMPOSE": "Q", "XDG_CONFIG_DIRS": "/etc/xdg",
                     "XDG_DATA_DIRS": "/usr/share"}
        width, height = self.size.split("x")
        self.run(["kwin_wayland", "--x11-display", self.display, "--width", width, "--height", height,
                  *self.lock], "kwin",
                 QT_QPA_PLATFORM=None)
        self.wait_for_display()
        until(lambda: self.owned("org.kde.KWin"), "KWin", 60)
        self.session.register_object("/", Gio.DBusNodeInfo.new_for_xml(WORDS).interfaces[0], self._hear, None, None)
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "UpdateActivationEnvironment",
                  GLib.Variant("(a{ss})", (self.env,)))
        if self.owned("org.freedesktop.portal.Desktop"):  # too early, started by KWin: it knows no desktop
            number = self.ask_bus("GetConnectionUnixProcessID", GLib.Variant("(s)", ("org.freedesktop.portal.Desktop",)))
            os.kill(number, signal.SIGTERM)
            until(lambda: not self.owned("org.freedesktop.portal.Desktop"), "that portal to go")
        self.run([f"kded{self.version}"], "kded")
        self.run(["plasmashell"], "plasmashell")
        until(lambda: all(map(self.owned, ("org.kde.plasmashell", self.NAMES["notify"], self.NAMES["panel"]))), "its services", 90)
        self.shell = Screen(self, "plasmashell")

    def _hear(self, connection, sender, path, interface, method, parameters, invocation):
        self.heard = json.loads(parameters.unpack()[0])
        invocation.return_value(None)

    def script(self, code):
        """What a function of that body returns within KWin."""
        file = self.folder / "script.js"
        file.write_text(SCRIPT % (self.session.get_unique_name(), code))
        self.heard = until  # nothing yet
        scripting = ("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting")
        number, = self.call(*scripting, "loadScript", GLib.Variant("(s)", (str(file),)))
        path = f"/Scripting/Script{number}" if self.version == 6 else f"/{number}"
        self.call("org.kde.KWin", path, "org.kde.kwin.Script", "run")

        def answered():
            while GLib.MainContext.default().iteration(False):
                pass
            return self.heard is not until
        until(answered, "KWin's answer")
        self.call(*scripting, "unloadScript", GLib.Variant("(s)", (str(file),)))
        return self.heard

    def windows(self):
        """Where none has the focus, the first is of no application."""
        found = [each for each in self.script(WINDOWS) if not each[3] and "plasma" not in each[0] and each[0] != "kwin_wayland"]
        listed = sorted(found, key=lambda each: not each[2])
        none = {} if not listed or listed[0][2] else {"": ()}
        return none | {name: tuple(place) for name, place, _, _ in listed}

    def area(self):
        return tuple(self.script(AREA))

    def bring(self, name):
        self.script(BRING % name)

    def shoot(self, file):
        ImageGrab.grab(xdisplay=self.display).save(file)

    def locate(self, words):
        """By what the shell tells those who cannot see."""
        found = []
        for widget in self.shell.widgets():
            if widget.name == ("Tacla" if words is None else words) and (words or widget.role == "push button"):
                x, y, width, height = widget.call("Component", "GetExtents", "(u)", 0)[0]
                found.append((x + width // 2, y + height // 2))
        return found

    def click(self, words, button=1):
        self._press(*self.place(words), button)

    def _press(self, x, y, button):
        subprocess.run(["xdotool", "mousemove", str(x - 1), str(y), "mousemove", str(x), str(y), "click", str(button)],
                       env=self.env | {"DISPLAY": self.display}, check=True)

    def _of_the_shell(self):
        return [place for name, place, _, _ in self.script(WINDOWS) if "plasma" in name]

    def choose(self, label, story):
        """The menu is silent to those who cannot see: its entries stand in even rows, lines take two fifths of one."""
        there = self._of_the_shell()
        self.click(None, 3)
        x, y, width, height = until(lambda: [each for each in self._of_the_shell() if each not in there], "the menu")[-1]
        self.picture("menu")
        rows = [0.4 if line == "-" else 1 for line in story.tray.labels() if not line.startswith("> ")]
        before = rows[:story.tray.labels().index(label)]
        row = height / (sum(rows) + 0.3)
        self._press(x + width // 2, y + round(row * (0.15 + sum(before) + 0.5)), 1)

    def darken(self):
        self.ask("plasma-apply-colorscheme", "BreezeDark")

    def quiet(self):
        """As long as this connection lasts."""
        self.call(self.NAMES["notify"], "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Inhibit",
                  GLib.Variant("(ssa{sv})", ("org.kde.plasmashell", "essai", {})))

    def press(self, *chords):
        subprocess.run(["xdotool", "key", *chords], env=self.env | {"DISPLAY": self.display}, check=True)

    def scale(self, factor):
        self.ask("kscreen-doctor", f"output.1.scale.{factor}")


class OfPlasma(Everywhere):
    tasks = f"- [ ] Appeler le garage · {day(1)} 14:30\n"

    def make_desktop(self):
        return Plasma(size=self.size)


class Runner(OfPlasma):
    def test_finds_a_task_and_opens_the_window_on_it(self):
        self.launch()
        self.tray.wait()
        self.desktop.run(["krunner"], "krunner")
        until(lambda: self.desktop.owned("org.kde.krunner"), "KRunner")
        self.desktop.call("org.kde.krunner", "/App", "org.kde.krunner.App", "query", GLib.Variant("(s)", ("garage",)))
        runner = Screen(self.desktop, "krunner")
        until(lambda: any("Appeler le garage" in widget.name for widget in runner.widgets()), "the task in its window")
        self.desktop.picture("krunner")
        self.desktop.press("Return")
        self.until_front(NAME, "by KRunner")
        self.desktop.picture("found")


class Themes(OfPlasma):
    def test_global_ones_leave_the_face_as_it_is(self):
        self.launch()
        self.open_window()
        for theme, dark in (("org.kde.breezedark.desktop", True), ("org.kde.breeze.desktop", False)):
            self.desktop.ask("plasma-apply-lookandfeel", "-a", theme)
            until(lambda: (self.desktop.brightness() < 0.5) == dark, theme)
            self.desktop.picture(f"theme-{'dark' if dark else 'light'}")


class GlobalMenu(OfPlasma):
    def test_has_the_menus_or_leaves_them_in_the_window(self):
        self.desktop.call("org.kde.plasmashell", "/PlasmaShell", "org.kde.PlasmaShell", "evaluateScript", GLib.Variant(
            "(s)", ("panels()[0].addWidget('org.kde.plasma.appmenu');",)))
        until(lambda: self.desktop.owned("com.canonical.AppMenu.Registrar"), "who keeps the menus")
        self.launch()
        self.open_window()
        shown = [Screen(self.desktop), self.desktop.shell]
        until(lambda: [bool(screen.find("Édition")) for screen in shown].count(True) == 1, "the menus in one place")
        self.desktop.picture("global-menu")


class Lockable(Plasma):
    lock = ()


class Locked(OfPlasma):
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def make_desktop(self):
        return Lockable(size=self.size)

    def test_shows_nothing_of_a_reminder(self):
        self.desktop.call("org.freedesktop.ScreenSaver", "/ScreenSaver", "org.freedesktop.ScreenSaver", "Lock")
        seen = []

        def still():
            seen.append(ImageGrab.grab(xdisplay=self.desktop.display).tobytes())
            return len(seen) > 20 and len(set(seen[-20:])) == 1
        until(still, "the lock")
        self.launch()
        settings = self.home / ".config/fr.dravel.Tacla/preferences.json"
        until(lambda: "notifiedTasks" in settings.read_text(), "the reminder")
        until(still, "the lock as before")
        self.assertEqual(seen[-1], seen[20])
        self.desktop.picture("locked")


globals().update(told_on(Plasma))
main()
