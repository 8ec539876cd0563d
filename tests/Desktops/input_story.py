"""Input methods under X11: dead keys, and Chinese through Fcitx and IBus, typed with real keys into a new task."""
import subprocess

from everywhere import NAME, PICTURES, Desktop, main, until
from story import Story

PINYIN = """[Groups/0]
Name=Default
Default Layout=us
DefaultIM=pinyin
[Groups/0/Items/0]
Name=pinyin
Layout=
[GroupOrder]
0=Default
"""


class Typed(Story):
    says = "(?s:.*)"

    def make_desktop(self):
        return Desktop(without=("secrets", "notify", "logind", "panel"))

    def open_field(self, **variables):
        self.launch(**variables)
        until(lambda: self.desktop.owned(NAME), "the program")
        self.run_tacla()
        self.field = self.screen.wait("Nouvelle tâche")
        until(lambda: "focused" in self.field.states, "the field to have the focus")

    def until_choosing(self, commands, wanted):
        until(lambda: wanted in subprocess.run(commands, shell=True, env=self.desktop.env, capture_output=True, text=True,
                                               check=False).stdout, f"{wanted} by {commands}")

    def picture(self, name):
        if PICTURES:
            from PIL import ImageGrab
            ImageGrab.grab(xdisplay=self.desktop.env["DISPLAY"]).save(f"{PICTURES}-{name}.png")

    def writes_chinese(self, name):
        """The letters are the input method's until it is told which signs they stand for."""
        self.screen.key(*"nihao")
        self.screen.key("space")
        until(lambda: self.field.text == "你好", f"the signs, not {self.field.text!r}")
        self.picture(name)
        self.screen.key("Return")
        until(lambda: self.file.exists() and "- [ ] 你好 ·" in self.file.read_text(), "the task")


class DeadKeys(Typed):
    def test_make_one_letter(self):
        subprocess.run(["setxkbmap", "fr"], env=self.desktop.env, check=True)
        self.open_field()
        self.screen.key("dead_circumflex", "e", "dead_diaeresis", "i", "Return")
        until(lambda: self.file.exists() and "- [ ] êï ·" in self.file.read_text(), "the task")


class Fcitx(Typed):
    def test_writes_chinese(self):
        profile = self.home / ".config/fcitx5/profile"
        profile.parent.mkdir()
        profile.write_text(PINYIN)
        self.desktop.run(["fcitx5"], "fcitx")
        until(lambda: self.desktop.owned("org.fcitx.Fcitx5"), "Fcitx")
        self.open_field(QT_IM_MODULE="fcitx")
        self.until_choosing("fcitx5-remote -o; fcitx5-remote -s pinyin; fcitx5-remote -n", "pinyin")
        self.writes_chinese("fcitx")


class Ibus(Typed):
    def test_writes_chinese(self):
        self.desktop.run(["sh", "-c", "ibus-daemon --panel disable; true"], "ibus")  # it ends where its parent is process 1
        until(lambda: self.desktop.owned("org.freedesktop.IBus"), "IBus")
        self.open_field(QT_IM_MODULE="ibus")
        self.until_choosing("ibus engine libpinyin; ibus engine", "libpinyin")
        self.writes_chinese("ibus")


main()
