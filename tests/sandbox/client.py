"""A D-Bus client of the service, built only on dbus-python."""

from typing import Any, Callable, Mapping, NamedTuple, Optional

import dbus
import dbus.bus
from dbus.lowlevel import ErrorMessage, MethodCallMessage, SignalMessage
from dbus.mainloop.glib import DBusGMainLoop

from .loop import LIMIT, wait_until
from .names import EVENTS, INTERFACE, LIFECYCLE, SERVICE, bus_name, object_path
from .records import ACTION, CAPABILITY, KEY, Action, Key, plain

INTROSPECTABLE = "org.freedesktop.DBus.Introspectable"
REPLY_TIMEOUT = 3 * LIMIT


def connect(address: str) -> dbus.bus.BusConnection:
    """A new connection to the bus, served by the default main loop."""
    connection = dbus.bus.BusConnection(address, mainloop=DBusGMainLoop())
    connection.set_exit_on_disconnect(False)
    return connection


class BusError(Exception):
    """An error reply."""

    def __init__(self, name: str, message: str) -> None:
        super().__init__(f"{name}: {message}")
        self.name = name
        self.message = message


class Reply(NamedTuple):
    """The values of a reply, as plain Python values, and their signature."""

    signature: str
    values: tuple[Any, ...]


class PendingReply:
    """The reply to a call that may not have arrived yet."""

    def __init__(self, what: str, on_reply: Optional[Callable[[], None]] = None) -> None:
        self._what = what
        self._on_reply = on_reply
        self._message: Optional[Any] = None

    def receive(self, message: Any) -> None:
        self._message = message
        if self._on_reply is not None:
            self._on_reply()

    @property
    def arrived(self) -> bool:
        return self._message is not None

    def wait(self, limit: float = LIMIT) -> Reply:
        """Waits for the reply and returns it. Raises BusError for an error reply."""
        wait_until(lambda: self.arrived, f"a reply to {self._what}", limit)
        arguments = self._message.get_args_list()
        if isinstance(self._message, ErrorMessage):
            raise BusError(
                str(self._message.get_error_name()), str(arguments[0]) if arguments else ""
            )
        return Reply(
            str(self._message.get_signature()), tuple(plain(value) for value in arguments)
        )


class NameOwner:
    """Tracks the owner of a name on the bus."""

    def __init__(self, connection: dbus.bus.BusConnection, name: str) -> None:
        self.name = name
        self.current = ""
        connection.watch_name_owner(name, self._changed)

    def _changed(self, owner: str) -> None:
        self.current = str(owner)


