"""What Tacla does on each desktop, told once. How the desktop starts, which windows it has and where one clicks is told by a
module for each: on Wayland, without a screen, with its own panel and bubbles."""
import os
import pathlib
import subprocess
import sys
import unittest

from gi.repository import GLib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "EndToEnd"))

from story import Desktop, Screen, Story, day, until  # noqa: E402

__all__ = ["NAME", "Desktop", "Everywhere", "Screen", "Wayland", "day", "main", "told_on", "until"]
NAME = "fr.dravel.Tacla"
COVER = """import gi
gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk
GLib.set_prgname("cover")
window = Gtk.Window(title="cover")
window.maximize()
window.show_all()
Gtk.main()"""
PICTURES = os.environ.get("TACLA_PICTURES")  # what their names begin with; none are taken without


class Wayland(Desktop):
    """A desktop tells: start_shell, windows (rectangles by application, the one with the focus first), area (what its panels
    leave), bring (a window to the front), shoot (a picture into a file), darken, scale, quiet, press (keys), and where one clicks: locate (the
    middles of what bears these words, of the icon in the panel for None) and click. Sway has other ways than the last two."""

    ALL = ("a11y", "shell")
    services = "<standard_session_servicedirs/>"
    keeps_keys = True  # for programs, by its portal

    def allow_key(self):
        """What the user does when a program wants a key."""

    def _start_screen(self):
        self.env |= {"XDG_SESSION_TYPE": "wayland", "QT_QPA_PLATFORM": "wayland"}

    def start(self, part):
        if part == "shell":
            self.start_shell()
        else:
            super().start(part)

    def wait_for_display(self):
        found = until(lambda: next((p for p in (self.folder / "runtime").glob("wayland-*") if p.suffix != ".lock"), None),
                      "its display", 60)
        self.env["WAYLAND_DISPLAY"] = found.name

    def place(self, words):
        """Where these words stand, once they do not move any more."""
        seen = []

        def still():
            seen.append(self.locate(words))
            return len(seen) > 2 and seen[-1] == seen[-2] == seen[-3] and seen[-1]
        return until(still, f"{words!r} on the screen")[-1]

    def choose(self, label, story):
        self.click(None)
        self.picture("menu")
        self.click(label)

    def wait_for_bubble(self, title):
        until(lambda: self.locate(title), f"the reminder of {title}")

    def answer(self, title, label):
        self.wait_for_bubble(title)
        self.click(label or title)

    def brightness(self, lines=None):
        """Of what the window shows, or of its uppermost lines, between 0 and 1."""
        from PIL import Image, ImageStat
        x, y, width, height = self.windows()[NAME]
        self.shoot(f"{self.folder}/shot.png")
        with Image.open(f"{self.folder}/shot.png") as shot:
            return ImageStat.Stat(shot.convert("L").crop((x, y, x + width, y + (lines or height)))).median[0] / 255

    def tile(self, story):
        """The window in front takes the left half of the screen."""
        self.press("super+Left")

    def focused(self):
        return next(iter(self.windows()), None)

    def ask(self, *command):
        return subprocess.run(command, env=self.env, check=True, capture_output=True, text=True).stdout

    def picture(self, name):
        """Once all is painted: two in a row are the same."""
        if PICTURES is None:
            return
        seen = []

        def settled():
            self.shoot(f"{PICTURES}-{name}.png")
            seen.append(pathlib.Path(f"{PICTURES}-{name}.png").read_bytes())
            return len(seen) > 1 and seen[-1] == seen[-2]
        until(settled, f"a still picture {name}")


class Everywhere(Story):
    size = "1280x800"
    says = "(?s:.*)"  # the desktops' own plugins of Qt speak, too
    tasks = f"- [ ] Pain · {day()}\n"

    def until_front(self, name, how):
        until(lambda: self.desktop.focused() == name, f"{name} in front, {how}", 30)

    def cover(self):
        if "cover" not in self.desktop.windows():
            self.desktop.run(["/usr/bin/python3", "-c", COVER], "cover", GDK_BACKEND="wayland")
            until(lambda: "cover" in self.desktop.windows(), "another window")
        self.desktop.bring("cover")
        self.until_front("cover", "brought there")

    def open_window(self):
        self.tray.wait()
        self.run_tacla()
        self.until_front(NAME, "at first")


