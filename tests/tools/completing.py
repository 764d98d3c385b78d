"""Runs the completion script directly, and in an interactive bash."""

import subprocess
from pathlib import Path
from typing import Mapping, NamedTuple, Sequence

from progkeysctl import Tool, environment
from sandbox.loop import LIMIT
from terminals import Terminal

WORD_BREAKS = " \t\n\"'><=;|&(:"
BASH_COMPLETION = "/usr/share/bash-completion/bash_completion"

CALL = r"""
. "$1"
COMP_WORDBREAKS=$2
compopt() { options+=" $*"; }
for COMP_LINE in "${@:3}"; do
    COMP_POINT=${#COMP_LINE} COMPREPLY=() options=
    _progkeysctl progkeysctl
    printf '%s\036' "$options" "${COMPREPLY[@]}"
    printf '\035'
done
"""


class Completion(NamedTuple):
    """The result of the script."""

    words: list[str]
    options: list[str]
    """The completion options that it sets, such as `nospace`."""


def script_of(bin_dir: Path) -> Path:
    return bin_dir.parent / "share" / "bash-completion" / "completions" / "progkeysctl"


def shell_environment(tool: Tool, extra: Mapping[str, str]) -> dict[str, str]:
    own = environment(tool.address, extra)
    own["PATH"] = f"{tool.executable.parent}:{own['PATH']}"
    return own


class Completer:
    """Runs the script for lines with the cursor at the end."""

    def __init__(self, tool: Tool) -> None:
        self.tool = tool
        self.script = script_of(tool.executable.parent)

    def all(self, lines: Sequence[str], breaks: str = WORD_BREAKS) -> list[Completion]:
        ended = subprocess.run(
            ["/bin/bash", "--norc", "-c", CALL, "bash", str(self.script), breaks, *lines],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            encoding="utf-8",
            env=shell_environment(self.tool, {}),
            timeout=3 * LIMIT,
            check=False,
        )
        assert (ended.returncode, ended.stderr) == (0, "")
        answers = [answer.split("\036")[:-1] for answer in ended.stdout.split("\035")[:-1]]
        assert len(answers) == len(lines)
        return [Completion(words, options.replace("-o", "").split()) for options, *words in answers]

    def __call__(self, line: str, breaks: str = WORD_BREAKS) -> Completion:
        return self.all([line], breaks)[0]

    def words(self, line: str) -> list[str]:
        return self(line).words


class Bash(Terminal):
    """An interactive bash."""

    def __init__(self, tool: Tool, home: Path, *preparation: str) -> None:
        extra = {"HOME": str(home), "TERM": "dumb", "PS1": "ready> ", "INPUTRC": "/dev/null"}
        super().__init__(["/bin/bash", "--norc", "--noprofile", "-i"], shell_environment(tool, extra))
        self.read_until("ready> ")
        for line in (
            "bind 'set show-all-if-ambiguous on'",
            "bind 'set bell-style none'",
            f"cd '{home}'",
            "show_words() { printf 'words:'; printf '<%s>' \"$@\"; echo; }",
            *preparation,
        ):
            self.line(line)
            self.read_until("ready> ")

    def complete(self, typed: str) -> str:
        """Types, presses Tab and Return, and returns the words of the line in angle brackets."""
        self.type(f"{typed}\t\x01show_words \n".encode())
        self.read_until("\nwords:")
        words = self.read_until("\r\n")
        # Input before the prompt may be lost.
        self.read_until("ready> ")
        return words

    def offered(self, typed: str, last: str) -> str:
        """Types, presses Tab, discards the line, and returns the candidates up to the last one."""
        self.type(f"{typed}\t".encode())
        self.read_until("\r\n")
        shown = self.read_until(last) + last
        self.type(b"\x15\x0b\n")
        self.read_until("ready> ")
        return shown
