"""A real browser without a screen, used as a user does: by what can be read on its page. Speaks over its debugging pipe."""
import json
import os
import subprocess

from .desktop import until

OPTIONS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-sync --disable-background-networking "
           "--disable-component-update --remote-debugging-pipe")

# The middle of what bears that name, once it is there.
FIND = """(name => { for (const seen of document.querySelectorAll('a, button, summary, label')) {
    const place = seen.getBoundingClientRect();
    if (seen.checkVisibility() && seen.innerText.trim() === name)
        return {x: place.x + place.width / 2, y: place.y + place.height / 2}; } })(%s)"""


class Browser:
    def __init__(self, desktop, downloads):
        (read, self.out), (self.into, write) = os.pipe(), os.pipe()
        command = f"exec chromium {OPTIONS} --user-data-dir={desktop.folder}/browser 3<&{read} 4>&{write}"
        with open(desktop.folder / "log/browser", "ab") as log:
            desktop.processes["browser"] = subprocess.Popen(["bash", "-c", command], env=desktop.env, pass_fds=(read, write),
                                                            stdout=log, stderr=log, start_new_session=True)
        os.close(read), os.close(write)
        self.count, self.rest, self.session = 0, b"", {}
        self.call("Browser.setDownloadBehavior", behavior="allow", downloadPath=str(downloads))
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = {"sessionId": self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]}

    def call(self, method, **params):
        self.count += 1
        os.write(self.out, json.dumps({"id": self.count, "method": method, "params": params, **self.session}).encode() + b"\0")
        while True:
            while b"\0" not in self.rest:
                piece = os.read(self.into, 65536)
                assert piece, "the browser is gone"
                self.rest += piece
            text, _, self.rest = self.rest.partition(b"\0")
            if json.loads(text).get("id") == self.count:
                return json.loads(text).get("result", {})

    def evaluate(self, expression):
        return self.call("Runtime.evaluate", expression=expression, returnByValue=True).get("result", {}).get("value")

    def open(self, address):
        self.call("Page.navigate", url=address)

    def see(self, text):
        until(lambda: text in (self.evaluate("document.title + document.body.innerText") or ""), f"{text!r} in the browser")

    def click(self, name):
        place = until(lambda: self.evaluate(FIND % json.dumps(name)), f"{name!r} in the browser")
        for event in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=event, button="left", clickCount=1, **place)

    def press_return(self):
        for event in ("rawKeyDown", "char", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=event, key="Enter", text="\r", windowsVirtualKeyCode=13)

    def type(self, label, text):
        self.click(label)
        self.call("Input.insertText", text=text)
