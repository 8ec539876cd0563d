"""Drives keyring_probe against gnome-keyring, and against a service with a slow dialog, each in a desktop of its own.

    keyring_test.py PATH_OF_KEYRING_PROBE
"""
import json
import os
import signal
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[1] / "support"))
from desktop import Desktop, until  # noqa: E402

PROBE = sys.argv.pop(1)
SERVICE = "fr.dravel.Essai.google"
LOCKED = "le trousseau de clés est verrouillé"


class Bare(unittest.TestCase):
    """Nothing runs that the test did not start."""

    def setUp(self):
        self.desktop = self.enterContext(Desktop(without=Desktop.ALL))

    def call(self, command, text=""):
        return subprocess.run(command, env=self.desktop.env, input=text, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              timeout=60, text=True).stdout.strip()

    def probe(self, command, secret="", deadline="5000"):
        return self.call([PROBE, command, SERVICE, deadline], secret)


    def each_fails(self, reason, deadline="5000"):
        for command, answer in (("find", "unreachable"), ("store", "failed"), ("erase", "failed")):
            self.assertEqual(self.probe(command, "jeton-2", deadline), f"{answer}: {reason}")


class RealKeyring(Bare):
    def tool(self, command, *arguments):
        return self.call(["secret-tool", command, *arguments, "service", SERVICE, "account", "refresh-token"])

    def test_the_token_is_there_for_everybody_to_see_until_it_is_erased(self):
        self.desktop.start("secrets")
        self.assertEqual(self.probe("find"), "absent")
        self.assertEqual(self.probe("store", "jeton-1"), "done")
        self.assertEqual(self.tool("lookup"), "jeton-1")
        self.assertIn("label = Essai", self.tool("search"))
        self.desktop.restart("secrets")
        self.assertEqual(self.probe("find-quietly"), "found jeton-1")
        self.assertEqual(self.probe("erase"), "done")
        self.assertEqual(self.tool("lookup"), "")
        self.assertEqual(self.probe("erase"), "done")

    def test_one_item_is_left_whoever_made_the_others(self):
        self.desktop.start("secrets")
        for secret in ("jeton-1", "jeton-2"):
            self.assertEqual(self.probe("store", secret), "done")
        self.call(["secret-tool", "store", "--label=Autre", "service", SERVICE, "account", "refresh-token",
                   "par", "un autre"], "jeton-3")
        self.assertEqual(self.probe("store", "jeton-4"), "done")
        self.assertEqual(self.tool("search", "--all").count("secret = "), 1)
        self.assertEqual(self.probe("find"), "found jeton-4")

    def test_a_locked_keyring_is_not_an_empty_one(self):
        self.desktop.start("secrets")
        self.assertEqual(self.probe("store", "jeton-1"), "done")
        self.desktop.lock_keyring()
        self.assertEqual(self.probe("find-quietly"), "unreachable: " + LOCKED)
        self.assertEqual(self.probe("find"), "declined: " + LOCKED)  # nobody here shows a dialog
        self.assertEqual(self.probe("store", "jeton-2"), "failed: " + LOCKED)
        self.assertEqual(self.probe("erase"), "failed: " + LOCKED)
        self.desktop.restart("secrets")  # unlocks it, as the user's session does
        self.assertEqual(self.probe("find-quietly"), "found jeton-1")

    def test_a_keyring_that_sleeps_is_given_up(self):
        self.desktop.start("secrets")
        self.assertEqual(self.probe("store", "jeton-1"), "done")
        os.killpg(self.desktop.processes["secrets"].pid, signal.SIGSTOP)
        self.each_fails("le trousseau de clés ne répond pas", "200")
        os.killpg(self.desktop.processes["secrets"].pid, signal.SIGCONT)
        self.assertEqual(self.probe("find"), "found jeton-1")

    def test_without_a_keyring_it_says_so(self):
        for bus in (self.desktop.env["DBUS_SESSION_BUS_ADDRESS"], f"unix:path={self.desktop.folder}/nowhere"):
            self.desktop.env["DBUS_SESSION_BUS_ADDRESS"] = bus
            self.each_fails("aucun trousseau de clés n'est disponible")


class SlowDialog(Bare):
    """The user takes longer than the deadline to type the password."""

    def service(self, answer):
        self.desktop.run(["/usr/bin/python3", "-m", "dbusmock", "--template", Path(__file__).with_name("dialog_keyring.py"),
                          "--parameters", json.dumps({"ending": answer})], "secrets")
        until(lambda: self.desktop.owned("org.freedesktop.secrets"), "the service")

    def test_the_time_in_the_dialog_does_not_count(self):
        self.service("unlocked")
        self.assertEqual(self.probe("find", deadline="2000"), "found jeton-1")

    def test_a_closed_dialog_is_a_refusal(self):
        self.service("dismissed")
        self.assertEqual(self.probe("find", deadline="2000"), "declined: " + LOCKED)


unittest.main()
