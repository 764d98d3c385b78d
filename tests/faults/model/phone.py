"""A whole phone of a run's own: bus, client, settings and the service, in one directory."""

import os
import sqlite3
from contextlib import ExitStack, closing
from pathlib import Path
from typing import Any, Mapping, Optional

import dbus

from database import Database
from hostile import LONG_MAX
from model.steps import (
    PRESS,
    PROPERLY,
    RESTART,
    SETTING,
    SETTINGS_MANNER,
    WITH_ERRORS,
    Outcome,
    Step,
)
from operations import HOOKS, METHODS, Operation
from replaying import CHECKOUT
from sandbox.bus import PrivateBus
from sandbox.client import Client, PendingReply
from sandbox.events import EventRecorder
from sandbox.log import parse_log
from sandbox.names import SERVICE, UNKNOWN_SETTING, object_path
from sandbox.processes import Module, start_service
from sandbox.records import Action, Key
from sandbox.settings import NO_DEFAULTS, FakeSettingsManager

FIRST_SETTINGS = {**NO_DEFAULTS, "ProgKeysMax": "30"}
PRESS_EVENT = "AOM_KEY_PRESS_EVENT"
NUMBERS_ON_THE_WIRE = {
    "y": dbus.Byte,
    "n": dbus.Int16,
    "q": dbus.UInt16,
    "i": dbus.Int32,
    "u": dbus.UInt32,
    "x": dbus.Int64,
    "t": dbus.UInt64,
    "d": dbus.Double,
    "s": dbus.String,
}


class RepeatableId(int):
    """A key of a dictionary that stands beside others of the same value."""

    __hash__ = int.__hash__

    def __eq__(self, other: object) -> bool:
        return self is other


def bin_dir_of_this_run() -> Path:
    return Path(os.environ.get("PROGKEYS_BIN_DIR", CHECKOUT / "build/qt5/bin")).resolve()


def operation_of(step: Step) -> Optional[Operation]:
    """What is called by a step of this name with as many values; None if nothing is called."""
    for operation in (*METHODS, *HOOKS):
        if operation.name == step.name and _arity(operation.takes) == len(step.values):
            return operation
    return None


def _arity(signature: str) -> int:
    return len(list(dbus.Signature(signature)))


def _on_the_wire(value: Any) -> Any:
    """The value as the bus library sends it: pairs as a dictionary, which keeps their order."""
    if isinstance(value, list):
        return {RepeatableId(id_key): position for id_key, position in value}
    return value


class GrowingLog:
    """The lines that are new in a log file since it was last asked."""

    def __init__(self, path: Path) -> None:
        path.touch()
        self._file = open(path, "rb")

    def close(self) -> None:
        self._file.close()

    def take(self) -> list[tuple[str, str]]:
        """The level and the text of each line."""
        written = self._file.read().decode("utf-8", errors="surrogateescape")
        return [(line.level, line.text) for line in parse_log(written)]


class Tables:
    """The stored rows, read by a connection that is kept."""

    def __init__(self, path: Path) -> None:
        self._connection = sqlite3.connect(f"file:{path}?mode=ro", uri=True)
        self._version = -1

    def close(self) -> None:
        self._connection.close()

    def were_written(self) -> bool:
        """Whether anybody has written since this was last asked."""
        before, self._version = self._version, self._value("PRAGMA data_version")
        return self._version != before

    def rows(self) -> tuple[list[Key], list[Action]]:
        """Both tables in the order of their ids."""
        keys = self._select(f"{', '.join(Key._fields)} FROM KEY ORDER BY idKey")
        actions = self._select(f"{', '.join(Action._fields)} FROM ACTION ORDER BY idAction")
        return [Key(*row) for row in keys], [Action(*row) for row in actions]

    def _select(self, what: str) -> list[tuple[Any, ...]]:
        return self._connection.execute(f"SELECT {what}").fetchall()

    def _value(self, statement: str) -> int:
        with closing(self._connection.execute(statement)) as cursor:
            return cursor.fetchone()[0]


