"""What breaks around the application: each fault is said in French, harms no byte of the list, and passes without a restart.

Runs in name spaces of its own, where disks, the time zone and the network are the story's to break.
"""
import contextlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import unittest

from story import TACLA, Bubbles, Clock, Google, Story, day, main, until

NOT_PERMITTED = 77
SPACES = ["unshare", "--mount", "--net", *([] if os.geteuid() == 0 else ["--map-root-user"])]

# Without the privileges of root, to whom no file is closed.
UNPRIVILEGED = ("setpriv", "--bounding-set=-all", "--inh-caps=-all", TACLA)


def run(*command):
    subprocess.run([str(word) for word in command], check=True)


@contextlib.contextmanager
def between(do, undo):
    do()
    try:
        yield
    finally:
        undo()


def mounted(at, *options):
    return between(lambda: run("mount", *options, at), lambda: run("umount", "--lazy", at))


@contextlib.contextmanager
def read_only(folder):
    with mounted(folder, "--rbind", folder):
        run("mount", "-o", "remount,bind,ro", folder)
        yield


@contextlib.contextmanager
def full(folder):
    ball = folder / "ballast"
    with open(ball, "wb", buffering=0) as file, contextlib.suppress(OSError):
        while True:
            file.write(bytes(4096))
    yield
    ball.unlink()


def with_mode(path, mode):
    before = path.stat().st_mode
    return between(lambda: path.chmod(mode), lambda: path.chmod(before))


def gone(path):
    return between(lambda: path.rename(path.with_name("ailleurs")), lambda: path.with_name("ailleurs").rename(path))


def stopped(process):
    return between(lambda: os.killpg(process.pid, signal.SIGSTOP), lambda: os.killpg(process.pid, signal.SIGCONT))


class Disk(Story):
    command = UNPRIVILEGED
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def test_a_list_that_cannot_be_written_stays_as_it_is(self):
        folder = self.file.parent
        self.enterContext(mounted(folder, "-t", "tmpfs", "-o", "size=64k", "none"))
        self.file.write_text(self.tasks)
        self.open_window()
        for fault, reason in ((full(folder), "Il n'y a plus de place sur le disque"),
                              (read_only(folder), "Le système de fichiers est en lecture seule"),
                              (with_mode(self.file, 0o444), "Permission non accordée"),
                              (with_mode(self.file, 0), "Permission non accordée"),
                              (with_mode(folder, 0o500), "Permission non accordée"),
                              (gone(folder / "taches.md"), "Aucun fichier ou dossier de ce nom")):
            with self.subTest(reason):
                with fault:
                    names = os.listdir(folder)
                    self.screen.press("Cocher Pain")
                    self.screen.wait(f"Impossible d'écrire {self.file} : {reason}")
                    self.assertIn("00:00  Pain", self.tray.labels())
                    done = self.run_tacla("done", "pain")
                    self.assertEqual((done.returncode, done.stdout), (1, ""))
                    self.assertRegex(done.stderr, f"^tacla : (impossible d'écrire {self.file}|{self.file} illisible)\n$")
                    self.assertEqual(os.listdir(folder), names)
                self.assertEqual(self.file.read_text(), self.tasks)
                self.screen.press("Cocher Pain")
                self.until_file(f"- [x] Pain · {day()} 00:00 · ✅ {day()}")
                self.screen.press("Décocher Pain")
                self.until_file(self.tasks.strip())
                self.screen.wait("taches.md")

    def test_a_list_on_another_disk_is_kept_and_rings_once_in_a_home_that_cannot_be_written(self):
        bubbles = Bubbles(self.desktop)
        settings = self.home / ".config/fr.dravel.Tacla/preferences.json"
        before = settings.read_text()
        self.enterContext(mounted(self.file.parent, "-t", "tmpfs", "none"))
        self.file.write_text(self.tasks + f"- [ ] Sel · {day()} 23:59\n")
        with read_only(self.home):
            program = self.launch()
            bubbles.wait("Pain")
            self.open_window()
            self.screen.press("Cocher Sel")
            self.until_file(self.tasks.strip(), f"- [x] Sel · {day()} 23:59 · ✅ {day()}")
            self.assertEqual(self.run_tacla("rename", "sel", "Sucre").stderr, "")
            self.until_file(self.tasks.strip(), f"- [x] Sucre · {day()} 23:59 · ✅ {day()}")
            self.screen.press("Réglages", "list item")
            self.screen.wait(f"Impossible d'écrire {settings} : Le système de fichiers est en lecture seule")
            self.assertEqual(settings.read_text(), before)
        self.file.write_text(self.tasks + f"- [ ] Lait · {day()} 00:01\n")
        bubbles.wait("Lait")
        until(lambda: {rung[-5:] for rung in json.loads(settings.read_text()).get("notifiedTasks", [])} == {"00:00", "00:01"},
              "both reminders in the settings")
        self.kill(program)
        self.launch()
        self.file.write_text(self.tasks + f"- [ ] Vin · {day()} 00:02\n")
        bubbles.wait("Vin")
        self.assertEqual([b["summary"] for b in bubbles.shown], ["Pain", "Lait", "Vin"])


