"""The installed application: the bus starts it, a task is checked, and it lives through an upgrade and a removal."""
import pathlib
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "EndToEnd"))

from gi.repository import GLib  # noqa: E402
from story import Story, day, main, until  # noqa: E402

NAME, PATH = "fr.dravel.Tacla", "/fr/dravel/Tacla"


def administer(command):
    subprocess.run(["sudo", "sh", "-c", f"apt-get --quiet=2 --yes {command}"], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


class Installed(Story):
    without = ("secrets", "logind", "panel")
    tasks = f"- [ ] Pain · {day()} 00:00\n- [ ] Loyer · {day()} 00:00\n"  # nothing rings

    def setUp(self):
        super().setUp()
        shutil.copy(f"/usr/share/dbus-1/services/{NAME}.service", self.desktop.folder / "services")
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.ReloadConfig")

    def call(self, name, path, member, signature="()", *arguments):
        """Like the desktop's calls, but starts who is called."""
        self.desktop.session.call_sync(name, path, *member.rsplit(".", 1), GLib.Variant(signature, arguments), None, 0, 20000,
                                       None)

    def belongings(self):
        return {path: path.is_file() and not path.is_symlink() and path.read_bytes() for path in self.home.rglob("*")}

    def test_lives_through_upgrade_and_removal(self):
        checked, rent = f"- [x] Pain · {day()} 00:00 · ✅ {day()}", f"- [ ] Loyer · {day()} 00:00"
        self.call(NAME, PATH, "org.freedesktop.Application.ActivateAction", "(sava{sv})", "new-task", [], {})
        until(lambda: "focused" in self.screen.wait("Nouvelle tâche").states, "the field of a new task")
        self.call(NAME, PATH, "org.freedesktop.Application.Activate", "(a{sv})", {})
        self.screen.press("Cocher Pain")
        self.until_file(checked, rent)

        administer("install /packages/later/*.deb")
        self.assertEqual(self.run_tacla("done", "loyer").stdout, "✅ Loyer\n")
        self.screen.press("Décocher Loyer")
        self.until_file(checked, rent)
        self.assertEqual(self.run_tacla().returncode, 0)  # the new program meets the old one, which is running still

        link = self.home / ".local/bin/tacla"
        link.parent.mkdir()
        link.symlink_to("/usr/bin/tacla")
        before = self.belongings()
        administer("purge tacla tacla-desktop")
        self.assertEqual(self.belongings(), before)
        self.screen.press("Réglages", "list item")
        self.screen.press("Aujourd'hui", "list item")
        self.screen.press("Cocher Loyer")
        self.until_file(checked, f"- [x] Loyer · {day()} 00:00 · ✅ {day()}")


main()
