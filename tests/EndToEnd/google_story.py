"""Signing in: from the settings page through a real browser to the mirrored calendar, and out of sight of everybody."""
import pathlib
import subprocess

from story import Google, Story, day, main, until

STAND_IN = pathlib.Path(__file__).parents[2] / "scripts/google-stand-in"
BROWSER = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
           "--disable-background-networking", "--disable-component-update", "--virtual-time-budget=5000", "--dump-dom"]


class SignIn(Story):
    tasks = f"- [ ] Pain · {day()}\n- [ ] Loyer · {day(2)} 14:00\n- [ ] Sans date\n"

    def settings(self, *options):
        """The settings page of a program that knows the stand-in."""
        self.google = self.enterContext(Google(*options))
        self.google.give_client(self.home / ".local/share/Tacla")
        self.launch(TACLA_GOOGLE_BASE=self.google.base)
        self.open_settings()

    def browse(self, answer):
        """What the user who gives that answer reads in the browser at the end of the redirects."""
        self.settings("--automatic", answer)
        self.screen.press("Se connecter à Google")
        (address,) = until(self.desktop.opened, "the browser to be opened")
        profile = f"--user-data-dir={self.desktop.folder}/browser"
        return subprocess.run([*BROWSER, profile, address], env=self.desktop.env, capture_output=True, text=True,
                              timeout=120).stdout

    def test_an_agreement_connects_and_mirrors_until_it_is_taken_back(self):
        self.assertIn("C'est connecté", self.browse("allow"))
        self.screen.wait("Connecté à votre compte Google.")
        until(lambda: sorted(self.google.events()) == ["Loyer", "Pain"], "the dated tasks in the calendar")
        self.assertIn("Ouvrir l'agenda", self.tray.labels())
        self.assertEqual(self.run_tacla("sync", TACLA_GOOGLE_BASE=self.google.base).stdout, "+0 ~0 -0\n")
        self.screen.press("Se déconnecter de Google")
        self.screen.wait("Se connecter à Google")

    def test_a_refusal_says_so_in_both_places(self):
        self.assertIn("Vous avez refusé l'accès à votre agenda.", self.browse("refuse"))
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


if __name__ == "__main__":
    main()