class SlowDisk(Story):
    tasks = f"- [ ] Pain · {day()} 00:00\n"
    seconds = 1.5  # for each of the calls, of which a save makes many

    def setUp(self):
        super().setUp()
        self.folder, delay = self.desktop.folder / "disk", self.desktop.folder / "delay"
        self.file.parent.rename(self.folder)
        self.file.parent.mkdir()
        delay.write_text("0")
        self.wait_for_each_call = lambda seconds: delay.write_text(str(seconds))
        disk = pathlib.Path(__file__).parents[1] / "support/slow_disk.py"
        self.desktop.run(["/usr/bin/python3", disk, self.folder, self.file.parent, delay], "disk")
        self.addCleanup(run, "umount", "--lazy", self.file.parent)
        self.addCleanup(self.wait_for_each_call, 0)
        until(self.file.parent.is_mount, "the slow disk")

    def report(self, stalls):
        super().report(stalls)
        self.assertLess(int(stalls.read_text().split()[0]), self.seconds * 1000, "the main thread waited for the disk")

    def test_holds_up_nothing_and_loses_nothing(self):
        program = self.launch()
        field = self.open_window()
        self.wait_for_each_call(self.seconds)
        self.screen.press("Cocher Pain")
        self.screen.wait("Enregistrement…")
        field.type("Lait")
        self.screen.press("Ajouter")
        self.screen.press("À venir", "list item")
        self.screen.wait("Rien de prévu pour la suite.")
        self.assertEqual((self.folder / "taches.md").read_text(), self.tasks, "it is being saved still")
        self.tray.click("Quitter Tacla")
        self.wait_for_each_call(0.01)
        self.assertEqual(program.wait(60), 0)
        self.until_file(f"- [x] Pain · {day()} 00:00 · ✅ {day()}", f"- [ ] Lait · {day()}")


class Surroundings(Story):
    tasks = f"- [ ] Pain é · {day()} 00:00\n"

    def test_do_without_locale_fonts_and_time_zone(self):
        fonts = self.desktop.folder / "fonts.conf"
        fonts.write_text(f"<fontconfig><cachedir>{self.desktop.folder}/fonts</cachedir></fontconfig>")
        for number, fault in enumerate(({"LC_ALL": None}, {"LC_ALL": "POSIX"}, {"LC_ALL": "xx_YY.UTF-9"},
                                        {"TZ": "Nulle/Part"}, {"TZ": None, "TZDIR": "/nowhere"},
                                        {"FONTCONFIG_FILE": str(fonts)})):
            with self.subTest(fault):
                program = self.launch(**fault)
                self.assertIn("00:00  Pain é", self.tray.labels())
                self.open_window().type(f"Thé n° {number} à 5 €")
                self.screen.press("Demain")
                self.screen.press("Ajouter")
                until(lambda: f"- [ ] Thé n° {number} à 5 € · " in self.file.read_text(), "the new task")
                self.quit(program)
        self.assertEqual(len(self.file.read_text().splitlines()), 1 + 6)

    def test_tell_the_time_of_another_zone_at_once(self):
        bubbles = Bubbles(self.desktop)
        clock = Clock(self.desktop, "2026-03-10 12:00:00")  # of Paris, which is 11:00 in London
        self.file.write_text("- [ ] Pain · 2026-03-10 11:30\n")
        nothing = self.desktop.folder / "nothing"
        nothing.touch()
        zones = "/usr/share/zoneinfo/Europe/"
        with mounted("/etc/localtime", "--bind", zones + "London"):
            self.launch(**clock.environment, TZ=None)
            self.until_menu("(Aujourd'hui)", "11:30  Pain")
            with mounted("/etc/localtime", "--bind", zones + "Paris"):
                self.until_menu("(En retard)", "11:30  Pain")
                bubbles.wait("Pain")
            with mounted("/etc/localtime", "--bind", nothing):
                self.until_menu("(Aujourd'hui)", "11:30  Pain")
        self.assertEqual(len(bubbles.shown), 1)


