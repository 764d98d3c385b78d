"""The whole show: a phone is set up, what the service does is shown, and everything is taken down again."""

import os
from pathlib import Path

from .interruption import Interrupted, Interruption
from .live import Live
from .merges import Settings
from .narrate import Aborted, Narrator, show_fault
from .phone import BROKEN, Phone
from .scenario import Scenario
from .screen import Screen
from .text import Span
from .words import count_of

CHECKOUT = Path(__file__).resolve().parents[2]
EXAMPLES = CHECKOUT / "examples"
SETTINGS = Settings(EXAMPLES / "settings", EXAMPLES / "settings-next")
DEFAULT_BIN_DIR = CHECKOUT / "build" / "qt5" / "bin"

TITLE = "The programmable keys of a phone, at work"
ABOUT = (
    "An action says what a key does. A key binds an action to a place, on the set or on an add-on module. The service "
    "keeps both, answers calls on D-Bus, and tells everyone of each change and each press by an event. Below: a call"
)


def show(stay_up: bool, interruption: Interruption) -> int:
    """Shows everything, and returns the exit status."""
    screen = Screen()
    try:
        return _show(screen, stay_up, interruption)
    except Interrupted:
        screen.write()
        screen.show(Span("Stopped before the end.", "dim"))
        return interruption.status


def _show(screen: Screen, stay_up: bool, interruption: Interruption) -> int:
    try:
        phone = Phone(Path(os.environ.get("PROGKEYS_BIN_DIR") or DEFAULT_BIN_DIR).resolve(), SETTINGS.first)
    except BROKEN as error:
        interruption.check()
        show_fault(screen, f"there is no phone to show: {error}")
        return 1
    interruption.wake = phone.kill
    try:
        return _show_on(phone, screen, stay_up, interruption)
    except BROKEN as error:
        interruption.check()
        show_fault(screen, str(error))
        return 1
    finally:
        phone.close()


def _show_on(phone: Phone, screen: Screen, stay_up: bool, interruption: Interruption) -> int:
    screen.show(Span(TITLE, "title"))
    answer, event = screen.glyph("answer"), screen.glyph("event")
    screen.show(Span(f"{ABOUT} {answer} its answer, and after {event} each event that came of it.", "dim"))
    narrator = Narrator(screen, phone, interruption)
    try:
        Scenario(phone, narrator, SETTINGS).run()
        if not stay_up or narrator.faults:
            narrator.finish()
    except Aborted:
        screen.write()
        screen.show(Span("It makes no sense to go on.", "bad"))
    screen.write()
    if narrator.faults:
        times = count_of(narrator.faults, "time")
        screen.show(Span(f"NOT AS IT SHOULD BE: {times}, see above.", "bad"))
        return 1
    screen.show(Span(f"All was as it should be, in {narrator.checks} checks of answers, events and log.", "good"))
    return Live(phone, screen, interruption).run() if stay_up else 0
