"""Signing in: from the settings page through a real browser to the mirrored calendar, and out of sight of everybody."""
import pathlib
import re
import subprocess

from story import Browser, Google, Story, day, main, until

ROOT = pathlib.Path(__file__).parents[2]
STAND_IN = ROOT / "scripts/google-stand-in"
GUIDE = " ".join((ROOT / "docs/google-agenda.md").read_text().split())


class SignIn(Story):
    tasks = f"- [ ] Pain · {day()}\n- [ ] Loyer · {day(2)} 14:00\n- [ ] Sans date\n"

    def settings(self, client=True):
        """The settings page of a program that knows the stand-in."""
        self.google = self.enterContext(Google())
        if client:
            self.google.give_client(self.home / ".local/share/Tacla")
        self.launch(TACLA_GOOGLE_BASE=self.google.base)
        self.open_settings()

    def follow(self, browser, section):
        """Does what the guide says: presses what is bold, fills in what is set, and sees what stands in quotes."""
        for press, label, text, seen in re.findall(r"\*\*(.+?)\*\*|[Dd]ans \*(.+?)\*, [^`]*`(.+?)`|« (.+?) »", section):
            if seen:
                browser.see(seen)
            elif label:
                browser.type(label, text)
            else:
                browser.press_return() if press == "Entrée" else browser.click(press)

    def sign_in(self, browser):
        self.screen.press("Se connecter à Google")
        browser.open(until(self.desktop.opened, "the browser to be opened")[0])

    def test_the_guide_leads_whoever_clicks_what_it_says_to_the_calendar_and_out_again(self):
        self.settings(client=False)
        steps = re.split(r" (?=[1-7]\. )", GUIDE.partition("en sept étapes")[2].partition("## Se connecter")[0])[1:]
        self.assertEqual(len(steps), 7)
        browser = Browser(self.desktop, self.home)
        browser.open(self.google.base + "/console")
        for step in steps:
            self.follow(browser, step)
        (client,) = until(lambda: list(self.home.glob("client_secret_*.json")), "the download")
        self.screen.press("Choisir le fichier client")
        self.screen.wait("Nom de fichier :", "text").type(str(client))
        self.screen.press("Choisir")
        self.sign_in(browser)
        self.follow(browser, re.search(r"une page (« Google n'a pas.+?) « Connecté", GUIDE)[1])
        until(lambda: sorted(self.google.events()) == ["Loyer", "Pain"], "the dated tasks in the calendar")
        self.screen.wait("Connecté à votre compte Google.")
        self.assertIn("Ouvrir l'agenda", self.tray.labels())
        self.assertEqual(self.run_tacla("sync", TACLA_GOOGLE_BASE=self.google.base).stdout, "+0 ~0 -0\n")
        self.screen.press("Se déconnecter de Google")
        self.screen.wait("Se connecter à Google")

    def test_a_refusal_says_so_in_both_places(self):
        self.settings()
        browser = Browser(self.desktop, self.home)
        self.sign_in(browser)
        browser.click("Continuer")
        browser.click("Refuser")
        browser.see("Vous avez refusé l'accès à votre agenda.")
        self.screen.wait("Se connecter à Google")
        self.assertEqual(self.google.ask("/control/state?calendars"), {})

    def test_without_a_browser_the_address_can_be_copied_and_the_wait_left(self):
        opener = self.desktop.folder / "bin/xdg-open"
        opener.write_text('#!/bin/sh\necho "no browser for $1" >&2\nexit 3\n')  # what it says must reach nobody
        self.settings()
        self.screen.press("Se connecter à Google")
        self.screen.press("Copier l'adresse de connexion")
        self.screen.press("Annuler la connexion à Google")
        self.screen.wait("Se connecter à Google")
        self.assertNotIn("state=", self.desktop.log("tacla"))

    def test_a_locked_keyring_is_left_alone_until_the_user_wants_it(self):
        self.desktop.lock_keyring()
        self.desktop.run(["dbus-monitor", "--session", "interface='org.freedesktop.Secret.Service'"], "secret")
        self.settings()
        until(lambda: "member=SearchItems" in self.desktop.log("secret"), "a look into the keyring")
        self.assertNotIn("member=Unlock", self.desktop.log("secret"))
        self.screen.press("Se connecter à Google")
        until(lambda: "member=Unlock" in self.desktop.log("secret"), "the question for the password")
        self.screen.wait("Connexion Google échouée : le trousseau de clés est verrouillé")
        self.assertEqual(self.desktop.opened(), [], "nobody is sent to Google in vain")


class StandIn(Story):
    tasks = "- [ ] Pain\n"

    def test_it_starts_what_it_starts_on_settings_of_its_own(self):
        said = subprocess.run([STAND_IN, "--", "sh", "-c", 'echo "$TACLA_GOOGLE_BASE"; "$0" list; touch "$XDG_CONFIG_HOME/it"',
                               *self.command], env=self.desktop.env, capture_output=True, text=True, timeout=60).stdout
        self.assertRegex(said, r"^http://127\.0\.0\.1:\d+\n.*\w")
        self.assertNotIn("Pain\n", said)
        self.assertEqual([file.name for file in (self.home / ".config").iterdir() if file.name == "it"], [])


main()
