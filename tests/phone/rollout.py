"""Random rollouts, in the format of device management."""

import random
from typing import Any, NamedTuple, Sequence

from sandbox.records import Action, Key

DM_IDS = ("D1", "D2", "D3", "D4", "D5", "d1", "D,6", "D#7", "Zürich ☎")
PIECES = ("a", "B", " ", ",", "#", "\\x", "\\\\y", "ü", "☎", "501", "esc", "%1", "'")
ESCAPES = str.maketrans({",": "\\,", "#": "\\#"})


class Rollout(NamedTuple):
    """The provisioned actions and keys, without ids."""

    actions: list[Action]
    keys: list[Key]
    broken: int = 0
    """The number of invalid records in each setting."""

    @property
    def settings(self) -> dict[str, str]:
        """The settings with these records."""
        return {
            "DefaultActions": _setting([_fields(action) for action in self.actions], self.broken),
            "DefaultKeys": _setting([_key_fields(key) for key in self.keys], self.broken),
        }


def _fields(action: Action) -> Sequence[Any]:
    return action[1:]


def _key_fields(key: Key) -> Sequence[Any]:
    place = (key.dmId, key.container, key.position, key.icon)
    return (*place, key.type, key.aom_type, key.aom_addr)


def _setting(records: Sequence[Sequence[Any]], broken: int) -> str:
    texts = [_record(fields) for fields in records]
    for number in range(broken):
        texts.insert(number * 2, ("", "D1,too,few", "D1,1,2,3,4,5,6,7")[number % 3])
    return "#".join(texts)


def _record(fields: Sequence[Any]) -> str:
    return ",".join(str(field).translate(ESCAPES) for field in fields)


def _text(source: random.Random) -> str:
    return "".join(source.choices(PIECES, k=source.randrange(4)))


def _action(source: random.Random, dm_id: str) -> Action:
    texts = (_text(source) for _ in range(5))
    return Action(-1, dm_id, source.randrange(-3, 9), *texts)


def _key(source: random.Random, dm_id: str) -> Key:
    numbers = (source.randrange(3) for _ in range(3))
    return Key(-1, dm_id, -1, _text(source), source.randrange(-1, 30), _text(source), *numbers)


def random_rollout(source: random.Random) -> Rollout:
    """Actions for some identifiers in random order, and keys for these and other identifiers."""
    dm_ids = source.sample(DM_IDS, source.randrange(len(DM_IDS) + 1))
    key_ids = source.choices(DM_IDS, k=source.randrange(12))
    return Rollout(
        [_action(source, dm_id) for dm_id in dm_ids],
        [_key(source, dm_id) for dm_id in key_ids],
        source.randrange(4),
    )


def next_rollout(source: random.Random, previous: Rollout) -> Rollout:
    """A rollout after another one.

    Most records are the same. Some repeat an identifier, and some have none.
    """
    new = random_rollout(source)
    actions = [*_kept(source, previous.actions, _action), *new.actions[: source.randrange(4)]]
    keys = [*_kept(source, previous.keys, _key), *new.keys[: source.randrange(4)]]
    if source.random() < 0.15:
        actions.append(_action(source, ""))
    if source.random() < 0.15:
        keys.append(_key(source, ""))
    if source.random() < 0.2:
        source.shuffle(actions)
        source.shuffle(keys)
    return Rollout(actions, keys, new.broken)


def _kept(source: random.Random, records: Sequence[Any], make: Any) -> list[Any]:
    """Most of the records, some of them changed, and few of those without an identifier."""
    return [
        _or_changed(source, record, make)
        for record in records
        if source.random() < (0.8 if record.dmId else 0.3)
    ]


def _or_changed(source: random.Random, record: Any, make: Any) -> Any:
    """The record, or a copy with one changed field."""
    if source.random() < 0.7:
        return record
    other = make(source, record.dmId)
    field = source.choice(record._fields)
    return record._replace(**{field: getattr(other, field)})
