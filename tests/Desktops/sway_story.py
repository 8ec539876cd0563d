"""Tacla on sway with waybar and mako: Wayland without X11."""
import json
import os
import shutil
import signal
import subprocess

from gi.repository import GLib

from everywhere import NAME, Everywhere, Wayland, day, main, told_on, until

CONFIG = """xwayland disable
output HEADLESS-1 resolution {size}
output * bg #335577 solid_color
default_border none
default_floating_border none
for_window [app_id=".*"] floating enable
"""
WAYBAR = '{ "layer": "top", "height": 30, "modules-right": ["tray"], "tray": { "icon-size": 20 } }'
ACTIONS = {"Fait": "DONE", "Demain": "TOMORROW", None: "default"}


class Sway(Wayland):
    services = ""
    # sway refuses to be root, and needs nothing but a folder for its sockets.
    plain = () if os.getuid() else ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups")

    def start_shell(self):
        self.env |= {"XDG_CURRENT_DESKTOP": "sway", "WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman",
                     "WLR_LIBINPUT_NO_DEVICES": "1"}
        self._write("sway", CONFIG.format(size=self.size), 0o644)
        self._write("waybar", WAYBAR)
        (self.folder / "home/.config/mako").mkdir()
        self._write("home/.config/mako/config", "[mode=quiet]\ninvisible=1\n")
        if self.plain:
            self.folder.chmod(0o711)
            shutil.chown(self.folder / "runtime", 65534)
        self.run([*self.plain, "sway", "-c", f"{self.folder}/sway"], "sway")
        self.wait_for_display()
        self.env["SWAYSOCK"] = str(until(lambda: next((self.folder / "runtime").glob("sway-ipc.*.sock"), None), "sway"))
        self.run(["waybar", "-c", f"{self.folder}/waybar"], "waybar")
        self.run(["mako"], "mako")
        until(lambda: self.owned(self.NAMES["panel"]) and self.owned(self.NAMES["notify"]), "waybar and mako", 60)

    def _tree(self, node=None):
        node = node or json.loads(self.ask("swaymsg", "-t", "get_tree"))
        yield node
        for kid in node["nodes"] + node["floating_nodes"]:
            yield from self._tree(kid)

    def windows(self):
        found = sorted((node for node in self._tree() if node.get("app_id")), key=lambda node: not node["focused"])
        return {node["app_id"]: tuple(node["rect"][side] for side in ("x", "y", "width", "height")) for node in found}

    def area(self):
        return next(tuple(node["rect"][side] for side in ("x", "y", "width", "height"))
                    for node in self._tree() if node["type"] == "workspace" and node["name"] == "1")

    def bring(self, name):
        self.ask("swaymsg", f'[app_id="{name}"] focus')

    def shoot(self, file):
        self.ask("grim", file)

    def choose(self, label, story):
        story.tray.click(label)

    def _bubbles(self):
        """Numbers by title, in either form of mako's words."""
        said = self.ask("makoctl", "list")
        try:
            return {entry["summary"]["data"]: entry["id"]["data"] for entry in json.loads(said)["data"][0]}
        except ValueError:
            pairs = [line.split(": ", 1) for line in said.splitlines() if line.startswith("Notification ")]
            return {title: int(number.split()[1]) for number, title in pairs}

    def wait_for_bubble(self, title):
        until(lambda: title in self._bubbles(), f"the reminder of {title}")

    def answer(self, title, label):
        self.ask("makoctl", "invoke", "-n", str(self._bubbles()[title]), ACTIONS[label])

    def colours(self):
        from PIL import Image
        self.shoot(f"{self.folder}/shot.png")
        with Image.open(f"{self.folder}/shot.png") as shot:
            return len(set(shot.convert("RGB").resize((64, 40)).getdata()))

    def quiet(self):
        self.call(self.NAMES["notify"], "/fr/emersion/Mako", "fr.emersion.Mako", "SetModes", GLib.Variant("(as)", (["quiet"],)))

    def locate(self, words):
        return []  # nothing there tells what is on the screen

    def tile(self, story):
        story.cover()
        self.ask("swaymsg", '[app_id=".*"] floating disable')

    def scale(self, factor):
        self.ask("swaymsg", "output", "HEADLESS-1", "scale", str(factor))


class Locked(Everywhere):
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def make_desktop(self):
        return Sway(size=self.size)

    def test_shows_nothing_and_keeps_the_reminder(self):
        locker = self.desktop.run(["swaylock", "--color", "112233"], "swaylock")
        until(lambda: self.desktop.colours() == 1, "nothing but the lock")
        self.launch()
        self.desktop.wait_for_bubble("Pain")
        self.assertEqual(self.desktop.colours(), 1)
        locker.send_signal(signal.SIGUSR1)  # the password
        locker.wait(20)
        until(lambda: self.desktop.colours() > 1, "the screen")
        self.desktop.answer("Pain", "Fait")
        self.until_file(f"- [x] Pain · {day()} 00:00 · ✅ {day()}")


if __name__ == "__main__":
    # Nothing there says light or dark, and no portal comes with it.
    globals().update(told_on(Sway, "Dark", "Portals"))
    main()
