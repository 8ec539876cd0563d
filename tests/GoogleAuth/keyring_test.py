"""Drives keyring_probe against gnome-keyring, and against a service with a slow dialog, each on a bus of its own.

    keyring_test.py PATH_OF_KEYRING_PROBE
"""
import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROBE = sys.argv.pop(1)
SERVICE = "fr.dravel.Essai.google"
LOCKED = "le trousseau de clés est verrouillé"

# No service directory: nothing is started that the test did not start.
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:dir={folder}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>"""


class Desktop(unittest.TestCase):
    """A session bus, and what the test starts on it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tacla-keyring-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in ("data", "config", "cache", "runtime/keyring"):
            (self.folder / name).mkdir(mode=0o700, parents=True)
        (self.folder / "runtime").chmod(0o700)
        (self.folder / "bus.conf").write_text(BUS.format(folder=self.folder))
        bus = self.start(["dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork", "--print-address"],
                         stdout=subprocess.PIPE, env=os.environ)
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": str(self.folder), "LC_ALL": "C.UTF-8",
            "DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().decode().strip(),
            "XDG_DATA_HOME": str(self.folder / "data"), "XDG_CONFIG_HOME": str(self.folder / "config"),
            "XDG_CACHE_HOME": str(self.folder / "cache"), "XDG_RUNTIME_DIR": str(self.folder / "runtime")}

    def start(self, command, env=None, **options):
        process = subprocess.Popen(command, env=env or self.environment, stderr=subprocess.DEVNULL, **options)

        def end():
            process.kill()
            process.wait()
            for stream in (process.stdin, process.stdout):
                if stream:
                    stream.close()
        self.addCleanup(end)
        return process

    def call(self, command, text=""):
        return subprocess.run(command, env=self.environment, input=text.encode(), stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, timeout=60, check=False).stdout.decode().strip()

    def probe(self, command, secret="", deadline="5000"):
        return self.call([PROBE, command, SERVICE, deadline], secret)

    def gdbus_wait(self):
        subprocess.run(["gdbus", "wait", "--session", "--timeout", "30", "org.freedesktop.secrets"],
                       env=self.environment, check=True)


class RealKeyring(Desktop):
    def keyring(self):
        daemon = self.start(["gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets",
                             f"--control-directory={self.folder}/runtime/keyring"],
                            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
        daemon.stdin.write(b"\n")
        daemon.stdin.close()
        self.gdbus_wait()
        return daemon

    def tool(self, command, *arguments):
        return self.call(["secret-tool", command, *arguments, "service", SERVICE, "account", "refresh-token"])

    def lock(self):
        self.call(["secret-tool", "lock", "--collection=login"])

    def test_the_token_is_there_for_everybody_to_see_until_it_is_erased(self):
        daemon = self.keyring()
        self.assertEqual(self.probe("find"), "absent")
        self.assertEqual(self.probe("store", "jeton-1"), "done")
        self.assertEqual(self.tool("lookup"), "jeton-1")
        self.assertIn("label = Essai", self.tool("search"))
        daemon.kill()
        daemon.wait()
        self.keyring()
        self.assertEqual(self.probe("find-quietly"), "found jeton-1")
        self.assertEqual(self.probe("erase"), "done")
        self.assertEqual(self.tool("lookup"), "")
        self.assertEqual(self.probe("erase"), "done")

    def test_one_item_is_left_whoever_made_the_others(self):
        self.keyring()
        for secret in ("jeton-1", "jeton-2"):
            self.assertEqual(self.probe("store", secret), "done")
        self.call(["secret-tool", "store", "--label=Autre", "service", SERVICE, "account", "refresh-token",
                   "par", "un autre"], "jeton-3")
        self.assertEqual(self.probe("store", "jeton-4"), "done")
        self.assertEqual(self.tool("search", "--all").count("secret = "), 1)
        self.assertEqual(self.probe("find"), "found jeton-4")

    def test_a_locked_keyring_is_not_an_empty_one(self):
        daemon = self.keyring()
        self.assertEqual(self.probe("store", "jeton-1"), "done")
        self.lock()
        self.assertEqual(self.probe("find-quietly"), "unreachable: " + LOCKED)
        self.assertEqual(self.probe("find"), "declined: " + LOCKED)  # nobody here shows a dialog
        self.assertEqual(self.probe("store", "jeton-2"), "failed: " + LOCKED)
        self.assertEqual(self.probe("erase"), "failed: " + LOCKED)
        daemon.kill()
        daemon.wait()
        self.keyring()  # unlocks it, as the user's session does
        self.assertEqual(self.probe("find-quietly"), "found jeton-1")

    def test_a_keyring_that_sleeps_is_given_up(self):
        daemon = self.keyring()
        self.assertEqual(self.probe("store", "jeton-1"), "done")
        daemon.send_signal(signal.SIGSTOP)
        for command, answer in (("find", "unreachable"), ("store", "failed"), ("erase", "failed")):
            self.assertEqual(self.probe(command, "jeton-2", "200"), answer + ": le trousseau de clés ne répond pas")
        daemon.send_signal(signal.SIGCONT)
        self.assertEqual(self.probe("find"), "found jeton-1")

    def test_without_a_keyring_it_says_so(self):
        for command, answer in (("find", "unreachable"), ("store", "failed"), ("erase", "failed")):
            self.assertEqual(self.probe(command, "jeton"), answer + ": aucun trousseau de clés n'est disponible")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.folder}/nowhere"
        self.assertEqual(self.probe("find"), "unreachable: aucun trousseau de clés n'est disponible")


class SlowDialog(Desktop):
    """The user takes longer than the deadline to type the password."""

    def service(self, answer):
        process = self.start([sys.executable, str(Path(__file__).with_name("dialog_keyring.py")), answer])
        self.gdbus_wait()
        return process

    def test_the_time_in_the_dialog_does_not_count(self):
        self.service("unlocked")
        self.assertEqual(self.probe("find", deadline="2000"), "found jeton-1")

    def test_a_closed_dialog_is_a_refusal(self):
        self.service("dismissed")
        self.assertEqual(self.probe("find", deadline="2000"), "declined: " + LOCKED)


unittest.main()
