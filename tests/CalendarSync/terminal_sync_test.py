"""The terminal and the calendar: the real program with a real keyring, and the stand-in for Google."""
import os
import pathlib
import pty
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "EndToEnd"))
from story import TACLA, Google, Story, main, until  # noqa: E402


class TerminalSync(Story):
    without = ("wm", "a11y", "notify", "logind", "panel")
    tasks = "- [ ] Pain · 2025-03-04\n- [ ] ❗ TVA · 2025-03-05 14:30\n- [ ] Sans date\n"

    def setUp(self):
        super().setUp()
        self.google = self.enterContext(Google())
        self.data, self.preferences = self.home / ".local/share/Tacla", self.home / ".config/fr.dravel.Tacla/preferences.json"
        self.preferences.write_text('{"calendarSync": true}')
        self.google.give_account(self.data)
        self.desktop.env["TACLA_GOOGLE_BASE"] = self.google.base

    def tacla(self, *arguments):
        done = self.run_tacla(*arguments)
        return done.returncode, done.stdout, done.stderr

    def fails(self, message, *arguments):
        self.assertEqual(self.tacla(*arguments), (1, "", f"tacla : {message}\n"))

    def test_mirrors_counts_and_keeps_events_over_a_rename(self):
        self.assertEqual(self.tacla("sync"), (0, "+2 ~0 -0\n", ""))
        self.assertFalse((self.data / "token.json").exists(), "moved into the keyring")
        self.assertEqual(self.tacla("sync"), (0, "+0 ~0 -0\n", ""))
        before = self.google.events()
        self.assertEqual(self.tacla("rename", "pain", "Baguette"), (0, "✏️ Pain → Baguette\n", ""))
        self.assertEqual(self.google.events(), {"Baguette": before["Pain"], "❗ TVA": before["❗ TVA"]})

        self.file.write_text("# Tâches\n")
        self.fails("Le fichier ne contient aucune tâche : l'agenda n'est pas vidé", "sync")
        self.file.unlink()
        self.fails(f"{self.file} illisible", "sync")
        self.file.write_text(self.tasks)
        self.google.fault(at=1, kind="text", status=403, body="é" * 300)
        self.fails("Google Agenda a répondu 403 " + "é" * 120 + "\ntacla : Activez l'API Google Calendar dans votre projet "
                   "Google, ou reconnectez-vous", "sync")
        self.google.ask("/control", {"faults": [], "revoke": True})
        self.assertEqual(self.tacla("rename", "baguette", "Pain")[0], 1, "no such task any more")
        self.fails("Pas connecté à Google\ntacla : Reconnectez-vous dans les réglages de Tacla", "sync")
        self.preferences.write_text('{"calendarSync": false}')
        self.fails("la recopie dans Google Agenda est désactivée (Réglages de Tacla)", "sync")

    def start(self):
        return subprocess.Popen([TACLA, "sync"], env=self.desktop.env, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def one_calendar_with_each_task_once(self, told):
        calendars = list(self.google.ask("/control/state?calendars").values())
        shown = [sorted(event["summary"] for event in calendar["events"].values() if event["status"] != "cancelled")
                 for calendar in calendars]
        self.assertEqual(shown, [["Pain", "❗ TVA"]], told)

    def test_several_at_once_make_one_calendar_and_no_event_twice(self):
        for many in (2, 5):
            self.google.ask("/control", {"calendars": {}, "faults": [{"at": 1, "kind": "delay", "seconds": 1.5}]})
            self.preferences.write_text('{"calendarSync": true}')
            for told in (f"{many} without a calendar", f"{many} with an empty one"):
                running = [self.start() for _ in range(many)]
                said = [process.communicate(timeout=120) for process in running]
                self.assertEqual([process.returncode for process in running], [0] * many, said)
                self.one_calendar_with_each_task_once(told)
                waited = [errors for _, errors in said if errors]
                if "without" in told:
                    self.assertEqual(waited, ["tacla : une autre recopie est en cours, celle-ci attend son tour\n"] * (many - 1))
                calendars = self.google.ask("/control/state?calendars")
                for calendar in calendars.values():
                    calendar["events"] = {}
                self.google.ask("/control", {"calendars": calendars})

    def test_killed_at_any_request_makes_no_second_calendar(self):
        for at, after in ((1, False), (1, True), (2, False), (2, True), (3, False), (3, True)):
            self.preferences.write_text('{"calendarSync": true}')
            self.google.ask("/control", {"calendars": {}, "clear_log": True,
                                         "faults": [{"at": at, "kind": "hang", "after": after}]})
            with self.start() as killed:
                until(lambda: any(entry["fault"] == "hang" for entry in self.google.ask("/control/state?log")), "the request")
                killed.kill()
            self.google.ask("/control", {"faults": []})
            if at == 1:  # whether there is a calendar, only the user can see: makes it go, and switches on again
                self.fails("La création de l'agenda a été interrompue : Google l'a peut-être fait, Tacla n'en fait pas un second\n"
                           "tacla : Supprimez dans Google Agenda l'agenda « Tacla » vide, s'il y est, puis désactivez et "
                           "réactivez la recopie dans les réglages de Tacla", "sync")
                self.assertEqual(len(self.google.ask("/control/state?calendars")), int(after))
                self.google.ask("/control", {"calendars": {}})
                self.preferences.write_text('{"calendarSync": true}')
            self.assertEqual(self.tacla("sync")[0], 0)
            self.tacla("sync")
            self.one_calendar_with_each_task_once(f"killed at request {at}, after: {after}")

    def test_shows_its_progress_on_a_terminal_and_clears_it(self):
        reading, writing = pty.openpty()
        with subprocess.Popen([TACLA, "sync"], env=self.desktop.env, stdout=subprocess.PIPE, stderr=writing, text=True) as tacla:
            self.assertEqual(tacla.communicate(timeout=60)[0], "+2 ~0 -0\n")
        os.close(writing)
        shown = os.read(reading, 65536).decode()
        os.close(reading)
        self.assertEqual(shown.split("\r\x1b[K"), ["", "Lecture de Google Agenda…", "Envoi à Google Agenda : 0 sur 2",
                                                  "Envoi à Google Agenda : 1 sur 2", ""])


main()
