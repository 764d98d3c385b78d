"""One line that says how far it is, on a terminal only."""

import sys
from typing import TextIO

from .ending import heed

CLEAR = "\r\x1b[K"


class Progress:
    """Rewrites the last line of a terminal; on anything else it says nothing."""

    def __init__(self, stream: TextIO = sys.stderr) -> None:
        self._stream = stream
        self._is_shown = stream.isatty()

    def show(self, text: str) -> None:
        """Says what comes next, unless that is the end."""
        heed()
        if self._is_shown:
            self._stream.write(f"{CLEAR}{text}")
            self._stream.flush()

    def clear(self) -> None:
        if self._is_shown:
            self._stream.write(CLEAR)
            self._stream.flush()