class FirstStart(Everywhere):
    size, welcomed, tasks = "1280x720", False, ""

    def test_the_whole_window_is_on_the_screen(self):
        self.launch()
        left, top, wide, high = self.desktop.area()

        def is_whole():
            x, y, width, height = self.desktop.windows().get(NAME) or (0, 0, 0, 0)
            return width and left <= x and top <= y and x + width <= left + wide and y + height <= top + high
        until(is_whole, "the whole window within what the panels leave")
        self.desktop.picture("first-start")


class Raised(Everywhere):
    def test_means_in_front(self):
        self.launch()
        self.tray.wait()
        self.assertNotIn(NAME, self.desktop.windows(), "nobody asked for the window")
        self.desktop.choose("Ouvrir Tacla…", self)
        self.until_front(NAME, "by the menu")
        self.cover()
        self.desktop.choose("Ouvrir Tacla…", self)
        self.until_front(NAME, "by the menu, from behind")
        self.cover()
        self.run_tacla()
        self.until_front(NAME, "by a second start")
        self.cover()
        self.desktop.call(NAME, "/fr/dravel/Tacla", "org.freedesktop.Application", "ActivateAction",
                          GLib.Variant("(sava{sv})", ("late", [], {})))
        self.until_front(NAME, "by the launcher")
        self.desktop.picture("raised")


class Reminder(Everywhere):
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def test_stays_and_is_answered(self):
        self.launch()
        self.desktop.wait_for_bubble("Pain")
        self.desktop.picture("reminder")
        self.desktop.answer("Pain", "Fait")
        done = f"- [x] Pain · {day()} 00:00 · ✅ {day()}"
        self.until_file(done)
        self.file.write_text(f"{done}\n- [ ] Vin · {day()} 00:01\n")
        self.desktop.wait_for_bubble("Vin")
        self.desktop.answer("Vin", "Demain")
        self.until_file(done, f"- [ ] Vin · {day(1)} 00:01")
        self.assertEqual(self.desktop.windows(), {}, "answering opens no window")

    def test_opens_the_window_from_behind(self):
        self.launch()
        self.open_window()
        self.cover()
        self.desktop.wait_for_bubble("Pain")
        self.desktop.answer("Pain", None)
        self.until_front(NAME, "by the reminder")


class Dark(Everywhere):
    def test_while_running(self):
        self.launch()
        self.open_window()
        until(lambda: self.desktop.brightness() > 0.7, "a light window")
        self.desktop.picture("light")
        self.desktop.darken()
        until(lambda: self.desktop.brightness() < 0.3, "a dark window")
        until(lambda: self.desktop.brightness(16) < 0.4, "a dark frame around it")
        self.desktop.picture("dark")


class Scales(Everywhere):
    size = "1920x1080"

    def test_one_and_a_half(self):
        self.opens_whole_at(1.5)

    def test_two(self):
        self.opens_whole_at(2)

    def opens_whole_at(self, scale):
        self.desktop.scale(scale)
        self.launch()
        self.open_window()
        self.desktop.picture(f"scale-{scale}")
        left, top, wide, high = self.desktop.area()
        x, y, width, height = self.desktop.windows()[NAME]
        self.assertTrue(left <= x and top <= y and width <= wide and height <= high,
                        f"{(x, y, width, height)} in {(left, top, wide, high)}")


class Shrinks(Everywhere):
    size = "1920x1080"

    def test_into_a_screen_that_is_scaled(self):
        self.launch()
        self.open_window()
        self.desktop.scale(2)

        def within():
            left, top, wide, high = self.desktop.area()
            x, y, width, height = self.desktop.windows()[NAME]
            return width <= wide and height <= high
        until(within, "the window no larger than the screen")
        self.desktop.picture("shrunk")


