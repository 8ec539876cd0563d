"""The stand-in for Google as a test starts it, sets it up and looks into it."""
import json
import pathlib
import subprocess
import urllib.request

STAND_IN = pathlib.Path(__file__).parents[3] / "scripts/google_stand_in.py"


class Google:
    """with Google() as google: … google.give_account(data_folder) … google.events()"""

    def __init__(self, *options):
        self.command = ["/usr/bin/python3", STAND_IN, "--until-eof", *options]

    def __enter__(self):
        self.process = subprocess.Popen(self.command, text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.base = self.process.stdout.readline().strip()
        return self

    def __exit__(self, *error):
        self.process.__exit__(*error)  # closes its input, and waits for its end

    def ask(self, path, order=None):
        data = None if order is None else json.dumps(order).encode()
        with urllib.request.urlopen(self.base + path, data, timeout=20) as answer:
            return json.load(answer)

    def fault(self, **fault):
        self.ask("/control", {"faults": [fault]})

    def give_client(self, folder):
        folder.mkdir(parents=True)
        (folder / "client.json").write_text(json.dumps(self.ask("/control/client")))

    def give_account(self, folder):
        """The client, and the token of an account that agreed."""
        self.give_client(folder)
        grant = self.ask("/control", {"grant": "https://www.googleapis.com/auth/calendar.app.created"})
        (folder / "token.json").write_text(json.dumps(grant))

    def events(self):
        """Titles and identifiers of the events in all calendars."""
        calendars = self.ask("/control/state?calendars").values()
        return {event["summary"]: event["id"] for calendar in calendars for event in calendar["events"].values()
                if event["status"] != "cancelled"}
