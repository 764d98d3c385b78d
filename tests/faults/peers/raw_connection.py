"""A connection to the bus that sends whatever it likes, and need not read what comes back."""

import fcntl
import os
import socket
import struct
import sys
import termios
from typing import NamedTuple

from sandbox.loop import LIMIT

BUS = "org.freedesktop.DBus"
METHOD_CALL, METHOD_RETURN, SIGNAL = 1, 2, 4
HEAD = struct.Struct("<xBxxIxxxxI")
"""The type, the length of the body and that of the fields: how each message begins."""

PATH, INTERFACE, MEMBER, DESTINATION, SIGNATURE = 1, 2, 3, 6, 8


class RawCall(NamedTuple):
    """A method call that takes at most a text."""

    destination: str
    path: str
    interface: str
    member: str
    text: str = ""

    def marshalled(self, serial: int) -> bytes:
        fields = [
            (PATH, "o", _text(self.path)),
            (INTERFACE, "s", _text(self.interface)),
            (MEMBER, "s", _text(self.member)),
            (DESTINATION, "s", _text(self.destination)),
        ]
        body = b""
        if self.text:
            fields.append((SIGNATURE, "g", b"\x01s\0"))
            body = _text(self.text)
        array = b""
        for code, kind, value in fields:
            array = _aligned(array, 8) + bytes([code, 1, ord(kind), 0]) + value
        head = struct.pack("<cBBBIII", b"l", METHOD_CALL, 0, 1, len(body), serial, len(array))
        return _aligned(head + array, 8) + body


def _text(text: str) -> bytes:
    written = text.encode()
    return struct.pack("<I", len(written)) + written + b"\0"


def _aligned(written: bytes, width: int) -> bytes:
    return written + b"\0" * (-len(written) % width)


class RawMessage(NamedTuple):
    """What can be told of a message without understanding it."""

    kind: int
    size: int
    """Bytes of its body."""


class RawConnection:
    """Greets the bus; after that it reads nothing unless told to."""

    def __init__(self, address: str) -> None:
        self._serial = 0
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(LIMIT)
        self._socket.connect(address.removeprefix("unix:path="))
        identity = str(os.getuid()).encode().hex()
        self._socket.sendall(b"\0AUTH EXTERNAL " + identity.encode() + b"\r\n")
        answer = self._socket.recv(1000)
        assert answer.startswith(b"OK "), answer
        self._socket.sendall(b"BEGIN\r\n")
        self.send(RawCall(BUS, "/", BUS, "Hello"))
        assert [self.read().kind, self.read().kind] == [METHOD_RETURN, SIGNAL], "no name"

    def __enter__(self) -> "RawConnection":
        return self

    def __exit__(self, *_exception: object) -> None:
        self._socket.close()

    def send(self, call: RawCall, times: int = 1) -> None:
        """Makes the same call so many times."""
        written = b""
        for _ in range(times):
            self._serial += 1
            written += call.marshalled(self._serial)
        self._socket.sendall(written)

    def subscribe(self, rule: str) -> None:
        self.send(RawCall(BUS, "/", BUS, "AddMatch", rule))
        assert self.read().kind == METHOD_RETURN

    @property
    def unread(self) -> int:
        """Bytes that wait to be read; the bus keeps what has no room here."""
        return int.from_bytes(fcntl.ioctl(self._socket, termios.FIONREAD, bytes(4)), sys.byteorder)

    def read(self) -> RawMessage:
        """The next message, once it is there."""
        kind, size, fields = HEAD.unpack(self._receive(HEAD.size))
        self._receive(len(_aligned(bytes(fields), 8)) + size)
        return RawMessage(kind, size)

    def _receive(self, length: int) -> bytes:
        received = bytearray()
        while len(received) < length:
            piece = self._socket.recv(length - len(received))
            assert piece, "the bus has hung up"
            received += piece
        return bytes(received)
