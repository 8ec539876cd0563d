"""Tacla on GNOME Shell: Wayland without X11, clicked with the shell's own virtual pointer."""
import json
import os
import pathlib

from gi.repository import GLib

from everywhere import NAME, Everywhere, Screen, Wayland, day, main, told_on, until

SETTINGS = """[org/gnome/shell]
welcome-dialog-last-shown-version='999'
disable-user-extensions=false
enabled-extensions={extensions}
[org/gnome/desktop/session]
idle-delay=uint32 0
[org/gnome/desktop/interface]
enable-animations=false
color-scheme='default'
[org/gnome/desktop/input-sources]
sources=[{source}]
[org/gnome/mutter]
experimental-features=['scale-monitor-framebuffer']
"""
# Where none has the focus, the first is of no application.
WINDOWS = """(() => { const all = global.get_window_actors().map(actor => actor.meta_window)
        .filter(window => window.get_wm_class() && !window.minimized).sort((one, other) => other.has_focus() - one.has_focus()),
    listed = all.map(window => { const r = window.get_frame_rect(); return [window.get_wm_class(), [r.x, r.y, r.width, r.height]]; });
    return all.length && !all[0].has_focus() ? [['', []], ...listed] : listed; })()"""
AREA = """(() => { const r = Main.layoutManager.getWorkAreaForMonitor(0); return [r.x, r.y, r.width, r.height]; })()"""
# The middles of all that shows these words, or of the icon in the panel.
FIND = """(() => { const found = [], walk = actor => {
    if (!actor.visible || !actor.mapped) return;
    if (WORDS !== null && (actor.text === WORDS || actor.label === WORDS)) found.push(actor);
    actor.get_children().forEach(walk); };
    walk(global.stage);
    for (const [name, icon] of Object.entries(Main.panel.statusArea))
        if (WORDS === null && name.startsWith('appindicator-')) found.push(icon);
    return found.map(actor => { const [x, y] = actor.get_transformed_position(), [w, h] = actor.get_transformed_size();
        return [Math.round(x + w / 2), Math.round(y + h / 2)]; }); })()"""
POINTER = """(() => { const {Clutter, GLib} = imports.gi, now = () => GLib.get_monotonic_time();
    global.story ??= Clutter.get_default_backend().get_default_seat().create_virtual_device(Clutter.InputDeviceType.POINTER_DEVICE);
    return [Clutter, now]; })()"""

KEYBOARD = POINTER.replace("global.story ", "global.keys ").replace("POINTER_DEVICE", "KEYBOARD_DEVICE")
MODIFIERS = {"super": "Super_L", "alt": "Alt_L", "ctrl": "Control_L"}


class Gnome(Wayland):
    tray, source = True, "('xkb', 'us')"
    keeps_keys = os.path.exists("/usr/libexec/gnome-control-center-global-shortcuts-provider")

    def start_shell(self):
        self.env |= {"XDG_CURRENT_DESKTOP": "GNOME", "GSETTINGS_BACKEND": "keyfile", "LIBGL_ALWAYS_SOFTWARE": "1"}
        extensions = ["ubuntu-appindicators@ubuntu.com"] if self.tray else "@as []"
        keyfile = self.folder / "home/.config/glib-2.0/settings/keyfile"
        keyfile.parent.mkdir(parents=True)
        keyfile.write_text(SETTINGS.format(extensions=extensions, source=self.source))
        warned = self.folder / "home/.local/share/gnome-shell/lock-warning-shown"  # that nothing here locks the screen
        warned.parent.mkdir(parents=True)
        warned.touch()
        self.run(["gnome-shell", "--headless", "--wayland", "--no-x11", "--unsafe-mode", "--virtual-monitor", self.size], "shell")
        self.wait_for_display()
        until(lambda: self.owned("org.gnome.Shell"), "the shell", 60)
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "UpdateActivationEnvironment",
                  GLib.Variant("(a{ss})", (self.env,)))  # for those whom the bus starts
        until(lambda: self.owned(self.NAMES["notify"]) and (not self.tray or self.owned(self.NAMES["panel"])), "its services", 60)
        until(lambda: not self.evaluate("Main.layoutManager._startingUp"), "the shell on the screen", 60)
        self.evaluate("Main.overview.hide()")
        until(lambda: not self.evaluate("Main.overview.visible"), "the overview to go")

    def evaluate(self, code):
        good, said = self.call("org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell", "Eval", GLib.Variant("(s)", (code,)))
        assert good, said
        return json.loads(said or "null")

    def windows(self):
        return {name: tuple(place) for name, place in self.evaluate(WINDOWS)}

    def area(self):
        return tuple(self.evaluate(AREA))

    def bring(self, name):
        self.evaluate(f"""global.get_window_actors().map(actor => actor.meta_window).find(window => window.get_wm_class() === '{name}')
            .activate(global.get_current_time())""")

    def shoot(self, file):
        self.call("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot", "Screenshot",
                  GLib.Variant("(bbs)", (False, False, file)))

    def locate(self, words):
        return self.evaluate(FIND.replace("WORDS", json.dumps(words)))

    def click(self, words):
        """With the pointer, where these words stand still; the icon in the panel for none."""
        x, y = self.place(words)
        for step in (f"notify_absolute_motion(now(), {x - 1}, {y})", f"notify_absolute_motion(now(), {x}, {y})",
                     "notify_button(now(), Clutter.BUTTON_PRIMARY, Clutter.ButtonState.PRESSED)",
                     "notify_button(now(), Clutter.BUTTON_PRIMARY, Clutter.ButtonState.RELEASED)"):
            self.evaluate(f"{{ const [Clutter, now] = {POINTER}; global.story.{step}; 0 }}")

    def darken(self):
        self.ask("gsettings", "set", "org.gnome.desktop.interface", "color-scheme", "prefer-dark")

    def quiet(self):
        self.ask("gsettings", "set", "org.gnome.desktop.notifications", "show-banners", "false")

    def press(self, *chords):
        for keys in (chord.split("+") for chord in chords):
            names = [MODIFIERS.get(key, key) for key in keys]
            for state, each in (("PRESSED", names), ("RELEASED", names[::-1])):
                for name in each:
                    self.evaluate(f"{{ const [Clutter, now] = {KEYBOARD}; "
                                  f"global.keys.notify_keyval(now(), Clutter.KEY_{name}, Clutter.KeyState.{state}); 0 }}")

    def allow_key(self):
        until(lambda: "GlobalShortcutsProvider" in (self.focused() or ""), "the desktop's question")
        self.picture("key")
        Screen(self, "gnome-control-center-global-shortcuts-provider").press("Add", "button")

    def scale(self, factor):
        where = ("org.gnome.Mutter.DisplayConfig", "/org/gnome/Mutter/DisplayConfig", "org.gnome.Mutter.DisplayConfig")
        serial, monitors, _, _ = self.call(*where, "GetCurrentState")
        connector = monitors[0][0][0]
        mode = next(mode for mode in monitors[0][1] if mode[6].get("is-current"))
        nearest = min(mode[5], key=lambda each: abs(each - factor))
        self.call(*where, "ApplyMonitorsConfig", GLib.Variant("(uua(iiduba(ssa{sv}))a{sv})", (
            serial, 1, [(0, 0, nearest, 0, True, [(connector, mode[0], {})])], {})))


