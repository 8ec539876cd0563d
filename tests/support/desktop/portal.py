"""The desktop's portal: the real one of freedesktop.org, before a desktop of ours that answers what the story wants."""
import json
import pathlib

from gi.repository import GLib

from .desktop import until

NAME, PATH, IMPL = "org.freedesktop.impl.portal.desktop.essai", "/org/freedesktop/portal/desktop", "org.freedesktop.impl.portal."
BACKEND = pathlib.Path(__file__).resolve().parents[1] / "portal_backend.py"


class Portal:
    """with its answers: what each method shall say, by its name; `heard` is what it was asked."""

    def __init__(self, desktop, *interfaces, **environment):
        self.desktop, self.environment, folder = desktop, environment, desktop.folder / "portal"
        folder.mkdir()
        offered = ";".join(IMPL + interface for interface in interfaces)
        (folder / "essai.portal").write_text(f"[portal]\nDBusName={NAME}\nInterfaces={offered};\nUseIn=XFCE\n")
        config = desktop.folder / "home/.config/xdg-desktop-portal"
        config.mkdir()
        (config / "portals.conf").write_text("[preferred]\ndefault=essai\n")
        self.answers, self._heard = folder / "answers", folder / "heard"
        self._heard.write_text("")
        self.answer()
        desktop.offer_service("org.freedesktop.impl.portal.PermissionStore", "/usr/libexec/xdg-permission-store")
        desktop.run(["/usr/bin/python3", str(BACKEND), str(self.answers), str(self._heard), *interfaces], "portal of the desktop")
        until(lambda: desktop.owned(NAME), "the desktop behind the portal")
        self.start()

    def start(self):
        self.desktop.run(["/usr/libexec/xdg-desktop-portal"], "portal",
                         XDG_DESKTOP_PORTAL_DIR=str(self.desktop.folder / "portal"), **self.environment)
        until(lambda: self.desktop.owned("org.freedesktop.portal.Desktop"), "the portal")

    def restart(self):
        self.desktop.stop("portal")
        self.start()

    def answer(self, **results):
        self.answers.write_text(json.dumps(results))

    def heard(self):
        return [json.loads(line) for line in self._heard.read_text().splitlines()]

    def tell(self, member, kinds, *values):
        """What the desktop says to the portal, about the session that it made last."""
        self.desktop.call(NAME, PATH, "fr.essai.Portal", "Tell", GLib.Variant("(sv)", (member, GLib.Variant(kinds, values))))
