"""What a merge of provisioned defaults has to make of the rows on a phone."""

import itertools
from typing import Iterator, NamedTuple, Optional

from sandbox.records import Action, Key

from .rollout import Rollout

NO_NUMBER = 0


class Rows(NamedTuple):
    """All that is on a phone, in the order of the service."""

    actions: list[Action]
    keys: list[Key]


class Merge:
    """The rows that were there, and those that ought to be there once a rollout has been merged into them.

    It takes each identifier to stand once in the rollout. The numbers of new rows are the service's to choose, as long
    as no row had one as high before: they are taken from the rows that are there now.
    """

    def __init__(self, rollout: Rollout, before: Rows, now: Rows) -> None:
        self.before = before
        due = {action.dmId: action for action in rollout.actions}
        provisioned = [action for action in before.actions if action.dmId]
        self.updated = [(old, due[old.dmId]._replace(idAction=old.idAction)) for old in provisioned if old.dmId in due]
        self.withdrawn = [old for old in provisioned if old.dmId not in due]
        known = {old.dmId for old in provisioned}
        highest = max((row.idAction for row in before.actions), default=NO_NUMBER)
        numbers = {row.dmId: row.idAction for row in now.actions if row.idAction > highest}
        self.added = [
            action._replace(idAction=numbers.get(action.dmId, NO_NUMBER))
            for action in rollout.actions
            if action.dmId not in known
        ]
        updated = {old.idAction: new for old, new in self.updated}
        actions = [updated.get(row.idAction, row) for row in before.actions] + self.added
        self.gone = [key for key in before.keys if key.dmId]
        highest = max((row.idKey for row in before.keys), default=NO_NUMBER)
        new_numbers = [row.idKey for row in now.keys if row.idKey > highest]
        self.made = list(_keys_made(rollout, actions, new_numbers))
        self.due = Rows(actions, [key for key in before.keys if not key.dmId] + self.made)

    def keys_of(self, action: Action) -> Iterator[tuple[Optional[Key], Optional[Key]]]:
        """The provisioned keys of an action that are not what they were: as before, and as now."""
        gone, made = ([_anew(key) for key in keys if key.dmId == action.dmId] for keys in (self.gone, self.made))
        went = [key for key in gone if key not in made]
        came = [key for key in made if key not in gone]
        return itertools.zip_longest(went, came)


def _keys_made(rollout: Rollout, actions: list[Action], new_numbers: list[int]) -> Iterator[Key]:
    """A key without an action of its identifier is not made."""
    bound = {action.dmId: action.idAction for action in actions}
    numbers = itertools.chain(new_numbers, itertools.repeat(NO_NUMBER))
    for key in rollout.keys:
        if key.dmId in bound:
            yield key._replace(idKey=next(numbers), idAction=bound[key.dmId])


def _anew(key: Key) -> Key:
    """The key without what every merge changes."""
    return key._replace(idKey=NO_NUMBER)
