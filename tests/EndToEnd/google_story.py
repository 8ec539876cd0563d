"""Signing in: from the settings page through a real browser to the mirrored calendar, and out of sight of everybody."""
import json
import pathlib
import subprocess
import urllib.request

from story import Story, day, main, until

STAND_IN = pathlib.Path(__file__).parents[1] / "support/google_stand_in.py"
BROWSER = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
           "--disable-background-networking", "--disable-component-update", "--virtual-time-budget=5000", "--dump-dom"]


class SignIn(Story):
    tasks = f"- [ ] Pain · {day()}\n- [ ] Loyer · {day(2)} 14:00\n- [ ] Sans date\n"

    def stand_in(self, answer):
        process = self.enterContext(subprocess.Popen(["/usr/bin/python3", STAND_IN, "--until-eof", "--automatic", answer],
                                                     text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE))
        self.base = process.stdout.readline().strip()
        data = self.home / ".local/share/Tacla"
        data.mkdir(parents=True)
        (data / "client.json").write_text(json.dumps(self.ask("/control/client")))

    def ask(self, path):
        with urllib.request.urlopen(self.base + path, timeout=20) as answer:
            return json.load(answer)

    def events(self):
        calendars = self.ask("/control/state?calendars").values()
        return sorted(event["summary"] for calendar in calendars for event in calendar["events"].values())

    def browse(self):
        """What the user reads in the browser at the end of the redirects."""
        self.launch(TACLA_GOOGLE_BASE=self.base)
        self.open_window()
        self.screen.press("Réglages", "list item")
        self.screen.press("Se connecter à Google")
        (address,) = until(self.desktop.opened, "the browser to be opened")
        profile = f"--user-data-dir={self.desktop.folder}/browser"
        return subprocess.run([*BROWSER, profile, address], env=self.desktop.env, capture_output=True, text=True,
                              timeout=120).stdout

    def test_an_agreement_connects_and_mirrors(self):
        self.stand_in("allow")
        page = self.browse()
        self.assertIn("C'est connecté", page)
        self.screen.wait("Connecté à votre compte Google.")
        until(lambda: self.events() == ["Loyer", "Pain"], "the dated tasks in the calendar")
        self.assertIn("Ouvrir l'agenda", self.tray.labels())
        self.assertEqual(self.run_tacla("sync", TACLA_GOOGLE_BASE=self.base).stdout, "+0 ~0 -0\n")

    def test_a_refusal_says_so_in_both_places(self):
        self.stand_in("refuse")
        self.assertIn("Vous avez refusé l'accès à votre agenda.", self.browse())
        self.screen.wait("Se connecter à Google")
        self.assertEqual(self.ask("/control/state?calendars"), {})


if __name__ == "__main__":
    main()
