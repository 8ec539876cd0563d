"""A real desktop without a screen, made of real parts on private buses, for one test program."""
from .browser import Browser
from .bubbles import Bubbles
from .clock import Clock
from .desktop import Desktop, until
from .google import Google
from .portal import Portal
from .screen import Reader, Screen
from .tray import Tray

__all__ = ["Browser", "Bubbles", "Clock", "Desktop", "Google", "Portal", "Reader", "Screen", "Tray", "until"]
