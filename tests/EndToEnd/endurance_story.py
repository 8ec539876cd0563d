"""Killed and started a hundred times while edits go on; and a list in a folder that another program synchronises."""
import contextlib
import itertools
import json
import os
import random
import re
import subprocess
import threading
import time

from gi.repository import GLib

from story import TACLA, Bubbles, Story, day, main, until

HEAD = "# Ma liste\n\nUne note, avec des espaces à la fin.   \n\n"


class Killed(Story):
    tasks = HEAD + "".join(f"- [ ] Tâche {n} v0 · {day()} 23:59\n" for n in range(8)) + f"- [ ] Sonne · {day()} 00:00\n"

    def setUp(self):
        super().setUp()
        self.random = random.Random(20260321)
        self.versions = [0] * 8

    def lines(self):
        """The tasks' versions as the file has them, which must be whole otherwise."""
        task = rf"- \[(?: |(x))\] Tâche (\d) v(\d+) · {day()} 23:59(?(1) · ✅ {day()})"
        text = self.file.read_text()
        self.assertTrue(text.startswith(HEAD) and text.endswith(f"- [ ] Sonne · {day()} 00:00\n"), text)
        found = [re.fullmatch(task, line) for line in text[len(HEAD):].splitlines()[:-1]]
        self.assertEqual([match[2] for match in found], [*"01234567"])
        return [int(match[3]) for match in found]

    def rename_one(self):
        """Starts a rename in a terminal, and answers what the list says when it succeeds."""
        n = self.random.randrange(8)
        before = self.versions[n]
        return n, subprocess.Popen([TACLA, "rename", f"tâche {n} v{before}", f"Tâche {n} v{before + 1}"],
                                   env=self.desktop.env, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def check_one(self):
        """Clicks a task in the tray menu; the panel may still show the icon of the process before."""
        with contextlib.suppress(GLib.Error):
            name, _ = self.tray.wait()
            entries = [n for n in self.tray._walk(self.tray._layout()[1]) if "Tâche" in self.tray._label(n)]
            self.desktop.call(name, self.tray.property("Menu"), "com.canonical.dbusmenu", "Event",
                              GLib.Variant("(isvu)", (self.random.choice(entries)[0], "clicked", GLib.Variant("s", ""), 0)))
            return True

    def turn(self, program, rename_dies):
        """One life of the program, which ends in the middle of an edit."""
        n, rename = self.rename_one()
        if self.random.random() < 0.5:
            until(self.check_one, "the icon")
        time.sleep(self.random.uniform(0, 0.15))  # any moment will do
        program.kill()
        if rename_dies:
            rename.kill()
        said = rename.communicate()[1]
        program.wait()
        now, before = self.lines(), self.versions[n]
        if rename.returncode >= 0:
            self.assertEqual((rename.returncode, said), (0, b""))
        self.assertIn(now[n], [before + 1] if rename.returncode == 0 else [before, before + 1])
        self.versions[n] = now[n]
        self.assertEqual(now, self.versions)

    def test_a_hundred_times_it_loses_nothing_and_rings_once(self):
        bubbles = Bubbles(self.desktop)
        program = self.launch()
        bubbles.wait("Sonne")
        for turn in range(100):
            self.turn(program, turn % 3 == 0)
            program = self.desktop.run(self.command, "tacla")
        until(self.check_one, "the icon")
        self.kill(program)
        self.assertEqual(self.run_tacla("rename", "sonne", "Sonne encore").returncode, 0)
        self.assertEqual(os.listdir(self.file.parent), ["taches.md"])
        settings = self.home / ".config/fr.dravel.Tacla"
        self.assertEqual(os.listdir(settings), ["preferences.json"])
        self.assertEqual(len(json.loads((settings / "preferences.json").read_text())["notifiedTasks"]), 1)
        self.launch()
        self.file.write_text(self.file.read_text() + f"- [ ] Fin · {day()} 00:01\n")
        bubbles.wait("Fin")
        self.assertEqual([b["summary"] for b in bubbles.shown if not b["replaces"]], ["Sonne", "Fin"])


class Synchronised(Story):
    tasks = f"- [ ] Ici · {day()}\n- [ ] Ailleurs v0 · {day()}\n"

    def arrive(self, text, absent=False):
        """What a program that synchronises folders does: the new file takes the name of the old one, or comes after it."""
        part = self.file.with_name(".taches.md.part")
        part.write_text(text)
        if absent:
            self.file.unlink()
        part.rename(self.file)

    def test_follows_a_file_that_is_replaced_and_leaves_the_copies_alone(self):
        conflict = self.file.with_name("taches (conflit de Julie).md")
        conflict.write_text(self.tasks)
        self.open_window()
        self.arrive(f"- [ ] Autre · {day()}\n")
        self.screen.press("Cocher Autre")
        self.until_file(f"- [x] Autre · {day()} · ✅ {day()}")
        self.file.unlink()
        self.screen.wait("Liste illisible")
        self.assertEqual(self.run_tacla("list").stderr, f"tacla : {self.file} illisible\n")
        self.screen.press("Décocher Autre")
        self.screen.wait(f"Impossible d'écrire {self.file} : Aucun fichier ou dossier de ce nom")
        self.arrive(f"- [ ] De retour · {day()}\n")
        self.screen.press("Cocher De retour")
        self.until_file(f"- [x] De retour · {day()} · ✅ {day()}")
        self.assertEqual(conflict.read_text(), self.tasks)
        self.assertEqual(sorted(os.listdir(self.file.parent)), [conflict.name, "taches.md"])

    def test_loses_nothing_of_what_arrives_in_the_middle_of_an_edit(self):
        self.launch()
        self.tray.wait()
        over = threading.Event()

        def terminal():
            for version in itertools.count():
                if over.is_set():
                    return
                self.run_tacla("rename", "ailleurs", f"Ailleurs v{version}")

        editing = threading.Thread(target=terminal)
        editing.start()
        notes = []
        for arrival in range(60):
            if arrival % 5 == 0:
                self.tray.click("Ici")
            tasks = self.file.read_text().splitlines()[:2]
            self.assertRegex("\n".join(tasks), rf"^- \[.\] Ici · {day()}.*\n- \[ \] Ailleurs v\d+ · {day()}$")
            notes.append(f"Note {arrival}")
            self.arrive("\n".join(tasks + notes) + "\n", absent=arrival % 10 == 0)
            until(lambda: self.file.read_text().splitlines()[2:] == notes, "what arrived")
        over.set()
        editing.join()
        until(lambda: os.listdir(self.file.parent) == ["taches.md"], "a folder without leftovers")
        self.assertEqual(self.file.read_text().splitlines()[2:], notes)


main()
