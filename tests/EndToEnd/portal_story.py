"""What the desktop's portal does for the application: its file panel, what opens addresses and files, a key for the quick entry."""
from gi.repository import GLib

from story import Portal, Story, day, main, until


class Panels(Story):
    def test_are_the_desktops_own(self):
        portal = Portal(self.desktop, "FileChooser")
        other, new = self.home / "Documents/autre liste.md", self.home / "Documents/nouvelle"
        other.write_text(f"- [ ] Ailleurs · {day()}\n")
        self.open_settings()
        portal.answer(OpenFile=[0, {"uris": ["as", [other.as_uri()]]}])
        self.screen.press("Choisir un autre fichier")
        self.until_menu("(Aujourd'hui)", "Ailleurs")
        member, _, _, parent, title, options = portal.heard()[-1]
        self.assertEqual((member, title), ("OpenFile", "Choisissez le fichier où Tacla lit et écrit vos tâches."))
        self.assertEqual(int(parent.removeprefix("x11:"), 16), int(self.desktop.windows()[0]))
        self.assertEqual(options["filters"], [["Listes de tâches", [[0, end] for end in ("*.md", "*.markdown", "*.txt", "*.text")]]])
        portal.answer(SaveFile=[0, {"uris": ["as", [new.as_uri()]]}])
        self.screen.press("Créer une nouvelle liste")
        until(new.with_suffix(".md").exists, "the new list, with the ending of one")
        options = portal.heard()[-1][5]
        self.assertEqual((options["current_name"], bytes(options["current_folder"])), ("taches.md", bytes(other.parent) + b"\0"))

    def test_of_a_desktop_that_fails_are_replaced(self):
        portal = Portal(self.desktop, "FileChooser")
        self.open_settings()
        portal.answer(OpenFile=[1, {}])  # left
        self.screen.press("Choisir un autre fichier")
        until(portal.heard, "the question")
        portal.answer(OpenFile=[2, {}])
        self.screen.press("Choisir un autre fichier")
        self.screen.wait("Nom de fichier :", "text")
        self.assertEqual([heard[0] for heard in portal.heard()], ["OpenFile", "OpenFile"])


class Addresses(Story):
    def offer_program(self):
        """The user's browser and file manager, as the desktop knows them."""
        kinds = ("x-scheme-handler/https", "inode/directory")
        entry = self.home / ".local/share/applications/essai.desktop"
        entry.parent.mkdir(parents=True)
        entry.write_text(f"[Desktop Entry]\nType=Application\nName=Essai\nExec=sh -c 'echo portail %u >> {self.desktop.folder}/opened'\n")
        (self.home / ".config/mimeapps.list").write_text("".join(
            ["[Default Applications]\n", *(f"{kind}=essai.desktop\n" for kind in kinds)]))

    def test_are_opened_by_the_portal(self):
        self.offer_program()
        portal = Portal(self.desktop, "AppChooser")
        portal.answer(ChooseApplication=[0, {"choice": ["s", "essai"]}])  # newer portals ask at the first time
        self.open_settings()
        copies = self.home / ".local/state/Tacla/copies"
        wanted = []
        for button, opened in (("Ouvrir Google Agenda", "portail https://calendar.google.com/calendar/r"),
                               ("Ouvrir la liste de tâches", self.file.as_uri()),  # at once: the portal would ask with what
                               ("Afficher les copies", f"portail {copies}")):
            self.screen.press(button)
            wanted.append(opened)
            self.until_equal(self.desktop.opened, wanted, button)

    def test_that_nobody_takes_go_the_old_way(self):
        portal = Portal(self.desktop, "AppChooser", XDG_DATA_DIRS=str(self.desktop.folder),
                        GSETTINGS_SCHEMA_DIR="/usr/share/glib-2.0/schemas")
        portal.answer(ChooseApplication=[2, {}])
        self.open_settings()
        self.screen.press("Ouvrir Google Agenda")
        until(lambda: self.desktop.opened() == ["https://calendar.google.com/calendar/r"], "the browser")


class Key(Story):
    offered = [["new-task", {"description": "Ajouter une tâche", "preferred_trigger": "LOGO+ALT+t"}]]

    def test_is_chosen_pressed_and_there_again_at_the_next_start(self):
        portal = Portal(self.desktop, "GlobalShortcuts")

        def asked(last):
            return until(lambda: [heard[0] for heard in portal.heard()][-len(last):] == last and portal.heard()[-1], last)
        program = self.launch()
        self.open_settings()
        portal.answer(BindShortcuts=[1, {}])  # the user would rather not
        self.screen.press("Choisir la touche de la saisie rapide")
        asked(["CreateSession", "BindShortcuts", "Close"])
        key = {"shortcuts": ["a(sa{sv})", [["new-task", {"trigger_description": "Press <Alt><Super>t"}]]]}
        portal.answer(BindShortcuts=[0, key])
        self.screen.press("Choisir la touche de la saisie rapide")
        self.screen.wait("Ajouter une tâche depuis tout programme : Alt+Super+T")
        self.assertEqual(asked(["CreateSession", "BindShortcuts"])[3], self.offered)
        portal.tell("ShortcutsChanged", "(a(sa{sv}))", [("new-task", {"trigger_description": GLib.Variant("s", "F12")})])
        self.screen.wait("Ajouter une tâche depuis tout programme : F12")
        self.screen.key("ctrl+w")
        portal.tell("Activated", "(sta{sv})", "new-task", 1, {})
        self.screen.wait("Nouvelle tâche")
        self.quit(program)
        asked(["Close"])
        program = self.launch()
        asked(["CreateSession", "BindShortcuts"])
        portal.restart()
        asked(["CreateSession", "BindShortcuts", "CreateSession", "BindShortcuts"])
        portal.tell("Activated", "(sta{sv})", "new-task", 2, {})
        self.screen.wait("Nouvelle tâche")
        self.assertIsNone(program.poll())


main()
