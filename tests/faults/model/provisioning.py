"""Settings of device management made at random, well written or not."""

import random

from hostile import LARGE_TEXTS, NUMBERS, TEXTS
from rollout import DM_IDS, random_rollout

PIECES = (
    *(",", "#", "\\", "\\,", "\\#", "\\\\,", "esc", "Coma", "escComa", "escSharp", ",,,,,,", "#,"),
    *("D1", "d1", "7", " ", "a"),
)
ESCAPES = str.maketrans({",": "\\,", "#": "\\#"})
MOST_RECORDS = 8


def provisioning_text(source: random.Random, name: str) -> str:
    """A text for DefaultActions or for DefaultKeys."""
    chance = source.random()
    if chance < 0.5:
        return random_rollout(source).settings[name]
    if chance < 0.8:
        return "#".join(_record(source) for _ in range(source.randrange(MOST_RECORDS)))
    if chance < 0.98:
        return "".join(source.choices(PIECES, k=source.randrange(60)))
    return f"{source.choice(LARGE_TEXTS)}#{random_rollout(source).settings[name]}"


def _record(source: random.Random) -> str:
    """Seven fields as a rule; any of them may be a number, or what is to be one."""
    first = source.choice((*DM_IDS, "")).translate(ESCAPES)
    others = source.choice((6, 6, 6, 6, 6, 5, 7))
    return ",".join([first, *(_field(source) for _ in range(others))])


def _field(source: random.Random) -> str:
    text = source.choice(NUMBERS if source.random() < 0.6 else TEXTS)
    return text.translate(ESCAPES) if source.random() < 0.8 else text
