"""What a run does to the phone, step by step, and what comes of each step."""

from typing import Any, NamedTuple

from sandbox.events import Event

PRESS = "press"
"""An add-on module's key is pressed; the values are the event's arguments: name, signature, value."""
SETTING = "setting"
"""A setting gets another text; with None the SettingsManager does not know it any more."""
SETTINGS_MANNER = "settingsManner"
"""The SettingsManager answers with the texts that it has, with errors, or with numbers."""
RESTART = "restart"
"""The service ends and is started again."""

PROPERLY, WITH_ERRORS, WITH_NUMBERS = "properly", "with errors", "with numbers"

MANY_CHARACTERS = 200
LONGEST_UNIT = 32

Moves = list[tuple[int, int]]
"""What changeProgrammableKeysPosition is called with: ids and positions as sent, ids repeated or not."""


class Step(NamedTuple):
    """A method of the service or of its lifecycle, named as on the bus, or one of the above."""

    name: str
    values: tuple[Any, ...] = ()

    def __str__(self) -> str:
        return f"{self.name}({', '.join(map(literal, self.values))})"


class Outcome(NamedTuple):
    """Everything that can be seen of a step, but for what is stored."""

    reply: Any
    events: list[Event]
    lines: list[tuple[str, str]]
    """The log lines: level and text."""
    settings_read: list[str]


def literal(value: Any) -> str:
    """The value as Python writes it, with a long text of repetitions as a product."""
    if isinstance(value, Step):
        return f"Step({value.name!r}, {literal(value.values)})"
    if isinstance(value, str):
        return _text_literal(value)
    if isinstance(value, dict):
        return f"{{{', '.join(f'{literal(key)}: {literal(item)}' for key, item in value.items())}}}"
    if isinstance(value, list):
        return f"[{', '.join(map(literal, value))}]"
    if hasattr(value, "_asdict"):
        fields = (f"{name}={literal(item)}" for name, item in value._asdict().items())
        return f"{type(value).__name__}({', '.join(fields)})"
    if isinstance(value, tuple):
        return f"({''.join(f'{literal(item)}, ' for item in value)})"
    return repr(value)


def _text_literal(text: str) -> str:
    if len(text) > MANY_CHARACTERS:
        for length in range(1, LONGEST_UNIT + 1):
            times, rest = divmod(len(text), length)
            if not rest and text == text[:length] * times:
                return f"{text[:length]!r} * {times}"
    return repr(text)
