"""Installs the packages on a bare Debian, uses, upgrades and removes them. A chroot is all it takes: nothing is mounted."""
import datetime
import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
PACKAGES = pathlib.Path(os.environ["TACLA_PACKAGES"])
BASE = PACKAGES.parent / "bare-debian.tar"
VERSION = re.search(r"_([^_]+)_", next(PACKAGES.glob("tacla_*.deb")).name)[1]
# What the terminal tool must not bring to a server.
HEAVY = re.compile(r"^(libqt|qt|libx11|libxcb|libxkb|libgl[0-9v]|libegl|libwayland|x11|systemd|libpam|dbus|font|libdbus)")
DESKTOP = "sudo python3-gi dbus-daemon xvfb xdotool x11-utils openbox dunst at-spi2-core"


def output(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout[-4000:]}")
    return done.stdout


def make_base():
    """A bare Debian from where this machine has its own packages, with this machine's way to reach it."""
    output("apt-get", "update")
    sources = output("apt-get", "indextargets", "--format", "deb $(REPO_URI) $(RELEASE) $(COMPONENT)", "Origin: Debian",
                     "Created-By: Packages")
    reach = [line for line in output("apt-config", "dump").splitlines()
             if re.match(r"Acquire::(https?::|Check-|Retries|ForceIPv)", line)]
    fresh = BASE.with_suffix(".new.tar")
    output("mmdebstrap", "--mode=root", "--variant=minbase", "--skip=chroot/mount,check/canmount",
           "--dpkgopt=force-unsafe-io", *(f"--aptopt={line}" for line in ['Acquire::Languages "none";', *reach]),
           platform.freedesktop_os_release()["VERSION_CODENAME"], str(fresh), "-", input=sources)
    fresh.rename(BASE)


def impossible():
    """Why this machine cannot have a user in a chroot who may use sudo; none when it can."""
    with tempfile.TemporaryDirectory(dir=PACKAGES.parent) as folder:
        for command in (f"mknod {folder}/null c 1 3 && : > {folder}/null", "chroot / true",
                        "! grep NoNewPrivs:.1 /proc/self/status >&2"):
            done = subprocess.run(command, shell=True, capture_output=True, text=True)
            if done.returncode != 0:
                return f"{command}: {done.stderr.strip()}"
    return None


class CleanRoot(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        if not BASE.exists():
            make_base()
        self.root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(dir=PACKAGES.parent, prefix="root-")))
        self.root.chmod(0o755)
        output("tar", "-xpf", str(BASE), "--numeric-owner", "-C", str(self.root))
        for name in ("resolv.conf", "hosts"):
            shutil.copy(f"/etc/{name}", self.root / "etc")
        shutil.copytree(PACKAGES, self.root / "packages", ignore=lambda *_: ["_CPack_Packages"])
        self.inside("apt-get update")

    def inside(self, command, user="0:0", **environment):
        """What a command says that a user runs in the bare Debian."""
        always = {"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive",
                  "HOME": "/home/marie", **{name: value for name, value in os.environ.items() if name.lower().endswith("_proxy")}}
        return output("chroot", f"--userspec={user}", str(self.root), "sh", "-c", command, env=always | environment)

    def installed(self):
        return set(self.inside("dpkg-query --show --showformat='${Package}\\n'").split())

    def install(self, packages):
        """The packages that came with them."""
        before = self.installed()
        self.inside(f"apt-get install --yes --no-install-recommends {packages}")
        return self.installed() - before

    def make_later_version(self):
        for package in PACKAGES.glob("*.deb"):
            with tempfile.TemporaryDirectory() as folder:
                output("dpkg-deb", "--raw-extract", str(package), folder)
                control = pathlib.Path(folder) / "DEBIAN/control"
                control.write_text(control.read_text().replace(VERSION, VERSION + "+later"))
                later = self.root / "packages/later"
                later.mkdir(exist_ok=True)
                output("dpkg-deb", "--root-owner-group", "--build", folder, str(later))

    def test_install_use_upgrade_and_remove(self):
        self.assertEqual([name for name in self.install("/packages/tacla_*.deb") if HEAVY.match(name)], [])
        self.inside("useradd --create-home marie")
        yesterday = datetime.date.today() - datetime.timedelta(1)
        for locale in ({}, {"LANG": "fr_FR.UTF-8"}, {"LC_ALL": "C"}):
            with self.subTest(locale):
                say = self.inside(f"printf -- '- [ ] Été · {yesterday}\\n' > /tmp/list; export TACLA_FILE=/tmp/list\n"
                                  "tacla rename ÉTÉ 'Fête 🎉'; tacla list; tacla done FÊTE; tacla; tacla sync; rm /tmp/list",
                                  "1000:1000", **locale)
                self.assertEqual(say, f"✏️ Été → Fête 🎉\n🔴 Fête 🎉 · {yesterday}\n✅ Fête 🎉\n"
                                 "tacla : l'application de bureau n'est pas installée (paquet tacla-desktop)\n"
                                 "tacla : la recopie dans Google Agenda est désactivée (Réglages de Tacla)\n")

        self.install("/packages/tacla-desktop_*.deb")
        self.assertNotIn("not found", self.inside("ldd /usr/libexec/tacla/* $(find /usr/lib/*/qt6/plugins -name '*.so')"))
        self.assertEqual(self.inside("TACLA_FILE=/dev/null tacla --snapshot /tmp/picture.png", "1000:1000"), "")

        self.install(DESKTOP)
        (self.root / "etc/sudoers.d/marie").write_text("marie ALL = NOPASSWD: ALL\n")
        self.make_later_version()
        for path in ("support/desktop", "EndToEnd", "Packages"):
            shutil.copytree(HERE.parent / path, self.root / "tests" / path)
        print(self.inside("cd; TACLA=/usr/bin/tacla python3 -B /tests/Packages/installed_story.py", "1000:1000"))
        self.assertEqual(self.inside("find /usr /etc /opt /srv /var/lib /var/cache -iregex '.*[/._]tacla[^/]*' ! -name '*.deb'"), "")


if __name__ == "__main__":
    reason = impossible()
    if reason:
        print("skipped, not possible on this machine:", reason)
        sys.exit(77)
    unittest.main(verbosity=2)
