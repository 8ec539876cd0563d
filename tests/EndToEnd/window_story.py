"""The window: tasks are added, checked, postponed, edited and deleted in it, and it follows the file."""
import pathlib

from story import Reader, Story, day, main, short, until


PAIN, LOYER = f"- [ ] Pain · {day()}", f"- [ ] Loyer · {day(-2)} 14:00"


class Tasks(Story):
    tasks = f"# Ma liste\n\n{PAIN}\n{LOYER}\n"

    def until_tasks(self, *lines):
        self.until_file("# Ma liste", "", *lines)

    def choose(self, task, entry):
        """Opens the menu of an open task's row and takes an entry, with the keys."""
        entries = ["Reporter à demain", "Reporter à lundi", "Reporter d'une semaine", "Cocher", "Modifier", "Supprimer"]
        self.screen.inside(task, f"Modifier, reporter ou supprimer : {task}").press()
        until(lambda: len(self.desktop.windows()) == 2, "the menu")
        self.screen.key("Home", *["Down"] * entries.index(entry), "Return")

    def test_adds_what_is_typed(self):
        self.open_window().type("  Appeler « R&D » 🎉 ")
        for button in ("Prioritaire", "Demain", "Ajouter"):
            self.screen.press(button)
        self.until_tasks(PAIN, LOYER, f"- [ ] ❗ Appeler « R&D » 🎉 · {day(1)}")
        until(lambda: self.screen.wait("Nouvelle tâche").text == "", "an empty field")
        self.screen.press("Ajouter")
        self.screen.press("À venir", "list item")
        self.screen.wait("Appeler « R&D » 🎉")
        self.screen.key("ctrl+n", "ctrl+z")  # the field itself has nothing to take back
        self.until_tasks(PAIN, LOYER)

    def test_checks_and_takes_it_back(self):
        self.open_window()
        for take_back in (lambda: self.screen.press("Annuler : Tâche cochée : Pain"),
                          lambda: self.screen.key("ctrl+2", "ctrl+z")):
            self.screen.press("Cocher Pain")
            self.until_tasks(f"- [x] Pain · {day()} · ✅ {day()}", LOYER)
            take_back()
            self.until_tasks(PAIN, LOYER)
        self.screen.press("Aujourd'hui", "list item")
        self.screen.press("Cocher Pain")
        self.screen.press("Décocher Pain")
        self.until_tasks(PAIN, LOYER)

    def test_postpones_edits_and_deletes_from_a_row(self):
        self.open_window()
        self.choose("Loyer", "Reporter à demain")
        later = f"- [ ] Loyer · {day(1)} 14:00 · due {day(-2)}"
        self.until_tasks(PAIN, later)
        self.screen.inside("Ensuite", "Loyer")
        self.assertIsNone(self.screen.find("En retard", "label"))
        self.choose("Pain", "Modifier")
        self.screen.wait("Titre de la tâche").type("Pain complet")
        self.screen.press("Enregistrer")
        self.until_tasks(f"- [ ] Pain complet · {day()}", later)
        self.choose("Loyer", "Supprimer")
        self.until_tasks(f"- [ ] Pain complet · {day()}")

    def test_keeps_an_edit_in_progress_while_the_file_changes(self):
        self.open_window()
        self.choose("Pain", "Modifier")
        self.screen.wait("Titre de la tâche").type("Pain de mie")
        self.file.write_text(self.file.read_text() + f"- [ ] Nouveau · {day()}\n")
        self.screen.wait("Nouveau")
        self.assertEqual(self.screen.wait("Titre de la tâche").text, "Pain de mie")
        self.screen.press("Enregistrer")
        self.until_tasks(f"- [ ] Pain de mie · {day()}", LOYER, f"- [ ] Nouveau · {day()}")


class Menus(Story):
    def test_answer_to_their_keys(self):
        program = self.launch()
        field = self.open_window()
        field.type("Pain")
        field.focus()
        self.screen.key("ctrl+a", "ctrl+c", "ctrl+v", "ctrl+v")
        until(lambda: field.text == "PainPain", "the pasted text")
        self.screen.key("ctrl+z")
        until(lambda: field.text == "Pain", "the text before")
        self.screen.key("ctrl+comma")
        self.screen.wait("Changer de fichier")
        self.screen.key("ctrl+w")
        self.screen.wait_gone("Changer de fichier")
        self.tray.activate()
        self.screen.wait("Changer de fichier")
        self.screen.key("ctrl+q")
        self.assertEqual(program.wait(20), 0)

    def test_harm_nothing_wherever_the_focus_is(self):
        """Every shortcut of every menu, with the focus on each kind of control of each page."""
        program = self.launch()
        self.open_window()
        for number, page in enumerate(("Aujourd'hui", "En retard", "À venir", "Faites", "Réglages"), 1):
            self.screen.press(page, "list item")
            self.screen.wait(page, "panel")
            for role, control in self.screen.kinds().items():
                control.focus()
                self.screen.key("ctrl+z", "ctrl+shift+z", "ctrl+x", "ctrl+c", "ctrl+v", "ctrl+a", "ctrl+alt+h")
                self.screen.key("ctrl+comma", f"ctrl+{number}")
                for key in ("ctrl+h", "ctrl+w", "ctrl+m"):
                    self.screen.key(key)
                    until(lambda: not self.desktop.windows(), f"the window to go by {key}")
                    self.tray.activate()
                    until(self.desktop.windows, "the window to come back")
                self.assertIsNone(program.poll(), f"ended by a key on a {role} of {page}")
                self.screen.wait(page, "panel")
        self.assertEqual(self.file.read_text(), self.tasks)


