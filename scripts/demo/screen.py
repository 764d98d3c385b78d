"""Where it is shown: a terminal as wide as it is, or 100 columns of plain text."""

import os
import sys
from typing import Sequence, TextIO

from .text import Span, pad, printable, shorten, width_of, wrap

PLAIN_WIDTH = 100
NARROWEST = 40
NARROWEST_COLUMN = 3
COLUMN_GAP = "  "

STYLES = {
    "title": "1",
    "step": "1;36",
    "call": "1",
    "event": "33",
    "dim": "2",
    "good": "32",
    "bad": "1;31",
}

GLYPHS = {
    "good": "✓",
    "bad": "✗",
    "answer": "→",
    "event": "↳",
    "ellipsis": "…",
    "rule": "─",
    "top": "┌┬┐",
    "keys": "┤│├",
    "bottom": "└┴┘",
}
ASCII_GLYPHS = {
    "good": "ok",
    "bad": "!!",
    "answer": "->",
    "event": ">",
    "ellipsis": "...",
    "rule": "-",
    "top": "+++",
    "keys": "|||",
    "bottom": "+++",
}


class NobodyReads(Exception):
    """The reader of what is printed has gone."""


class Screen:
    """Prints lines that fit."""

    def __init__(self, stream: TextIO = sys.stdout) -> None:
        self._stream = stream
        self.is_terminal = stream.isatty()
        self._coloured = self.is_terminal and not os.environ.get("NO_COLOR") and os.environ.get("TERM") != "dumb"
        self._glyphs = GLYPHS if _can_write(stream, "".join(GLYPHS.values())) else ASCII_GLYPHS
        stream.reconfigure(errors="replace")

    @property
    def width(self) -> int:
        """The columns there are now: the window may change its size."""
        if not self.is_terminal:
            return PLAIN_WIDTH
        columns = os.get_terminal_size(self._stream.fileno()).columns or PLAIN_WIDTH
        return max(columns, NARROWEST)

    def glyph(self, name: str) -> str:
        return self._glyphs[name]

    def legible(self, text: str) -> str:
        """The text as it will stand there: with stand-ins for what cannot be shown."""
        encoding = self._stream.encoding or "ascii"
        return printable(text).encode(encoding, errors="replace").decode(encoding)

    def write(self, line: str = "") -> None:
        """Prints a line as it stands."""
        try:
            print(line, file=self._stream, flush=True)
        except OSError as error:
            raise NobodyReads from error

    def paint(self, text: str, style: str) -> str:
        return f"\033[{STYLES[style]}m{text}\033[0m" if self._coloured and style and text else text

    def show(self, *words: "Span | str", indent: int = 0, hang: int = 0, bullet: Span = Span("")) -> None:
        """Prints words, wrapped: at `indent` stands the bullet, and all lines begin `hang` columns behind that."""
        spans = [word if isinstance(word, Span) else Span(word) for word in words]
        spans = [Span(self.legible(span.text), span.style) for span in spans]
        for number, line in enumerate(wrap(spans, self.width - indent - hang)):
            lead = bullet if number == 0 else Span("")
            gap = " " * (hang - width_of(lead.text))
            text = "".join(self.paint(span.text, span.style) for span in line)
            self.write(f"{' ' * indent}{self.paint(lead.text, lead.style)}{gap}{text}".rstrip(" "))

    def table(self, titles: Sequence[str], rows: Sequence[Sequence[str]], indent: int = 0) -> None:
        """Prints a table; cells that are too long are shortened, the longest columns first."""
        rows = [list(map(self.legible, row)) for row in rows]
        widths = [max(map(width_of, column)) for column in zip(titles, *rows)]
        room = self.width - indent - len(COLUMN_GAP) * (len(titles) - 1)
        while sum(widths) > room and max(widths) > NARROWEST_COLUMN:
            widths[widths.index(max(widths))] -= 1
        self._row(titles, widths, indent, "dim")
        self._row([self.glyph("rule") * width for width in widths], widths, indent, "dim")
        for row in rows:
            self._row(row, widths, indent, "")

    def _row(self, cells: Sequence[str], widths: Sequence[int], indent: int, style: str) -> None:
        ellipsis = self.glyph("ellipsis")
        line = COLUMN_GAP.join(pad(shorten(cell, width, ellipsis), width) for cell, width in zip(cells, widths))
        self.write(" " * indent + self.paint(line.rstrip(" "), style))


def _can_write(stream: TextIO, text: str) -> bool:
    try:
        text.encode(stream.encoding or "ascii")
    except UnicodeEncodeError:
        return False
    return True
