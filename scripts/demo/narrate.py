"""Tells what is done, and holds every answer, event and log line against what it ought to be."""

import contextlib
import re
from typing import Any, Callable, NamedTuple, Optional, Sequence, TypeVar, Union

from sandbox.events import Event
from sandbox.log import LogLine
from sandbox.names import SERVICE

from .changes import changes
from .interruption import Interruption
from .merge import Merge
from .phone import BROKEN, UNREADABLE, Phone
from .screen import Screen
from .strip import Strip, show_strips
from .text import Span, width_of
from .words import condensed, contrast, count_of, in_full, in_words

T = TypeVar("T")

STEP_INDENT = 4
REMARKS = {-1: "no room", -2: "refused"}


class Suitable(NamedTuple):
    """An answer that is not known beforehand, but has to be of a kind."""

    what: str
    holds: Callable[[Any], bool]


Events = Union[Sequence[Event], Callable[[Any], Sequence[Event]]]


class Aborted(Exception):
    """It makes no sense to go on."""


class Narrator:
    """Shows one step after the other, and counts what was not as it should be."""

    def __init__(self, screen: Screen, phone: Phone, interruption: Interruption) -> None:
        self._screen = screen
        self._phone = phone
        self._interruption = interruption
        self._steps = 0
        self.checks = 0
        self.faults = 0

    def step(self, title: str) -> None:
        self._steps += 1
        self._screen.write()
        self._screen.show(Span(title, "step"), hang=STEP_INDENT, bullet=Span(f"{self._steps:2}", "step"))

    def table(self, titles: Sequence[str], rows: Sequence[Sequence[str]]) -> None:
        self._screen.write()
        self._screen.table(titles, rows, indent=STEP_INDENT)

    def strips(self, strips: Sequence[Strip]) -> None:
        show_strips(self._screen, strips, indent=STEP_INDENT)

    def changes(self, merge: Merge) -> None:
        """Lists what a merge has changed."""
        self._screen.write()
        groups: dict[str, list[str]] = {}
        for kind, change in changes(merge, self._screen.glyph("answer")):
            groups.setdefault(kind, []).append(change)
        hang = max(map(width_of, groups), default=0) + 2
        for kind, listed in groups.items():
            for bullet, change in zip([kind, *[""] * len(listed)], listed):
                self._screen.show(change, indent=STEP_INDENT, hang=hang, bullet=Span(bullet, "event"))

    # Calls and other doings

    def call(self, method: str, *arguments: Any, subject: str = "", **expected: Any) -> Any:
        """Calls a method of the service; shows the subject in place of the arguments, if there is one."""
        shown = subject or ", ".join(map(in_words, arguments))
        in_python = getattr(self._phone.client, re.sub("[A-Z]", lambda letter: f"_{letter[0].lower()}", method))
        return self.act(f"{method}({shown})", lambda: in_python(*arguments), **expected)

    def act(
        self,
        what: str,
        do: Callable[[], T],
        answer: Any = None,
        events: Events = (),
        errors: Sequence[str] = (),
    ) -> T:
        """Does something and checks what came of it: the answer, the events in order, and the errors in the log."""
        try:
            found = do()
            came = self._phone.take_events()
        except (*BROKEN, *UNREADABLE) as error:
            self._abort(what, str(error))
        loud = self._phone.take_loud_lines()
        self._interruption.check()
        faults = self._faults(found, answer, came, events, loud, errors)
        self._show_call(what, None if answer is None else self._brief(found), not faults)
        self._show_events(came)
        for line in loud:
            self._screen.show(f"log, {line.level or 'no level'}: {line.text}", indent=STEP_INDENT + 2)
        for fault in faults:
            self._show_fault(fault)
        self._end_with_the_dead()
        return found

    def check(self, what: str, holds: bool, fault: Callable[[], str]) -> None:
        """Checks something that is no call."""
        self.checks += 1
        self._show_call(what, None, holds)
        if not holds:
            self._show_fault(fault())

    def _faults(
        self, found: Any, answer: Any, came: list[Event], events: Events, loud: list[LogLine], errors: Sequence[str]
    ) -> list[str]:
        self.checks += 3 if answer is not None else 2
        faults = []
        if isinstance(answer, Suitable):
            if not answer.holds(found):
                faults.append(f"expected {answer.what}, got {in_full(found)}")
        elif answer is not None and (found != answer or type(found) is not type(answer)):
            faults.append(contrast(answer, found))
        due = list(events(found) if callable(events) else events)
        if came != due:
            faults.append(f"events: {contrast(due, came)}")
        wanted = [(SERVICE, "error", text) for text in errors]
        if [(line.name, line.level, line.text) for line in loud] != wanted:
            faults.append(f"log: {contrast(list(errors), [line.text for line in loud])}")
        return faults

    # How it looks

    def _brief(self, found: Any) -> str:
        if isinstance(found, list) and len(found) > 1:
            return count_of(len(found), type(found[0]).__name__.lower())
        remark = REMARKS.get(found) if isinstance(found, int) else None
        return f"{in_words(found)} ({remark})" if remark else in_words(found)

    def _show_call(self, what: str, answer: Optional[str], good: bool) -> None:
        name, opening, rest = what.partition("(")
        answer_words = [] if answer is None else [f" {self._screen.glyph('answer')} ", Span(answer, "call")]
        mark = "good" if good else "bad"
        self._screen.show(
            Span(name, "call"),
            opening + rest,
            *answer_words,
            indent=STEP_INDENT - 2,
            hang=len(self._screen.glyph(mark)) + 1,
            bullet=Span(self._screen.glyph(mark), mark),
        )

    def _show_events(self, events: list[Event]) -> None:
        glyph = self._screen.glyph("event")
        bullet, hang = Span(glyph, "event"), len(glyph) + 1
        for name, content in condensed(events, self._screen.glyph("ellipsis")):
            self._screen.show(Span(f"{name} ", "event"), content, indent=STEP_INDENT, hang=hang, bullet=bullet)

    def _show_fault(self, fault: str) -> None:
        self.faults += 1
        show_fault(self._screen, fault, indent=STEP_INDENT)

    # The end

    def finish(self) -> None:
        """Ends the modules, which have to go in peace."""
        try:
            self._phone.stop()
        except BROKEN as error:
            self._interruption.check()
            self._show_fault(str(error))
        for line in self._phone.take_loud_lines():
            self._show_fault(f"expected no more in the log, got {line.text}")
        self._interruption.check()

    # When it breaks

    def _abort(self, what: str, fault: str) -> None:
        self._interruption.check()
        self._show_call(what, None, False)
        with contextlib.suppress(*UNREADABLE):
            self._show_events(self._phone.events.take_received())
        self._end_with_the_dead()
        self._show_fault(fault)
        raise Aborted

    def _end_with_the_dead(self) -> None:
        deaths = self._phone.deaths()
        self._interruption.check()  # whoever asked us to end may have asked all of us
        for death in deaths:
            self._show_fault(death)
        if deaths:
            raise Aborted


def show_fault(screen: Screen, fault: str, indent: int = 0) -> None:
    """Shows what is wrong, which may take several lines."""
    first, *more = fault.splitlines() or [""]
    screen.show(Span("NOT AS IT SHOULD BE: ", "bad"), first, indent=indent)
    for line in more:
        screen.show(line, indent=indent)
