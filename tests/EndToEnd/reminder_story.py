"""Reminders through the notification daemon, answered there."""
import datetime
import subprocess
import time

from gi.repository import GLib

from story import TACLA, Bubbles, Screen, Story, day, main, until


class Reminders(Story):
    tasks = f"- [ ] ❗ R&D <b> · {day()} 00:00 · due {day(-3)}\n- [ ] Pain · {day()} 00:00\n- [ ] Hier · {day(-1)} 10:00\n"

    def setUp(self):
        super().setUp()
        self.bubbles = Bubbles(self.desktop)
        self.program = self.launch()
        self.bubbles.wait("Pain")

    def test_is_shown_as_written_and_checked_with_fait(self):
        bubble = self.bubbles.wait("R&D <b>")
        self.assertEqual(bubble["body"], f"Prévue à 00:00 · prioritaire · due le {day(-3)[8:]}/{day(-3)[5:7]}")
        self.assertEqual(bubble["actions"][2:], ["DONE", "Fait", "TOMORROW", "Demain"])
        self.assertEqual((bubble["hints"]["desktop-entry"], bubble["timeout"]), ("fr.dravel.Tacla", 0))
        self.bubbles.answer("R&D <b>", "Fait")
        self.until_file(f"- [x] ❗ R&D <b> · {day()} 00:00 · due {day(-3)} · ✅ {day()}", f"- [ ] Pain · {day()} 00:00",
                        f"- [ ] Hier · {day(-1)} 10:00")
        until(lambda: bubble["id"] in self.bubbles.closed, "the bubble to close")

    def test_moves_a_task_with_demain_after_it_was_renamed(self):
        self.assertEqual(self.run_tacla("rename", "Pain", "Pain bis").returncode, 0)
        until(lambda: "00:00  Pain bis" in self.tray.labels(), "the new title")
        self.bubbles.answer("Pain", "Demain")
        until(lambda: f"- [ ] Pain bis · {day(1)} 00:00\n" in self.file.read_text(), "the new day")

    def test_ends_with_its_task(self):
        ids = {name: self.bubbles.wait(name)["id"] for name in ("Pain", "R&D <b>")}
        self.assertEqual(self.run_tacla("done", "Pain").returncode, 0)
        until(lambda: ids["Pain"] in self.bubbles.closed, "the bubble of the checked task to close", 4)
        self.file.write_text(self.file.read_text().replace(f"<b> · {day()}", f"<b> · {day(2)}"))
        until(lambda: ids["R&D <b>"] in self.bubbles.closed, "the bubble of the moved task to close", 4)

    def test_whose_task_is_gone_says_so_in_the_window(self):
        self.file.write_text(self.file.read_text().replace("Pain", "Vin", 1).replace(f"Vin · {day()}", f"Vin · {day(1)}"))
        self.bubbles.answer("Pain", "Fait")
        self.screen.wait("La tâche « Pain » n'est plus dans la liste.")

    def test_outlives_a_killed_process_and_ends_with_one_that_is_told_to_quit(self):
        ids = {name: self.bubbles.wait(name)["id"] for name in ("Pain", "R&D <b>")}
        memory = self.desktop.folder / "runtime/Tacla/bubbles"
        until(lambda: memory.exists() and memory.read_text().count("\n") == 3, "both bubbles to be remembered")
        self.kill(self.program)
        program = self.launch()
        self.bubbles.wait("Pain", 2)
        self.bubbles.answer("Pain", "Fait")
        until(lambda: f"- [x] Pain · {day()} 00:00 · ✅ {day()}\n" in self.file.read_text(), "the checked task")
        self.assertEqual({b["replaces"] for b in self.bubbles.shown}, {0, *ids.values()})  # in the old ones' place
        self.quit(program)
        until(lambda: set(ids.values()) <= set(self.bubbles.closed), "the bubbles to close")

    def test_rings_at_its_moment_once(self):
        soon = datetime.datetime.now() + datetime.timedelta(minutes=1)
        self.file.write_text(self.tasks + f"- [ ] Bientôt · {soon:%Y-%m-%d %H:%M}\n")
        bubble = until(lambda: [b for b in self.bubbles.shown if b["summary"] == "Bientôt"], "the reminder", 75)[0]
        self.assertEqual(bubble["body"], f"Prévue à {soon:%H:%M}")
        self.desktop.sleep_and_wake()
        self.desktop.restart("notify")
        self.run_tacla("done", "Pain")
        self.until_menu("(En retard)")
        self.assertEqual(sorted(b["summary"] for b in self.bubbles.shown), ["Bientôt", "Pain", "R&D <b>"])

    def test_opens_the_window_when_clicked_and_survives_a_daemon_that_starts_anew(self):
        self.bubbles.answer("Pain", "Ouvrir")
        self.screen.wait("Nouvelle tâche")
        self.desktop.restart("notify")
        self.file.write_text(self.tasks + f"- [ ] Après · {day()} 00:01\n")
        self.bubbles.answer("Après", "Fait")
        until(lambda: f"- [x] Après · {day()} 00:01 · ✅ {day()}\n" in self.file.read_text(), "the checked task")



