"""The tests that cannot pass under an emulator."""

from pathlib import Path

LIST = Path(__file__).with_name("exceptions.txt")


def read_exceptions() -> dict[str, str]:
    """The names of the tests and the reasons."""
    lines = LIST.read_text(encoding="utf-8").splitlines()
    entries = [line.split(maxsplit=1) for line in lines if line and not line.startswith("#")]
    return {name: reason for name, reason in entries}