class LongList(Story):
    tasks = "".join(f"- [ ] Tâche numéro {n} de la liste · {day(30 + n % 300)}\n" for n in range(100_000)) + f"- [ ] Pain · {day()}\n"

    def test_is_held_once_and_holds_up_nothing(self):
        program = self.launch()
        until(lambda: any(label.endswith("Pain") for label in self.tray.labels()), "the list")
        self.open_window()
        self.screen.press("Cocher Pain")
        until(lambda: f"Pain · {day()} · ✅ {day()}" in self.file.read_text()[-99:], "the task to be checked")
        self.screen.press("À venir", "list item")
        self.screen.wait("Cocher Tâche numéro 0 de la liste")
        self.screen.key("ctrl+f")
        for key in "99999":
            self.screen.key(key)
        self.screen.wait("Cocher Tâche numéro 99999 de la liste")
        with open(self.file, "a") as file:
            file.write(f"- [ ] 99999 · {day()}\n")
        self.screen.wait("Cocher 99999")
        code = pathlib.Path(f"/proc/{program.pid}/exe").read_bytes()
        if b"__asan_" in code or b"__llvm_profile_" in code:
            return  # what such a build keeps for itself counts as well
        peak = int(pathlib.Path(f"/proc/{program.pid}/status").read_text().split("VmHWM:")[1].split()[0])
        self.assertLess(peak, 60_000 + 8 * len(self.tasks.encode()) // 1024, "kilobytes at most")


class ForAReader(Story):
    tasks = (f"- [ ] Bail · {day(-2)}\n- [ ] ❗ Loyer · {day(-2)} 14:00 · due {day(-9)}\n"
             + "".join(f"- [ ] Tâche {number}\n" for number in range(120)))

    def test_a_working_day_is_heard(self):
        self.open_window()
        reader = Reader(self.screen)
        rent = f"{short(-2)}, 14:00, Prioritaire, due le {short(-9)}"
        for keys, said in (
                (["Tab"], "[Aujourd'hui] Date, spin box"),
                (["Tab"] * 4, f"[En retard, 2 tâches] Cocher Bail, check box, {short(-2)}"),
                (["ctrl+2"], f"[En retard] [2 en retard, 2 tâches] Cocher Bail, check box, {short(-2)}"),
                (["Down"], f"Cocher Loyer, check box, {rent}"),
                (["Tab"], f"Modifier, reporter ou supprimer : Loyer, push button, {rent}"),
                (["space"], "Reporter à demain, menu item"),
                (["Escape"], f"[En retard] [2 en retard, 2 tâches] Modifier, reporter ou supprimer : Loyer, push button, {rent}"),
                (["ctrl+3"], "[À venir] [Sans date, 120 tâches] Cocher Tâche 0, check box, Sans date"),
                (["F2"], "[Modifier Tâche 0] Titre de la tâche, text, Titre de la tâche"),
                (["Escape"], "Cocher Tâche 0, check box, Sans date"),
                (["shift+F10", "Up", "Return"], "Cocher Tâche 1, check box, Sans date"),
                (["ctrl+f"], "[Recherche] Chercher une tâche, text, Chercher une tâche…"),
                ([*"BAIL", "Down"], f"[À cocher, 1 tâche] Cocher Bail, check box, {short(-2)}"),
                (["Escape"], "[À venir] [Sans date, 119 tâches] Cocher Tâche 1, check box, Sans date")):
            for key in keys:
                self.screen.key(key)
            reader.hears(said)


class Settings(Story):
    def test_switches_take_effect(self):
        self.open_settings()
        entry = self.home / ".config/autostart/fr.dravel.Tacla.desktop"
        self.assertFalse(entry.exists(), "a program in a build folder is not opened at login unasked")
        self.screen.check("Ouvrir Tacla à l'ouverture de session", True)
        until(entry.exists, "the entry that opens the program at login")
        self.screen.check("Ouvrir Tacla à l'ouverture de session", False)
        until(lambda: not entry.exists(), "the entry to go")

        self.assertNotIn("Ouvrir l'agenda", self.tray.labels())
        self.screen.check("Recopier les tâches dans l'agenda", True)
        until(lambda: "Ouvrir l'agenda" in self.tray.labels(), "the agenda in the menu")
        self.tray.click("Ouvrir l'agenda")
        self.screen.press("Afficher les copies")
        copies = self.home / ".local/state/Tacla/copies"
        until(lambda: self.desktop.opened() == ["https://calendar.google.com/calendar/r", copies.as_uri()],
              "the browser and the file manager")
        self.assertEqual(copies.stat().st_mode & 0o777, 0o700)

    def test_another_file_is_chosen(self):
        other = self.home / "Documents" / "autre liste.md"
        other.write_text(f"- [ ] Ailleurs · {day()}\n")
        self.open_settings()
        self.screen.press("Choisir un autre fichier")
        self.screen.wait("Nom de fichier :", "text").type(str(other))
        self.screen.press("Choisir", "push button")
        self.until_menu("(Aujourd'hui)", "Ailleurs")
        self.assertEqual(self.run_tacla("list").stdout, f"🟡 Ailleurs · {day()}\n")


main()