class Time(Story):
    tasks = "- [ ] Pain · 2026-03-10 10:00\n- [ ] Lait · 2026-03-10 12:00\n- [ ] Vin · 2026-03-11\n- [ ] Thé · 2026-03-12\n"

    def test_that_jumps_loses_no_reminder_and_repeats_none(self):
        bubbles = Bubbles(self.desktop)
        clock = Clock(self.desktop, "2026-03-10 09:59:59")
        self.launch(**clock.environment)
        bubbles.wait("Pain")
        # By less than a day at once: what is more is not believed until it has held for a minute.
        clock.set("2026-03-11 09:30:00")
        bubbles.wait("Vin")
        clock.set("2026-03-10 09:45:00")
        self.until_menu("(Aujourd'hui)", "10:00  Pain", "12:00  Lait")
        clock.set("2026-03-11 09:30:00")
        self.until_menu("(En retard)", "10/03  Pain")
        clock.set("2026-03-12 09:15:00")
        bubbles.wait("Thé")
        self.until_menu("(En retard)", "10/03  Pain")
        # What the clock set back made a thing to come rings again, in the place of what stands there.
        self.assertEqual([b["summary"] for b in bubbles.shown], ["Pain", "Lait", "Vin"] * 2 + ["Thé"])
        self.assertEqual([b["replaces"] > 0 for b in bubbles.shown], [False] * 3 + [True] * 3 + [False])
        self.assertEqual(self.file.read_text(), self.tasks)

    def test_in_which_the_notification_server_is_frozen_repeats_no_reminder(self):
        bubbles = Bubbles(self.desktop)
        clock = Clock(self.desktop, "2026-03-10 10:01:00")
        self.launch(**clock.environment)
        bubbles.wait("Pain")
        self.open_settings()
        with stopped(self.desktop.processes["notify"]):
            clock.set("2026-03-10 12:01:00")
            self.until_menu("(En retard)", "10:00  Pain", "12:00  Lait")
            self.screen.press("Envoyer une notification d'essai")
            self.screen.wait("Échec : Aucun service de notification ne répond.")
        clock.set("2026-03-11 10:00:00")
        bubbles.wait("Vin")
        self.assertEqual([b["summary"] for b in bubbles.shown], ["Pain", "Lait", "Notification d'essai", "Vin"])


