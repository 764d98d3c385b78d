"""What device management provisions, read from the settings on its own, to hold the service against."""

import re
from pathlib import Path
from typing import Iterator, NamedTuple

from sandbox.records import Action, Key

FIELDS = 7


class Rollout(NamedTuple):
    """The provisioned rows, without their numbers; a key triggers the action with its own identifier."""

    actions: list[Action]
    keys: list[Key]


def records(text: str) -> Iterator[list[str]]:
    """The records of a setting that have as many fields as they should."""
    for record in re.split(r"(?<!\\)#", text):
        fields = [re.sub(r"\\([,#])", r"\1", field) for field in re.split(r"(?<!\\),", record)]
        if len(fields) == FIELDS:
            yield fields


def number(text: str) -> int:
    """What is no number counts as 0."""
    try:
        return int(text)
    except ValueError:
        return 0


def action_from(fields: list[str]) -> Action:
    dm_id, kind, action, web_app, arguments, label, short_label = fields
    return Action(-1, dm_id, number(kind), action, web_app, arguments, label, short_label)


def key_from(fields: list[str]) -> Key:
    dm_id, container, position, icon, kind, aom_type, aom_addr = fields
    return Key(-1, dm_id, -1, container, number(position), icon, number(kind), number(aom_type), number(aom_addr))


def read_rollout(settings: Path) -> Rollout:
    """The rollout in a directory of settings."""
    actions, keys = (
        records((settings / name).read_text(encoding="utf-8").removesuffix("\n"))
        for name in ("DefaultActions", "DefaultKeys")
    )
    return Rollout(list(map(action_from, actions)), list(map(key_from, keys)))