class Bare(Gnome):
    """As it comes, without the extension that brings a tray."""
    tray = False


class WithoutTray(Everywhere):
    tasks = f"- [ ] Appeler le garage · {day(1)} 14:30\n"

    def make_desktop(self):
        return Bare(size=self.size)

    def test_stays_away_until_it_is_asked_and_is_found(self):
        self.launch()
        until(lambda: self.desktop.owned(NAME), "the program")
        self.assertEqual(self.desktop.windows(), {}, "nobody asked for the window")
        self.desktop.evaluate("Main.overview.show(); Main.overview.searchEntry.set_text('garage')")
        until(lambda: self.desktop.locate("Appeler le garage"), "the task in the overview")
        self.desktop.picture("search")
        self.desktop.click("Appeler le garage")
        self.until_front(NAME, "by the overview")
        self.desktop.picture("found")


class WelcomeWithoutTray(Everywhere):
    welcomed, tasks = False, ""

    def make_desktop(self):
        return Bare(size=self.size)

    def test_says_how_to_come_back(self):
        self.launch()
        screen = Screen(self.desktop)
        until(lambda: any(widget.name.startswith("Ce bureau n'a pas de zone de notification") for widget in screen.widgets()),
              "the words in the welcome")
        self.desktop.picture("welcome")


class Lockable(Gnome):
    """A shell locks its screen where logind and a display manager are: mocks play both."""

    def start_shell(self):
        pathlib.Path("/run/systemd/seats").mkdir(exist_ok=True)
        self.start("logind")
        name = "org.gnome.DisplayManager"
        manager = (name, "/org/gnome/DisplayManager/Manager", f"{name}.Manager")
        self.run(["/usr/bin/python3", "-m", "dbusmock", "--system", *manager], "manager")
        until(lambda: self.owned(name, self.system), "the display manager")
        self.call(*manager[:2], "org.freedesktop.DBus.Mock", "AddProperty",
                  GLib.Variant("(ssv)", (manager[2], "Version", GLib.Variant("s", "43.0"))), self.system)
        super().start_shell()


class Locked(Everywhere):
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def make_desktop(self):
        return Lockable(size=self.size)

    def test_shows_nothing_of_a_reminder_and_keeps_it(self):
        self.desktop.evaluate("Main.screenShield.lock(false)")
        until(lambda: self.desktop.evaluate("Main.screenShield.locked"), "the lock")
        self.launch()
        until(lambda: self.desktop.locate("Tacla"), "that there is something of Tacla")
        self.desktop.picture("locked")
        self.assertEqual((self.desktop.windows(), self.desktop.locate("Pain")), ({}, []))
        self.desktop.evaluate("Main.screenShield.deactivate(false)")
        self.desktop.answer("Pain", "Fait")
        self.until_file(f"- [x] Pain · {day()} 00:00 · ✅ {day()}")


class Chinese(Gnome):
    source = "('ibus', 'libpinyin')"


class InputMethod(Everywhere):
    tasks = ""

    def make_desktop(self):
        return Chinese(size=self.size)

    def test_writes_chinese(self):
        self.launch(QT_IM_MODULE="ibus")  # as a session of GNOME says
        self.open_window()
        field = Screen(self.desktop).wait("Nouvelle tâche")
        until(lambda: "focused" in field.states, "the field to have the focus")
        popup = "Main.panel.statusArea.keyboard._inputSourceManager._ibusManager._candidatePopup.visible"
        until(lambda: self.desktop.press("n") or self.desktop.evaluate(popup), "the input method, which misses the first letters")
        self.desktop.press("Escape", *"nihao")
        self.desktop.picture("ibus")
        self.desktop.press("space")
        until(lambda: field.text.endswith("你好"), f"the signs, not {field.text!r}")
        self.desktop.press("Return")
        until(lambda: "你好 ·" in self.file.read_text(), "the task")


globals().update(told_on(Gnome))
main()