class Tile(Everywhere):
    """The screen's half is the width from which the sidebar folds to symbols."""
    size = "1280x720"
    tasks = f"- [ ] Appeler le garage à propos de la courroie · {day()}\n- [ ] Pain · {day()}\n"

    def test_cuts_nothing_off(self):
        self.launch()
        self.open_window()
        half = int(self.size.split("x")[0]) // 2
        self.desktop.tile(self)
        until(lambda: self.desktop.windows()[NAME][2] == half, f"a tile of {half} pixels, not {self.desktop.windows()}")
        self.screen = Screen(self.desktop)
        until(lambda: self.furthest()[0] <= half, f"all of it within {half}: {self.furthest()}")
        self.desktop.picture(f"tile-{half}")

    def furthest(self):
        """How far to the right anything of the window goes, and what that is."""
        found = []
        for widget in self.screen.widgets():
            x, _, width, _ = widget.call("Component", "GetExtents", "(u)", 1)[0]
            found.append((x + width, widget.role, widget.name))
        return max(found)


class NarrowTile(Tile):
    """The least width that a window asks for."""
    size = "960x720"


class Quiet(Everywhere):
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def test_is_the_users(self):
        self.desktop.quiet()
        self.launch()
        settings = self.home / ".config/fr.dravel.Tacla/preferences.json"
        until(lambda: "notifiedTasks" in settings.read_text(), "the reminder")
        self.desktop.picture("do-not-disturb")
        self.assertEqual((self.desktop.windows(), self.desktop.locate("Pain")), ({}, []))
        self.until_file(f"- [ ] Pain · {day()} 00:00")


class Portals(Everywhere):
    def open_settings(self):
        self.open_window()
        self.screen = Screen(self.desktop)
        self.screen.press("Réglages", "list item")

    def test_bring_the_desktops_own_panel(self):
        self.launch()
        self.open_settings()
        self.screen.press("Choisir un autre fichier")
        until(lambda: self.desktop.focused() not in (None, "", NAME), "the desktop's panel in front", 30)
        self.desktop.picture("panel")

    def test_keep_a_key_for_the_quick_entry(self):
        program = self.launch()
        self.open_settings()
        if not self.desktop.keeps_keys:
            self.assertIsNone(self.screen.find("Choisir la touche de la saisie rapide"))
            return
        self.screen.press("Choisir la touche de la saisie rapide")
        self.desktop.allow_key()
        until(lambda: any(widget.name.startswith("Ajouter une tâche depuis tout programme") for widget in self.screen.widgets()),
              "the key in the settings")
        program.terminate()
        program.wait()
        self.launch()  # it is remembered
        self.tray.wait()

        def pressed():
            self.desktop.press("super+alt+t")
            return self.desktop.focused() == NAME
        until(pressed, "the quick entry")
        self.desktop.picture("quick-entry")


class Result(unittest.TextTestResult):
    """Says of each story how it went, a line each, for the table of all desktops."""

    def addSuccess(self, test):
        super().addSuccess(test)
        self.tell(test, "✔")

    def addFailure(self, test, error):
        super().addFailure(test, error)
        self.tell(test, "✘")

    addError = addFailure

    @staticmethod
    def tell(test, how):
        print(how, type(test).__name__, test._testMethodName.removeprefix("test_").replace("_", " "), flush=True)


def main():
    unittest.main(testRunner=unittest.TextTestRunner(verbosity=2, resultclass=Result))


def told_on(desktop, *but):
    """The stories as they are told on that desktop, without those which it has no such thing for."""
    def make_desktop(story):
        return desktop(size=story.size)
    return {story.__name__: type(story.__name__, (story,), {"make_desktop": make_desktop, "without": ("a11y",)})
            for story in (FirstStart, Raised, Reminder, Dark, Scales, Shrinks, Tile, NarrowTile, Quiet, Portals) if story.__name__ not in but}
