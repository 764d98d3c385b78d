"""Users of the system bus in the root directory. Each call is made by a process with the user's ids."""

import subprocess
import sys
from dataclasses import dataclass

from sandbox.names import EVENTS, SERVICE, bus_name, object_path
from target_root import TargetRoot

NAME = bus_name(SERVICE)
PATH = object_path(SERVICE)

# Prints a line for each event and for the marker, which arrives after all earlier messages.
LISTENER = f"""
import sys
import dbus, dbus.mainloop.glib
from gi.repository import GLib

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.bus.BusConnection(sys.argv[1])
show = lambda text: print(text, flush=True)
bus.add_signal_receiver(lambda name, _: show(name), signal_name="event", dbus_interface="{EVENTS}")
bus.add_signal_receiver(show, signal_name="marker", dbus_interface="org.example.Test")
bus.get_name_owner("org.freedesktop.DBus")
show("listening")
GLib.MainLoop().run()
"""

# A call without an interface, which the protocol allows.
CALL_WITHOUT_INTERFACE = """
import sys
from gi.repository import Gio

address, destination, path, method = sys.argv[1:]
flags = Gio.DBusConnectionFlags
bus = Gio.DBusConnection.new_for_address_sync(
    address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None
)
call = Gio.DBusMessage.new_method_call(destination, path, None, method)
reply, _ = bus.send_message_with_reply_sync(call, Gio.DBusSendMessageFlags.NONE, 20000, None)
print(reply.get_error_name() or "success")
"""

ACCESS_DENIED = "org.freedesktop.DBus.Error.AccessDenied"


@dataclass
class Answer:
    """The result of a call: its printed reply, or the name of its error."""

    reply: str
    error: str

    @property
    def is_denied(self) -> bool:
        return self.error == ACCESS_DENIED


class Listener:
    """Records all events that a user receives."""

    def __init__(self, process: "subprocess.Popen[str]") -> None:
        self._process = process
        assert self._line() == "listening"

    def events_until_marker(self) -> list[str]:
        """The names of the events before the next marker."""
        events = []
        while (line := self._line()) != "marker":
            events.append(line)
        return events

    def close(self) -> None:
        self._process.kill()
        self._process.wait(timeout=20)

    def _line(self) -> str:
        assert self._process.stdout is not None
        line = self._process.stdout.readline()
        assert line, "the listener has ended"
        return line.rstrip("\n")


class BusUser:
    """A user in the root directory, with access to its system bus."""

    def __init__(self, root: TargetRoot, name: str) -> None:
        self._root = root
        self.name = name

    def call(
        self, member: str, *arguments: str, destination: str = NAME, path: str = PATH
    ) -> Answer:
        """Makes a call with dbus-send and its syntax for arguments."""
        result = self._root.run(
            *("dbus-send", "--system", "--print-reply=literal", "--reply-timeout=20000"),
            *(f"--dest={destination}", path, member, *arguments),
            user=self.name,
        )
        if result.returncode == 0:
            return Answer(result.stdout, "")
        name, _, _ = result.stderr.removeprefix("Error ").partition(":")
        return Answer("", name)

    def ask_bus(self, member: str, *arguments: str) -> Answer:
        """Calls a method of the bus."""
        bus = "org.freedesktop.DBus"
        path = "/org/freedesktop/DBus"
        return self.call(f"{bus}.{member}", *arguments, destination=bus, path=path)

    def request_name(self, name: str = NAME) -> Answer:
        do_not_queue = "uint32:4"
        return self.ask_bus("RequestName", f"string:{name}", do_not_queue)

    def call_without_interface(self, method: str) -> str:
        """Returns `success`, or the name of the error."""
        process = self._python(CALL_WITHOUT_INTERFACE, NAME, PATH, method)
        output, _ = process.communicate(timeout=60)
        return output.strip()

    def progkeysctl(self, *arguments: str) -> "subprocess.CompletedProcess[str]":
        return self._root.run("progkeysctl", *arguments, user=self.name)

    def send_signal(self, member: str, *arguments: str, path: str = "/") -> None:
        self._root.demand(
            "dbus-send", "--system", "--type=signal", path, member, *arguments, user=self.name
        )

    def listen(self) -> Listener:
        return Listener(self._python(LISTENER))

    def _python(self, source: str, *arguments: str) -> "subprocess.Popen[str]":
        # The user may have no permission to read a file in the checkout.
        return subprocess.Popen(
            [sys.executable, "-c", source, self._root.address, *arguments],
            user=self._root.user_id(self.name),
            group=self._root.group_ids(self.name)[0],
            extra_groups=self._root.group_ids(self.name),
            env={"PATH": "/usr/bin:/bin"},
            cwd="/",
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            text=True,
        )


def mark(root_user: BusUser) -> None:
    """Sends all listeners the marker."""
    root_user.send_signal("org.example.Test.marker", "string:marker")