class Client:
    """A peer on the bus that calls the service and sends events."""

    def __init__(self, address: str, name: str = "Client") -> None:
        self.path = object_path(name)
        self.connection = connect(address)

    def close(self) -> None:
        self.connection.close()

    # Calls in general

    @staticmethod
    def message(
        method: str,
        signature: str = "",
        *arguments: Any,
        interface: Optional[str] = INTERFACE,
        module: str = SERVICE,
        path: Optional[str] = None,
    ) -> Any:
        """The message of a method call to a module."""
        message = MethodCallMessage(
            bus_name(module), path or object_path(module), interface, method
        )
        message.append(*arguments, signature=signature)
        return message

    def send(
        self,
        method: str,
        signature: str = "",
        *arguments: Any,
        on_reply: Optional[Callable[[], None]] = None,
        **where: Any,
    ) -> PendingReply:
        """Calls a method without waiting for the reply."""
        message = self.message(method, signature, *arguments, **where)
        reply = PendingReply(f"{method}({signature})", on_reply)
        self.connection.send_message_with_reply(
            message, reply.receive, REPLY_TIMEOUT, require_main_loop=True
        )
        return reply

    def call(
        self, method: str, signature: str = "", *arguments: Any, limit: float = LIMIT, **where: Any
    ) -> Reply:
        """Calls a method and waits for the reply."""
        return self.send(method, signature, *arguments, **where).wait(limit)

    def _value(
        self, returns: str, method: str, signature: str = "", *arguments: Any, **where: Any
    ) -> Any:
        reply = self.call(method, signature, *arguments, **where)
        assert (
            reply.signature == returns
        ), f"{method} returned {reply.signature!r}, not {returns!r}"
        return reply.values[0] if reply.values else None

    def round_trip(self) -> None:
        """Returns when the service has handled all messages sent to it before."""
        self.get_capabilities()

    def bus_round_trip(self) -> None:
        """Returns when the bus has forwarded all messages sent before, handled or not."""
        self.connection.get_name_owner("org.freedesktop.DBus")

    def introspect(self, module: str = SERVICE) -> str:
        return self._value("s", "Introspect", interface=INTROSPECTABLE, module=module)

    # Keys

    def get_all_programmable_keys(self) -> list[Key]:
        return self._value(f"a{KEY}", "getAllProgrammableKeys")

    def get_programmable_keys_by_container(self, container: str) -> list[Key]:
        return self._value(f"a{KEY}", "getProgrammableKeysByContainer", "s", container)

    def create_programmable_key(self, key: Key) -> int:
        return self._value("x", "createProgrammableKey", KEY, key)

    def modify_programmable_key(self, key: Key) -> int:
        return self._value("i", "modifyProgrammableKey", KEY, key)

    def change_programmable_keys_position(self, positions: Mapping[int, int]) -> bool:
        return self._value("b", "changeProgrammableKeysPosition", "a{ii}", positions)

    def delete_programmable_key(self, id_key: int) -> int:
        return self._value("i", "deleteProgrammableKey", "x", id_key)

    def get_programmable_key(self, id_key: int) -> list[Key]:
        return self._value(f"a{KEY}", "getProgrammableKey", "x", id_key)

    # Actions

    def get_all_actions(self) -> list[Action]:
        return self._value(f"a{ACTION}", "getAllActions")

    def add_action(self, action: Action) -> int:
        return self._value("x", "addAction", ACTION, action)

    def modify_action(self, action: Action) -> int:
        return self._value("i", "modifyAction", ACTION, action)

    def delete_action(self, id_action: int) -> int:
        return self._value("i", "deleteAction", "x", id_action)

    def get_action(self, id_action: int) -> list[Action]:
        return self._value(f"a{ACTION}", "getAction", "x", id_action)

    # Add-on modules

    def set_icon_state_for_key(self, id_key: int, icon_x: int, icon_y: int) -> int:
        return self._value("i", "setIconStateForKey", "xii", id_key, icon_x, icon_y)

    def set_label_state_for_key(self, id_key: int, state: int) -> int:
        return self._value("i", "setLabelStateForKey", "xi", id_key, state)

    # Capabilities. Each method has an overload whose first argument is the id of a list.

    def get_capabilities(self, list_id: Optional[int] = None) -> dict[str, tuple[str, int]]:
        arguments = ("",) if list_id is None else ("i", list_id)
        return self._value(f"a{{s{CAPABILITY}}}", "getCapabilities", *arguments)

    def get_capability(self, name: str, list_id: Optional[int] = None) -> tuple[str, int]:
        arguments = ("s", name) if list_id is None else ("is", list_id, name)
        return self._value(CAPABILITY, "getCapability", *arguments)

    # Lifecycle

    def lifecycle(self, hook: str, module: str = SERVICE) -> Reply:
        """Calls a lifecycle method of a module."""
        return self.call(hook, interface=LIFECYCLE, module=module)

    def restore_default(self) -> bool:
        return self._value("b", "restoreDefault", interface=LIFECYCLE)

    def restore_factory(self) -> bool:
        return self._value("b", "restoreFactory", interface=LIFECYCLE)

    # Events and names

    def send_event(self, name: str, **arguments: Any) -> None:
        """Sends a platform event with the given arguments. All their flags are true."""
        self.send_raw_event(
            "sa(svb)", name, [(label, value, True) for label, value in arguments.items()]
        )

    def send_raw_event(self, signature: str, *body: Any) -> None:
        """Sends the signal of a platform event with an arbitrary body."""
        message = SignalMessage(self.path, EVENTS, "event")
        message.append(*body, signature=signature)
        self.connection.send_message(message)

    def watch_owner(self, name: str) -> NameOwner:
        return NameOwner(self.connection, name)

    def process_of(self, name: str) -> int:
        """The id of the process that owns the name."""
        bus = "org.freedesktop.DBus"
        return int(
            self.connection.call_blocking(
                bus, "/", bus, "GetConnectionUnixProcessID", "s", (name,)
            )
        )