class Phone:
    """The phone, its service ready; what the first start sent and logged is still to be taken."""

    def __init__(
        self,
        bin_dir: Path,
        directory: Path,
        log_level: int = 7,
        environment: Optional[Mapping[str, str]] = None,
    ) -> None:
        directory.mkdir(exist_ok=True)
        self.data_root = directory / "data"
        self.database = Database(self.data_root / SERVICE / "zelprogrammablekeys.data")
        self._bin_dir = bin_dir
        self._log_level = log_level
        self._environment = environment
        self._log_path = directory / "service.log"
        with ExitStack() as stack:
            self.bus = stack.enter_context(PrivateBus())
            self.client = stack.enter_context(closing(Client(self.bus.address)))
            self.settings = FakeSettingsManager(self.bus.address, FIRST_SETTINGS)
            stack.enter_context(closing(self.settings))
            self.events = EventRecorder(self.client, object_path(SERVICE))
            self.log = stack.enter_context(closing(GrowingLog(self._log_path)))
            self.service = self._started()
            stack.callback(lambda: self.service.kill())
            self.service.wait_until_ready(self.client)
            self.tables = Tables(self.database.path)
            stack.callback(lambda: self.tables.close())
            self._everything = stack.pop_all()

    def _started(self) -> Module:
        return start_service(
            self._bin_dir,
            self.bus.address,
            self.data_root,
            self._log_path,
            self._log_level,
            self._environment,
        )

    def __enter__(self) -> "Phone":
        return self

    def __exit__(self, *_exception: object) -> None:
        self._everything.close()

    # Steps

    def perform(self, step: Step) -> Outcome:
        """Does the step and tells everything that was seen of it."""
        return self.seen(self._do(step))

    def seen(self, reply: Any = None) -> Outcome:
        """What was sent, logged and asked for since the last step."""
        settings_read = self.settings.names_read()
        self.settings.calls.clear()
        return Outcome(reply, self.events.take_received(), self.log.take(), settings_read)

    def forget_what_was_seen(self) -> None:
        """Lets go of what was sent and asked for, where there is too much of it to look at."""
        self.settings.calls.clear()
        self.events.take_received()

    def _do(self, step: Step) -> Any:
        operation = operation_of(step)
        if operation is not None:
            return self.value(operation, self.send(operation, step))
        if step.name == PRESS:
            self.press(step)
            self.client.round_trip()
        elif step.name == SETTING:
            self._set(*step.values)
        elif step.name == SETTINGS_MANNER:
            self._behave(*step.values)
        else:
            assert step.name == RESTART, step
            self._restart()
        return None

    def send(self, operation: Operation, step: Step) -> PendingReply:
        """Calls without waiting for the reply."""
        where = {"interface": operation.interface}
        values = map(_on_the_wire, step.values)
        return self.client.send(operation.name, operation.takes, *values, **where)

    def value(self, operation: Operation, reply: PendingReply) -> Any:
        """What a call was answered with, held to the signature that it must have."""
        signature, values = reply.wait()
        assert signature == operation.returns, f"{operation.name} returned {signature!r}"
        return values[0] if values else None

    def press(self, step: Step) -> None:
        """Sends the event and waits for nothing."""
        arguments = [
            (name, NUMBERS_ON_THE_WIRE[signature](value), True)
            for name, signature, value in step.values
        ]
        self.client.send_raw_event("sa(svb)", PRESS_EVENT, arguments)

    def _set(self, name: str, text: Optional[str]) -> None:
        self.settings.values[name] = text
        if text is None:
            del self.settings.values[name]

    def _behave(self, manner: str) -> None:
        if manner == PROPERLY:
            self.settings.answer_properly()
        elif manner == WITH_ERRORS:
            self.settings.fail(UNKNOWN_SETTING)
        else:
            self.settings.answer_with("x", LONG_MAX)

    def _restart(self) -> None:
        self.tables.close()
        self.service.stop()
        self.service = self._started()
        self.service.wait_until_ready(self.client)
        self.tables = Tables(self.database.path)
        self.client.round_trip()
