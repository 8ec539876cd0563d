"""A wall clock of the program's own, which the test sets; the monotonic one goes on."""
import datetime


class Clock:
    def __init__(self, desktop, moment):
        self.file = desktop.folder / "clock"
        self.environment = {"LD_PRELOAD": "/usr/$LIB/faketime/libfaketimeMT.so.1", "FAKETIME_TIMESTAMP_FILE": str(self.file),
                            "FAKETIME_NO_CACHE": "1", "FAKETIME_DONT_FAKE_MONOTONIC": "1", "FAKETIME_FMT": "%s", "NO_FAKE_STAT": "1"}
        self.set(moment)

    def set(self, moment):
        """From now on it is that moment, "2026-03-10 09:59:58" in the zone of the test, and time goes on."""
        fresh = self.file.with_suffix(".new")
        fresh.write_text(f"@{datetime.datetime.fromisoformat(moment).timestamp():.0f}\n")
        fresh.rename(self.file)
