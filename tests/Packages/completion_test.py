"""Completion in the three shells, typed into a real one: what the program is then called with."""
import contextlib
import datetime
import os
import pathlib
import pty
import tempfile
import unittest

COMPLETIONS = pathlib.Path(__file__).resolve().parents[2] / "packaging" / "completions"
SHELLS = {
    "bash": (["bash", "--norc", "--noprofile", "-i"], f". {COMPLETIONS}/tacla.bash"),
    "zsh": (["zsh", "-f", "-i"], f"fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -u -D"),
    "fish": (["fish", "--no-config", "-i"], f"source {COMPLETIONS}/tacla.fish"),
}
TITLES = ["Appeler le garage", "❗ Payer l'eau", 'Dire "merci" à tous', "Fêter 🎉 ses *40 ans* & $HOME `id`", "🎁 pour Zoé",
          "C:\\temp [x] <b>gras</b> #1 ~ !"]
# What is typed before the tab, and what the program is then called with.
CALLS = {"l": ["list"], "do": ["done"], "done app": ["done", TITLES[0]], "done Appeler\\ l": ["done", TITLES[0]],
         "rename pay": ["rename", "Payer l'eau"], "done Dire": ["done", TITLES[2]], "done 'dire": ["done", TITLES[2]],
         "done fê": ["done", TITLES[3]], 'done "Fê': ["done", TITLES[3]], "done 🎁": ["done", TITLES[4]],
         "done c": ["done", TITLES[5]], "done 'C": ["done", TITLES[5]], "list app": ["list", "app"]}


def typed(shell, lines, environment):
    """Types the lines into the shell, which the last of them ends."""
    process, terminal = pty.fork()
    if process == 0:
        os.execvpe(shell[0], shell, environment)
    os.write(terminal, "".join(line + "\r" for line in lines).encode())
    with contextlib.suppress(OSError):  # the shell is gone
        while os.read(terminal, 65536):
            pass
    os.close(terminal)
    os.waitpid(process, 0)


class Completion(unittest.TestCase):
    maxDiff = None

    def test_offers_commands_and_titles_and_runs_nothing_but_list(self):
        for name, (shell, prepare) in SHELLS.items():
            with self.subTest(name), tempfile.TemporaryDirectory() as name:
                folder = pathlib.Path(name)
                today = datetime.date.today()
                (folder / "taches.md").write_text("".join(f"- [ ] {title} · {today} 08:00 · due {today}\n" for title in TITLES))
                (folder / "tacla").write_text(f'#!/bin/sh\nprintf "%s\\0" "$@" . >> {folder}/calls\n'
                                              '[ "$1" != list ] || exec "$TACLA" list\n')
                (folder / "tacla").chmod(0o700)
                typed(shell, [prepare, *(f"tacla {line}\t" for line in CALLS), "exit"],
                      {"PATH": f"{folder}:/usr/bin:/bin", "HOME": name, "TERM": "dumb", "LC_ALL": "C.UTF-8",
                       "TACLA": os.environ["TACLA"], "TACLA_FILE": f"{folder}/taches.md"})
                calls = [call.split("\0") for call in (folder / "calls").read_text().split("\0.\0")[:-1]]
                asked = [[["list"]] if len(call) == 2 and call[0] != "list" else [] for call in CALLS.values()]
                self.assertEqual(calls, [one for before, call in zip(asked, CALLS.values()) for one in (*before, call)])


unittest.main(verbosity=2)
