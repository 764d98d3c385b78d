"""A conversation with one server, and the transcript of it."""

from contextlib import contextmanager
from typing import Any, Callable, Iterator, NamedTuple, Optional, Protocol, Union

from database import Database, Fault
from sandbox.client import Client, Reply
from sandbox.events import Event, EventRecorder
from sandbox.names import SERVICE, object_path
from sandbox.records import ACTION, KEY, Action, Key

PRESS = "AOM_KEY_PRESS_EVENT"


class Settings(Protocol):
    """What a chapter does to the settings, and who counts how often they are read."""

    def write(self, name: str, value: str) -> None:
        ...

    def remove(self, name: str) -> None:
        ...

    def leave(self) -> None:
        ...

    def take_calls(self) -> Optional[list[Any]]:
        ...


class Step(NamedTuple):
    """One thing done, and all that came of it."""

    name: str
    arguments: tuple[Any, ...]
    heard: list[Union[Reply, Event]]
    """The reply and the events, in the order in which they came."""
    settings_calls: Optional[list[Any]]
    """What the settings peer was asked; None where nobody counted."""
    keys: list[Key]
    actions: list[Action]

    @property
    def reply(self) -> Optional[Reply]:
        return next((heard for heard in self.heard if isinstance(heard, Reply)), None)

    @property
    def events(self) -> list[Event]:
        return [heard for heard in self.heard if isinstance(heard, Event)]

    def __str__(self) -> str:
        return f"{self.name}{self.arguments}"


class Caller(Client):
    """A client of servers that offer keys and actions, and no more."""

    def round_trip(self) -> None:
        self.get_action(-1)


class Conversation:
    """Calls and presses, each of which leaves a step."""

    def __init__(
        self,
        client: Caller,
        database: Database,
        settings: Settings,
        restart: Callable[[], None],
    ) -> None:
        self.settings = settings
        self.steps: list[Step] = []
        self._client = client
        self._database = database
        self._restart = restart
        self._heard: list[Union[Reply, Event]] = []
        EventRecorder(client, object_path(SERVICE), on_event=self._heard.append)

    def _note(self, name: str, *arguments: Any) -> None:
        """Leaves a step with what came until the server had dealt with everything."""
        self._client.round_trip()
        heard = list(self._heard)
        self._heard.clear()
        calls = self.settings.take_calls()
        rows = self._database.keys(), self._database.actions()
        self.steps.append(Step(name, arguments, heard, calls, *rows))

    # What a peer does

    def call(self, method: str, signature: str = "", *arguments: Any) -> Any:
        """Calls a method; the value that it returned."""
        place: list[int] = []
        pending = self._client.send(
            method, signature, *arguments, on_reply=lambda: place.append(len(self._heard))
        )
        reply = pending.wait()
        self._heard.insert(place[0], reply)
        self._note(method, *arguments)
        return reply.values[0]

    def press(self, **arguments: Any) -> None:
        """Tells of a press as the modules' driver does, or nearly so."""
        self._client.send_event(PRESS, **arguments)
        self._note("press", *arguments.items())

    def send_raw(self, signature: str, *body: Any) -> None:
        """Sends an event of any shape."""
        self._client.send_raw_event(signature, *body)
        self._note("event", signature, *body)

    # The calls that chapters prepare with

    def add(self, action: Action) -> Action:
        """Adds an action; as it is stored."""
        return action._replace(idAction=self.call("addAction", ACTION, action))

    def create(self, key: Key) -> Key:
        """Creates a key; as it is stored."""
        return key._replace(idKey=self.call("createProgrammableKey", KEY, key))

    def read_all(self) -> None:
        self.call("getAllActions")
        self.call("getAllProgrammableKeys")

    # What happens around the server

    def restart(self) -> None:
        """What a start asks of the settings is not looked at: only the service provisions."""
        self._restart()
        self.settings.take_calls()
        self._note("restart")

    def insert(self, *records: Union[Key, Action]) -> None:
        """Has another process store records as they are."""
        self._database.insert(*records)
        self._note("insert", *records)

    @contextmanager
    def failing(self, fault: Fault) -> Iterator[None]:
        """Meanwhile, some of the server's statements fail or change nothing."""
        self._database.execute(fault.trigger)
        yield
        self._database.execute("DROP TRIGGER fault")
