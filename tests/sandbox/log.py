"""Log lines of the platform: `time name[pid] level: text`."""

import re
from pathlib import Path
from typing import Iterable, NamedTuple

LINE = re.compile(
    r"(?P<time>\S+(?: \S+)?) (?P<name>\S+)\[(?P<pid>\d+)\] (?P<level>[a-z]+): (?P<text>.*)",
    re.DOTALL,
)


class LogLine(NamedTuple):
    """A line of the log. A text with line breaks includes the lines that follow."""

    time: str
    name: str
    pid: int
    level: str
    text: str


def parse_log(written: str) -> list[LogLine]:
    """The log lines of an error output. A line in another format continues the previous one."""
    lines: list[LogLine] = []
    for piece in written.split("\n")[:-1]:
        if match := LINE.fullmatch(piece):
            lines.append(
                LogLine(
                    match["time"], match["name"], int(match["pid"]), match["level"], match["text"]
                )
            )
        elif lines:
            lines[-1] = lines[-1]._replace(text=f"{lines[-1].text}\n{piece}")
        else:
            lines.append(LogLine("", "", 0, "", piece))
    return lines


class LogReader:
    """Reads a log file that is still being written."""

    def __init__(self, path: Path) -> None:
        self.path = path
        self._taken = 0

    def raw(self) -> str:
        """The unparsed log so far."""
        return self.path.read_bytes().decode("utf-8", errors="surrogateescape")

    def lines(self) -> list[LogLine]:
        """All complete lines so far."""
        return parse_log(self.raw())

    def texts(self, *levels: str) -> list[str]:
        """The texts of all lines so far, or of those at the given levels."""
        return texts_of(self.lines(), *levels)

    def take(self, *levels: str) -> list[str]:
        """The texts of the lines written since the last call, or of those at the given levels."""
        lines = self.lines()
        new, self._taken = lines[self._taken :], len(lines)
        return texts_of(new, *levels)


def texts_of(lines: Iterable[LogLine], *levels: str) -> list[str]:
    """The texts of the lines at the given levels, or of all lines."""
    return [line.text for line in lines if not levels or line.level in levels]
