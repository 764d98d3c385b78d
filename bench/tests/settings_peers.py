"""The settings as a chapter changes them, with either peer behind them."""

from pathlib import Path
from typing import Any, Optional

from sandbox.processes import Module
from sandbox.settings import FakeSettingsManager

LIMIT_SETTING = "ProgKeysMax"


class FakePeer:
    """The settings of the peer played in Python, which counts the calls that it receives."""

    def __init__(self, peer: FakeSettingsManager) -> None:
        self._peer = peer

    def write(self, name: str, value: str) -> None:
        self._peer.values[name] = value

    def remove(self, name: str) -> None:
        self._peer.values.pop(name)

    def leave(self) -> None:
        self._peer.close()

    def take_calls(self) -> Optional[list[Any]]:
        """The calls since the last time."""
        calls = list(self._peer.calls)
        self._peer.calls.clear()
        return calls


class RealPeer:
    """The settings of the real peer, which reads a file for each."""

    def __init__(self, directory: Path, module: Module) -> None:
        self._directory = directory
        self._module = module

    def write(self, name: str, value: str) -> None:
        (self._directory / name).write_text(f"{value}\n", encoding="utf-8")

    def remove(self, name: str) -> None:
        (self._directory / name).unlink()

    def leave(self) -> None:
        self._module.stop()

    def take_calls(self) -> Optional[list[Any]]:
        """None: nobody counts here."""
        return None