class Network(Story):
    tasks = f"- [ ] Pain · {day()}\n- [ ] Loyer · {day(2)}\n- [ ] Impôts · {day(3)}\n"

    def setUp(self):
        super().setUp()
        run("ip", "link", "set", "lo", "up")
        self.google = self.enterContext(Google())
        self.data = self.home / ".local/share/Tacla"
        self.google.give_account(self.data)
        settings = self.home / ".config/fr.dravel.Tacla/preferences.json"
        settings.write_text('{"onboardingDone": true, "calendarSync": true}')

    def launch(self, **environment):
        program = super().launch(TACLA_GOOGLE_BASE=self.google.base, **environment)
        self.open_window()
        return program

    def synchronise(self):
        self.screen.press("Réglages", "list item")
        self.screen.press("Synchroniser maintenant")
        self.screen.press("Aujourd'hui", "list item")

    def until_mirrored(self):
        until(lambda: sorted(self.google.events()) == ["Impôts", "Loyer", "Pain"], "the tasks in the calendar")
        until(lambda: any(w.name.startswith("Agenda à jour · ") for w in self.screen.widgets()), "the good news")
        self.assertEqual(self.file.read_text(), self.tasks)

    def test_that_is_not_there_or_breaks_off_is_named_and_made_up_for(self):
        online = self.home / "online"
        tell = self.desktop.offer_portal("org.freedesktop.portal.NetworkMonitor", "GetAvailable", "", "b",
                                         f"import os; ret = os.path.exists('{online}')")
        run("ip", "address", "delete", "127.0.0.1/8", "dev", "lo")
        self.launch()
        self.screen.wait("Agenda : Connexion impossible à 127.0.0.1")
        run("ip", "address", "add", "127.0.0.1/8", "dev", "lo")
        self.google.fault(at=3, kind="reset", after=True)
        self.desktop.network_back()
        self.screen.wait("Agenda : Connexion perdue avec 127.0.0.1")
        asked = len(self.google.ask("/control/state?log"))
        tell("changed", "")
        until(lambda: "GetAvailable" in self.desktop.log("portal"), "the question whether there is a network")
        self.assertEqual(len(self.google.ask("/control/state?log")), asked)
        online.touch()
        tell("changed", "")
        until(lambda: len(self.google.ask("/control/state?log")) > asked, "the next sync, which else takes half a minute", 10)
        self.until_mirrored()

    def test_that_never_answers_holds_up_neither_the_window_nor_the_end(self):
        self.google.fault(at=2, kind="hang")
        program = self.launch()
        self.screen.wait("Synchro de l'agenda…")
        self.screen.press("Cocher Pain")
        self.until_file(*self.tasks.replace("[ ] Pain · " + day(), f"[x] Pain · {day()} · ✅ {day()}").splitlines())
        self.quit(program)

    def test_with_a_keyring_that_is_absent_frozen_or_locked_waits_for_it(self):
        trouble = "Agenda : Pas connecté à Google : le trousseau de clés est verrouillé ou ne répond pas"
        self.desktop.stop("secrets")
        program = self.launch()
        self.screen.wait(trouble)
        self.desktop.start("secrets")
        self.until_mirrored()
        self.assertFalse((self.data / "token.json").exists(), "moved into the keyring")
        with stopped(self.desktop.processes["secrets"]):
            self.quit(program)
            program = self.launch()
            self.screen.wait(trouble)
        self.synchronise()
        self.until_mirrored()
        self.tray.click("Quitter Tacla")
        program.wait(20)
        self.desktop.lock_keyring()
        self.launch()
        self.screen.wait(trouble)
        self.desktop.restart("secrets")  # unlocks it, as the user's session does
        self.until_mirrored()


class Lost(Story):
    without = ("a11y", "secrets", "notify", "logind", "panel")
    says = r"(\n.*GLib-GIO-CRITICAL.*The connection is closed\n)*"  # GLib itself, in the middle of a look at the keyring

    def test_the_session_bus_leaves_the_window(self):
        program = self.launch()
        until(lambda: self.desktop.owned("fr.dravel.Tacla"), "the application")
        self.desktop.stop("bus")
        (window,) = until(self.desktop.windows, "the window")
        subprocess.run(["xdotool", "windowactivate", "--sync", window, "key", "ctrl+q"], env=self.desktop.env, check=True)
        self.assertEqual(program.wait(20), 0)


class LostDisplay(Lost):
    says = "tacla : l'écran a disparu : l'application se termine\n"

    def test_the_session_bus_leaves_the_window(self):
        program = self.launch()
        until(lambda: self.desktop.owned("fr.dravel.Tacla"), "the application")
        self.desktop.stop("x")
        self.assertEqual(program.wait(20), 1)
        self.assertEqual(self.file.read_text(), self.tasks)


if __name__ == "__main__":
    if "TACLA_OWN_SPACES" not in os.environ:
        if subprocess.run([*SPACES, "true"], stderr=subprocess.DEVNULL).returncode != 0:
            sys.exit(NOT_PERMITTED)
        os.environ["TACLA_OWN_SPACES"] = "yes"
        os.execvp(SPACES[0], [*SPACES, sys.executable, *sys.argv])
    main()
