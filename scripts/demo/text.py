"""Text measured in the columns of a terminal."""

import itertools
import unicodedata
from typing import NamedTuple, Sequence


class Span(NamedTuple):
    """Words in one style."""

    text: str
    style: str = ""


def char_width(char: str) -> int:
    """The columns that one character takes."""
    if unicodedata.category(char) in ("Mn", "Me", "Cf"):
        return 0
    return 2 if unicodedata.east_asian_width(char) in ("W", "F") else 1


def width_of(text: str) -> int:
    """The columns that a text takes."""
    return sum(map(char_width, text))


def printable(text: str) -> str:
    """The text with a visible stand-in for each control character, so that none of them reaches the terminal."""
    return "".join(char if unicodedata.category(char) not in ("Cc", "Cs", "Zl", "Zp") else "\ufffd" for char in text)


def head(text: str, columns: int) -> str:
    """As much of the beginning of the text as fits."""
    for index, char in enumerate(text):
        columns -= char_width(char)
        if columns < 0:
            return text[:index]
    return text


def shorten(text: str, columns: int, ellipsis: str) -> str:
    """The text, or its beginning and an ellipsis if it is too long."""
    if width_of(text) <= columns:
        return text
    return (head(text, columns - width_of(ellipsis)) + ellipsis) if columns >= width_of(ellipsis) else ""


def pad(text: str, columns: int) -> str:
    """The text, filled up with blanks."""
    return text + " " * (columns - width_of(text))


def _pieces(spans: Sequence[Span], columns: int) -> list[Span]:
    """The words one by one, none longer than a line; a blank belongs to the word before it."""
    pieces = []
    for text, style in spans:
        for word in text.replace(" ", " \0").split("\0"):
            while width_of(word.rstrip(" ")) > columns:
                start = head(word, columns) or word[0]
                pieces.append(Span(start, style))
                word = word[len(start):]
            if word:
                pieces.append(Span(word, style))
    return pieces


def wrap(spans: Sequence[Span], columns: int) -> list[list[Span]]:
    """The words in lines of at most that many columns."""
    lines: list[list[Span]] = [[]]
    room = columns
    for piece in _pieces(spans, columns):
        if width_of(piece.text.rstrip(" ")) > room and lines[-1]:
            lines.append([])
            room = columns
        lines[-1].append(piece)
        room -= width_of(piece.text)
    return [_joined(line) for line in lines]


def _joined(line: Sequence[Span]) -> list[Span]:
    """Words of one style in one piece, and no blank at the end of the line."""
    runs = itertools.groupby(line, lambda span: span.style)
    joined = [Span("".join(span.text for span in run), style) for style, run in runs]
    return [*joined[:-1], joined[-1]._replace(text=joined[-1].text.rstrip(" "))] if joined else []
