"""How the application starts: the first time, a second time, without a display, without buses, off screen."""
import os
import pathlib
import signal
import socket
import subprocess
import tempfile
import unittest

from gi.repository import GLib

from story import TACLA, Bubbles, Story, day, main, until


class FirstStart(Story):
    welcomed, tasks = False, ""

    def test_welcomes_and_makes_a_list(self):
        self.launch(PATH=f"{self.desktop.folder}/bin:/usr/bin:/bin")
        self.screen.press("C'est parti")
        until(lambda: "focused" in self.screen.wait("Nouvelle tâche").states, "the field of the first task")
        self.assertIn("## À faire\n", self.file.read_text())
        self.assertIn('"onboardingDone": true', (self.home / ".config/fr.dravel.Tacla/preferences.json").read_text())
        self.assertEqual(os.readlink(self.home / ".local/bin/tacla"), os.path.realpath(TACLA))


class Twice(Story):
    def test_the_second_shows_the_first_ones_window_and_ends(self):
        self.launch()
        self.tray.wait()
        second = self.run_tacla()
        self.assertEqual((second.returncode, second.stderr), (0, ""))
        self.screen.wait("Nouvelle tâche")
        self.until_menu("(Aujourd'hui)", "Pain")

    def test_the_second_takes_the_place_of_one_that_dies(self):
        first = self.launch()
        self.tray.wait()
        first.send_signal(signal.SIGSTOP)
        before = self.desktop.connections()
        self.launch()
        until(lambda: self.desktop.connections() - before, "the second on the bus")
        self.kill(first)
        self.until_menu("(Aujourd'hui)", "Pain")

    def test_the_desktops_search_is_answered_as_soon_as_the_name_is_there(self):
        asked = ("/fr/dravel/Tacla/search", "org.gnome.Shell.SearchProvider2", "GetInitialResultSet", GLib.Variant("(as)", (["pain"],)))

        def answer():
            try:
                return self.desktop.call("fr.dravel.Tacla", *asked)[0]
            except GLib.Error as error:
                self.assertIn("NameHasNoOwner", error.message)
        self.launch()
        self.assertEqual(len(next(filter(None, iter(answer, 0)))), 1)

    def test_one_that_gets_a_signal_ends_in_order(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            program = self.launch()
            self.tray.wait()
            program.send_signal(number)
            self.assertEqual(program.wait(20), 0)
            until(lambda: not self.tray.item(), "the icon to go")


class FromTheLauncher(Story):
    tasks = ""

    def act(self, action):
        subprocess.run(["gapplication", "action", "fr.dravel.Tacla", action], env=self.desktop.env, check=True)

    def new_task(self):
        self.act("new-task")
        until(lambda: self.screen.has_keys("Ajouter une tâche"), "the panel to get the keys")
        until(lambda: "focused" in self.screen.wait("Nouvelle tâche").states, "the field to get the focus")

    def test_a_new_task_can_be_typed_at_once(self):
        self.desktop.offer_service("fr.dravel.Tacla", TACLA)
        for title in ("Pain", "Vin"):  # not running yet; then running
            self.new_task()
            self.screen.key(*title, "Return")
            until(lambda: f"- [ ] {title} · {day()}\n" in self.file.read_text(), "the task")
            until(lambda: not self.desktop.windows(), "the panel to go")
        self.new_task()
        self.screen.key(*"Lait", "Escape")
        until(lambda: not self.desktop.windows(), "the panel to go")
        self.new_task()
        self.assertEqual(self.screen.wait("Nouvelle tâche").text, "Lait")
        self.screen.key("Escape")
        for action, page in (("late", "En retard"), ("today", "Aujourd'hui")):
            self.act(action)
            self.screen.wait(page, "panel")
        self.tray.click("Quitter Tacla")


class NoDisplay(unittest.TestCase):
    def says(self, *arguments, **environment):
        """The exit status, and what it writes to both streams."""
        done = subprocess.run([TACLA, *arguments], env={"PATH": os.environ["PATH"], "HOME": "/nowhere"} | environment,
                              capture_output=True, text=True, timeout=60)
        return done.returncode, done.stdout, done.stderr

    def test_is_said_in_a_sentence(self):
        for display in ({}, {"DISPLAY": ":4242"}, {"DISPLAY": ""}):
            self.assertEqual(self.says(**display), (1, "", "tacla : pas d'écran : l'application ne s'ouvre que dans une "
                                                           "session de bureau\n"), display)

    def test_keeps_nobody_from_a_picture_of_the_window(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        tasks = folder / "taches.md"
        tasks.write_text(f"- [ ] Pain · {day()}\n- [ ] مهمة {'très long ' * 1000} 🎉 · {day()}\n")
        for name, arguments, magic in (("clair.png", (), b"\x89PNG"), ("sombre.jpg", ("--dark",), b"\xff\xd8\xff")):
            self.assertEqual(self.says("--snapshot", str(folder / name), *arguments, TACLA_FILE=str(tasks)), (0, "", ""))
            self.assertEqual((folder / name).read_bytes()[:len(magic)], magic)
        status, output, errors = self.says("--snapshot", "/nowhere/image.png", TACLA_FILE=str(tasks))
        self.assertEqual((status, output), (1, ""))
        self.assertRegex(errors, r"^tacla : impossible d'écrire /nowhere/image\.png : .+\n$")


class WithoutBuses(Story):
    without = ("a11y", "secrets", "notify", "logind", "panel")

    def open_between(self, buses):
        address = f"unix:path={buses}"
        self.launch(DBUS_SESSION_BUS_ADDRESS=address, DBUS_SYSTEM_BUS_ADDRESS=address)
        until(self.desktop.windows, "the window")

    def test_the_window_opens_at_once(self):
        self.open_between(self.desktop.folder / "nobody")

    def test_a_silent_bus_holds_nothing_up(self):
        path = f"{self.desktop.folder}/silent"
        with socket.socket(socket.AF_UNIX) as silent:
            silent.bind(path)
            silent.listen(10)
            self.open_between(path)


main()
