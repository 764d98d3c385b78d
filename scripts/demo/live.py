"""The phone stays up: how to talk to it from another terminal, and what is said on its bus meanwhile."""

import contextlib
import time
from typing import Any

from gi.repository import GLib

from sandbox.events import EVENT_MEMBER, decode
from sandbox.names import EVENTS, INTERFACE, LIFECYCLE, SERVICE, SETTINGS_MANAGER, bus_name, object_path

from .interruption import Interrupted, Interruption
from .narrate import show_fault
from .phone import UNREADABLE, Phone
from .screen import Screen
from .stage import MODULE_ADDRESS, MODULE_KEY, MODULE_TYPE
from .text import Span
from .words import ON_MODULE, arguments_in_words

LOOK_EVERY_MS = 200
NEW_LIMIT = 4

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

Room for no more than {limit} keys on the set:

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
    """Prints each event as it comes, until somebody ends it."""

    def __init__(self, phone: Phone, screen: Screen, interruption: Interruption) -> None:
        self._phone = phone
        self._screen = screen
        self._interruption = interruption

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
            limit=NEW_LIMIT,
        )
        for line in text.splitlines():
            if line.startswith(" ") or not line:
                self._screen.write(line)  # as it stands, to be copied
            else:
                self._screen.show(Span(line, "dim"))
        self._screen.write()
        self._screen.show(Span("Whatever is said on the bus:", "title"))

    def _watch(self) -> int:
        tick = GLib.timeout_add(LOOK_EVERY_MS, lambda: GLib.SOURCE_CONTINUE)
        try:
            while True:
                GLib.MainContext.default().iteration(True)
                lines, deaths = self._phone.take_loud_lines(), self._phone.deaths()
                self._interruption.check()  # whoever asked us to end may have asked all of us
                for line in lines:
                    self._say(f"{line.name} logs {line.level}: {line.text}")
                for death in deaths:
                    show_fault(self._screen, death)
                if deaths:
                    return 1
                self._forget()
        finally:
            GLib.source_remove(tick)

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
            event = decode(message)
        except UNREADABLE:
            self._say(f"{sender} sends what is no event")
            return
        lead = f"{self._screen.glyph('event')} " if sender == SERVICE else f"{sender} sends "
        self._say(lead, Span(f"{event.name} ", "event"), arguments_in_words(event))
