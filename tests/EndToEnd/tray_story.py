"""The tray: its icon, its menu, and panels that come late or start anew."""
from gi.repository import GLib

from story import Story, day, main, short, until

PROGRAM = ["-", "Ouvrir Tacla…", "Ouvrir la liste", "-", "Quitter Tacla"]


class Menu(Story):
    tasks = (f"- [ ] R&D <b>note_1</b> · {day()}\n- [ ] Visio · {day(1)} 09:05\n- [ ] Loyer · {day(-1)} 14:00\n"
             "- [ ] Un jour\n")

    def test_shows_the_day_and_checks_what_is_clicked(self):
        self.launch()
        self.until_menu("(En retard)", f"{short(-1)}  Loyer", "-", "(Aujourd'hui)", "R&D <b>note_1</b>", "-", "À venir",
                        "> demain 09:05  Visio", *PROGRAM)
        self.assertEqual(self.tray.tooltip(), "Tacla · 2 à faire")
        self.assertEqual(self.tray.property("XAyatanaLabel"), " 2")

        self.tray.click("R&D <b>note_1</b>")
        self.until_file(f"- [x] R&D <b>note_1</b> · {day()} · ✅ {day()}", f"- [ ] Visio · {day(1)} 09:05",
                        f"- [ ] Loyer · {day(-1)} 14:00", "- [ ] Un jour")
        self.until_menu("(En retard)", f"{short(-1)}  Loyer", "-", "(Aujourd'hui)", "[x] R&D <b>note_1</b>")
        self.tray.click("R&D <b>note_1</b>")
        self.tray.click(f"{short(-1)}  Loyer")
        self.until_file(f"- [ ] R&D <b>note_1</b> · {day()}", f"- [ ] Visio · {day(1)} 09:05",
                        f"- [x] Loyer · {day(-1)} 14:00 · ✅ {day()}", "- [ ] Un jour")
        self.until_menu("(Aujourd'hui)", "R&D <b>note_1</b>")

    def test_follows_an_editor(self):
        self.launch()
        self.until_menu("(En retard)")
        icon = self.tray.property("IconPixmap")
        self.file.write_text("")
        self.until_menu("(Aujourd'hui)", "(Rien de prévu)", *PROGRAM)
        self.assertEqual(self.tray.tooltip(), "Tacla · tout est coché")
        self.assertEqual(self.tray.property("XAyatanaLabel"), "")
        self.assertNotEqual(self.tray.property("IconPixmap"), icon)

    def test_opens_the_list_and_quits(self):
        program = self.launch()
        self.tray.click("Ouvrir la liste")
        until(self.desktop.opened, "the editor")
        self.assertEqual(self.desktop.opened(), [self.file.as_uri()])
        self.quit(program)


class Panel(Story):
    def test_that_starts_anew_gets_the_icon_back(self):
        self.launch()
        self.tray.wait()
        self.desktop.restart("panel")
        self.until_menu("(Aujourd'hui)", "Pain")


class Colours(Story):
    def test_follow_the_desktop_at_once(self):
        tell = self.desktop.offer_portal("org.freedesktop.portal.Settings", "Read", "ss", "v",
                                         "ret = dbus.UInt32(1, variant_level=1)")
        self.launch()

        def colours():  # of the opaque pixels of the largest: alpha, red, green, blue
            data = self.tray.property("IconPixmap")[-1][2]
            return {tuple(data[i + 1:i + 4]) for i in range(0, len(data), 4) if data[i] == 255}
        light, dark = (0xF5, 0xF5, 0xF5), (0x13, 0x19, 0x27)
        for scheme, wanted in ((None, {light}), (2, {dark}), (0, {light, dark})):
            if scheme is not None:
                tell("SettingChanged", "ssv", "org.freedesktop.appearance", "color-scheme", GLib.Variant("u", scheme))
            until(lambda: wanted <= colours() and (len(wanted) > 1 or len(colours()) == 1), f"an icon in {wanted}")


class LatePanel(Story):
    without = ("panel",)

    def test_gets_the_icon_and_no_window_opened_unasked(self):
        self.launch()
        until(lambda: self.desktop.owned("fr.dravel.Tacla"), "the program on the bus")
        self.desktop.start("panel")
        self.until_menu("(Aujourd'hui)", "Pain")
        self.assertEqual(self.desktop.windows(), [])

    def test_says_how_to_come_back_until_it_is_there(self):
        self.launch(XDG_ACTIVATION_TOKEN="launcher")  # who starts it there wants to see something
        self.screen.wait("Nouvelle tâche")
        self.screen.press("Réglages", "list item")
        said = ("Ce bureau n'a pas de zone de notification : fenêtre fermée, les rappels continuent. Tacla se rouvre depuis "
                "le lanceur ou la vue d'ensemble ; sur GNOME, l'extension AppIndicator apporte son icône.")
        self.screen.wait(said)
        self.desktop.start("panel")
        self.screen.wait_gone(said)


main()
