"""The phone stays up: how to talk to it from another terminal, and what is said on its bus meanwhile."""

import contextlib
import itertools
import time
from typing import Any, Optional

from gi.repository import GLib

from sandbox.events import EVENT_MEMBER, Event, decode
from sandbox.names import EVENTS, INTERFACE, LIFECYCLE, SERVICE, SETTINGS_MANAGER, bus_name, object_path

from .interruption import Interrupted, Interruption
from .narrate import show_fault
from .phone import UNREADABLE, Phone
from .screen import Screen
from .stage import MODULE_ADDRESS, MODULE_KEY, MODULE_TYPE
from .text import Span
from .words import ON_MODULE, ON_SET, condensed

LOOK_EVERY_MS = 200

COMMANDS = r"""
Once, for the commands below:

  export DBUS_SYSTEM_BUS_ADDRESS={address}
  progkeys() {{
    gdbus call --system --dest {service} \
      --object-path {service_path} \
      --method {interface}."$@"
  }}

What there is:

  progkeys getAllActions
  progkeys getAllProgrammableKeys

A new action, and key {number} of the module for it (it is action {action} if it is the first one added):

  progkeys addAction \
    "(int64 -1, '', 1, 'call', '', '512', 'Workshop', 'Work')"
  progkeys createProgrammableKey \
    "(int64 -1, '', int64 {action}, 'module1', {number}, 'tool', {on_module}, {kind}, {addr})"

A press of that key:

  gdbus emit --system --object-path {module_path} \
    --signal {events}.event "'AOM_KEY_PRESS_EVENT'" \
    "[('aom_key_num', <{number}>, true), ('aom_type', <{kind}>, true), ('addr', <{addr}>, true)]"

Room for no more keys on the set than there are:

  gdbus call --system --dest {settings} \
    --object-path {settings_path} \
    --method {interface}.setSettingValue ProgKeysMax "'{limit}'"

Everything as on the first day, apart from settings:

  gdbus call --system --dest {service} \
    --object-path {service_path} \
    --method {lifecycle}.restoreDefault

The events, there too:

  gdbus monitor --system --dest {service}
"""


class Live:
    """Prints the events that come, until somebody ends it."""

    def __init__(self, phone: Phone, screen: Screen, interruption: Interruption) -> None:
        self._phone = phone
        self._screen = screen
        self._interruption = interruption
        self._heard: list[tuple[str, Optional[Event]]] = []
        self._time_to_look = False

    def run(self) -> int:
        """Returns the exit status: being ended is the normal way out, a process that dies is not."""
        try:
            self._explain()
            self._phone.client.connection.add_signal_receiver(
                self._event, EVENT_MEMBER, EVENTS, message_keyword="message"
            )
            return self._watch()
        except Interrupted:
            self._screen.write()
            return 0

    def _explain(self) -> None:
        self._screen.write()
        self._screen.show(Span("The phone stays up until Ctrl-C. To talk to it from another terminal:", "title"))
        highest = max(action.idAction for action in self._phone.client.get_all_actions())
        text = COMMANDS.format(
            address=self._phone.address,
            service=bus_name(SERVICE),
            service_path=object_path(SERVICE),
            settings=bus_name(SETTINGS_MANAGER),
            settings_path=object_path(SETTINGS_MANAGER),
            module_path=object_path("AddOnModule"),
            interface=INTERFACE,
            lifecycle=LIFECYCLE,
            events=EVENTS,
            action=max(highest, 0) + 1,
            number=MODULE_KEY,
            kind=MODULE_TYPE,
            addr=MODULE_ADDRESS,
            on_module=ON_MODULE,
            limit=sum(key.type == ON_SET for key in self._phone.client.get_all_programmable_keys()),
        )
        for line in text.splitlines():
            if line.startswith(" ") or not line:
                self._screen.write(line)  # as it stands, to be copied
            else:
                self._screen.show(Span(line, "dim"))
        self._screen.write()
        self._screen.show(Span("Whatever is said on the bus:", "title"))

    def _watch(self) -> int:
        tick = GLib.timeout_add(LOOK_EVERY_MS, self._tick)
        try:
            while True:
                GLib.MainContext.default().iteration(True)
                self._interruption.check()
                if not self._time_to_look:
                    continue
                self._time_to_look = False
                lines, deaths = self._phone.take_loud_lines(), self._phone.deaths()
                self._interruption.check()  # whoever asked us to end may have asked all of us
                self._tell_heard()
                for line in lines:
                    self._say(f"{line.name} logs {line.level}: {line.text}")
                for death in deaths:
                    show_fault(self._screen, death)
                if deaths:
                    return 1
                self._forget()
        finally:
            GLib.source_remove(tick)

    def _tick(self) -> bool:
        self._time_to_look = True
        return GLib.SOURCE_CONTINUE

    def _forget(self) -> None:
        """The events recorded for checks are of no use any more."""
        with contextlib.suppress(*UNREADABLE):
            self._phone.events.take_received()

    def _say(self, *words: "Span | str") -> None:
        now = time.strftime("%H:%M:%S")
        self._screen.show(*words, hang=len(now) + 2, bullet=Span(now, "dim"))

    def _event(self, *_arguments: Any, message: Any) -> None:
        sender = str(message.get_path()).rsplit("/", 1)[-1]
        try:
            self._heard.append((sender, decode(message)))
        except UNREADABLE:
            self._heard.append((sender, None))

    def _tell_heard(self) -> None:
        """What came since the last look: of one sender together, so that a merge does not flood the screen."""
        for sender, group in itertools.groupby(self._heard, lambda heard: heard[0]):
            lead = f"{self._screen.glyph('event')} " if sender == SERVICE else f"{sender} sends "
            events = [event for _, event in group]
            for name, content in condensed([event for event in events if event], self._screen.glyph("ellipsis")):
                self._say(lead, Span(f"{name} ", "event"), content)
            for _ in range(events.count(None)):
                self._say(f"{sender} sends what is no event")
        self._heard.clear()
