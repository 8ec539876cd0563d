"""Signing in: from the settings page through a real browser to the mirrored calendar, and out of sight of everybody."""
import subprocess

from story import Google, Story, day, main, until

BROWSER = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
           "--disable-background-networking", "--disable-component-update", "--virtual-time-budget=5000", "--dump-dom"]


class SignIn(Story):
    tasks = f"- [ ] Pain · {day()}\n- [ ] Loyer · {day(2)} 14:00\n- [ ] Sans date\n"

    def browse(self, answer):
        """What the user who gives that answer reads in the browser at the end of the redirects."""
        self.google = self.enterContext(Google("--automatic", answer))
        self.google.give_client(self.home / ".local/share/Tacla")
        self.launch(TACLA_GOOGLE_BASE=self.google.base)
        self.open_window()
        self.screen.press("Réglages", "list item")
        self.screen.press("Se connecter à Google")
        (address,) = until(self.desktop.opened, "the browser to be opened")
        profile = f"--user-data-dir={self.desktop.folder}/browser"
        return subprocess.run([*BROWSER, profile, address], env=self.desktop.env, capture_output=True, text=True,
                              timeout=120).stdout

    def test_an_agreement_connects_and_mirrors(self):
        self.assertIn("C'est connecté", self.browse("allow"))
        self.screen.wait("Connecté à votre compte Google.")
        until(lambda: sorted(self.google.events()) == ["Loyer", "Pain"], "the dated tasks in the calendar")
        self.assertIn("Ouvrir l'agenda", self.tray.labels())
        self.assertEqual(self.run_tacla("sync", TACLA_GOOGLE_BASE=self.google.base).stdout, "+0 ~0 -0\n")

    def test_a_refusal_says_so_in_both_places(self):
        self.assertIn("Vous avez refusé l'accès à votre agenda.", self.browse("refuse"))
        self.screen.wait("Se connecter à Google")
        self.assertEqual(self.google.ask("/control/state?calendars"), {})


if __name__ == "__main__":
    main()
