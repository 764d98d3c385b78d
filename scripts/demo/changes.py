"""What a merge has changed, in words."""

from typing import Iterator

from sandbox.records import Action

from .merge import Merge
from .words import in_words, place_of


def changes(merge: Merge, arrow: str) -> Iterator[tuple[str, str]]:
    """What a merge has changed, action by action: the kind of the change, and what it is."""
    for action in merge.added:
        yield "added", _line(action, [in_words(action.label), *_of_keys(merge, action, arrow)])
    for old, new in merge.updated:
        parts = [
            f"{field} {in_words(was)} {arrow} {in_words(now)}"
            for field, was, now in zip(Action._fields, old, new)
            if was != now
        ]
        parts += _of_keys(merge, old, arrow)
        if parts:
            yield "changed", _line(old, parts)
    for action in merge.withdrawn:
        yield "withdrawn", _line(action, ["stays", *_of_keys(merge, action, arrow)])


def _line(action: Action, parts: list[str]) -> str:
    return f"{action.idAction} {action.dmId}: {'; '.join(parts)}"


def _of_keys(merge: Merge, action: Action, arrow: str) -> Iterator[str]:
    for was, now in merge.keys_of(action):
        if was is None:
            yield f"at {place_of(now)}"
        elif now is None:
            yield f"its key at {place_of(was)} is gone"
        elif place_of(was) != place_of(now):
            yield f"moved from {place_of(was)} to {place_of(now)}"
        else:
            yield f"icon at {place_of(was)} {in_words(was.icon)} {arrow} {in_words(now.icon)}"