class OnGnome(Story):
    tasks = f"- [ ] Pain · {day()} 00:00\n- [ ] Vin · {day()} 00:01\n"
    SERVER = ("org.gtk.Notifications", "/org/gtk/Notifications", "org.gtk.Notifications")

    def mock(self, member, signature, *arguments):
        return self.desktop.call(*self.SERVER[:2], "org.freedesktop.DBus.Mock", member, GLib.Variant(signature, arguments))

    def listed(self):
        return {call[1][2]["title"]: call[1] for call in self.mock("GetMethodCalls", "(s)", "AddNotification")[0]}

    def test_lists_it_until_it_is_answered_also_after_the_program_ended(self):
        self.desktop.run(["/usr/bin/python3", "-m", "dbusmock", "--session", *self.SERVER], "gtk")
        until(lambda: self.desktop.owned(self.SERVER[0]), "the server")
        self.mock("AddMethod", "(sssss)", self.SERVER[2], "AddNotification", "ssa{sv}", "", "")
        bubbles = Bubbles(self.desktop)
        self.desktop.env["XDG_CURRENT_DESKTOP"] = "GNOME"
        self.desktop.offer_service("fr.dravel.Tacla", TACLA)
        program = self.launch()
        until(lambda: self.listed().keys() == {"Pain", "Vin"}, "both reminders")
        said = {title: call[2] for title, call in self.listed().items()}
        self.assertEqual({call[0] for call in self.listed().values()}, {"fr.dravel.Tacla"})
        self.assertEqual((said["Pain"]["body"], said["Pain"]["priority"]), ("Prévue à 00:00", "urgent"))
        self.assertEqual([button["label"] for button in said["Pain"]["buttons"]], ["Fait", "Demain"])

        def choose(button):  # as GNOME does
            action = [button["action"].removeprefix("app."), f"'{button['target']}'"]
            subprocess.run(["gapplication", "action", "fr.dravel.Tacla", *action], env=self.desktop.env, check=True)
        choose(said["Pain"]["buttons"][0])
        self.until_file(f"- [x] Pain · {day()} 00:00 · ✅ {day()}", f"- [ ] Vin · {day()} 00:01")
        self.kill(program)
        choose(said["Vin"]["buttons"][1])
        self.until_file(f"- [x] Pain · {day()} 00:00 · ✅ {day()}", f"- [ ] Vin · {day(1)} 00:01")
        self.assertEqual((bubbles.shown, self.desktop.windows()), ([], []))
        self.tray.click("Quitter Tacla")


class Another(Story):
    """Reminders through the daemon of Xfce, answered by its buttons."""

    without = ("notify",)
    tasks = f"- [ ] Pain · {day()} 00:00\n- [ ] Lait · {day()} 00:00\n- [ ] Vin · {day()} 00:00\n"

    def test_daemon_shows_them_until_they_are_answered(self):
        self.desktop.start("notify of xfce")
        screen = Screen(self.desktop, "xfce4-notifyd")
        program = self.launch()
        screen.wait("Vin")
        self.run_tacla("done", "Vin")
        screen.wait_gone("Vin")
        time.sleep(12)  # what asks for nothing leaves after ten seconds
        memory = self.desktop.folder / "runtime/Tacla/bubbles"
        self.assertEqual((memory.read_text().count("\n"), memory.stat().st_mode & 0o777), (3, 0o600))
        self.kill(program)
        program = self.launch()
        self.tray.wait()
        screen.press("Fait")
        until(lambda: self.file.read_text().count("- [x] ") == 2, "the checked task")
        screen.press("Demain")
        until(lambda: f" · {day(1)} 00:00\n" in self.file.read_text(), "the moved task")
        until(lambda: not screen.find("Fait"), "the bubbles to close")


class Many(Story):
    tasks = "".join(f"- [ ] Tâche {number} · {day()} 00:00\n" for number in range(1000))

    def test_come_a_few_a_second_while_the_window_stays_prompt(self):
        bubbles = Bubbles(self.desktop)
        self.launch()
        bubbles.wait("Tâche 0")
        start, before = time.monotonic(), len(bubbles.shown)
        self.open_window()
        bubbles.wait("Tâche 23")
        seconds, shown = time.monotonic() - start, len(bubbles.shown) - before
        self.assertLess(shown / seconds, 6)
        self.assertEqual([b["summary"] for b in bubbles.shown], [f"Tâche {number}" for number in range(len(bubbles.shown))])


class NoDaemon(Story):
    without = ("notify",)
    tasks = f"- [ ] Pain · {day()} 00:00\n"

    def test_holds_nothing_up_and_rings_when_one_comes(self):
        done = self.run_tacla("--notify-test")
        self.assertEqual((done.returncode, done.stderr), (0, "Aucun service de notification ne répond.\n"))
        self.launch()
        self.until_menu("(En retard)", "00:00  Pain")
        bubbles = Bubbles(self.desktop)
        self.desktop.start("notify")
        self.assertEqual(bubbles.wait("Pain")["body"], "Prévue à 00:00")
        done = self.run_tacla("--notify-test")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        self.assertEqual(bubbles.wait("Notification d'essai")["body"], "L'icône du castor doit apparaître à gauche.")


main()
