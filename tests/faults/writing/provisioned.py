"""The provisioned rows over any number of starts, some of them cut short."""

from rollout import Rollout
from sandbox.records import Action, Key
from writing.writes import Rows, with_id


def users_own(rows: Rows) -> Rows:
    return {row: record for row, record in rows.items() if not record.dmId}


class Provisioned:
    """What must hold for the provisioned rows after each start."""

    def __init__(self) -> None:
        self._numbers: dict[str, int] = {}
        self._contents: dict[str, list[Action]] = {}
        """What the action of an identifier may be, if it is not rolled out any more."""
        self._keys: list[Key] = []
        """The keys of the last complete rollout."""
        self._cut_short: list[Rollout] = []
        """The later rollouts that were cut short."""
        self._former_keys: set[int] = set()

    @property
    def action_ids(self) -> list[int]:
        return sorted(self._numbers.values())

    def cut_short(self, rollout: Rollout) -> None:
        """The rollout may be done for some of its actions and keys."""
        self._cut_short.append(rollout)
        for action in rollout.actions:
            self._contents.setdefault(action.dmId, []).append(action)

    def check_left(self, found: Rows) -> None:
        """After a cut some rows may be missing, but each is whole, and no key lacks its action."""
        numbers = self._checked_numbers(found)
        keys = _keys_in(found)
        if keys != self._keys:
            made = [with_id(key, -1) for key in keys]
            begun = [_keys_of(rollout, numbers)[: len(made)] for rollout in self._cut_short]
            assert made in begun, "neither the old keys nor the first keys of a rollout"

    def check(self, rollout: Rollout, found: Rows) -> None:
        """The rollout is complete, and nothing else is left than earlier rollouts leave."""
        self._contents.update({action.dmId: [action] for action in rollout.actions})
        self._numbers = self._checked_numbers(found)
        assert {action.dmId for action in rollout.actions} <= self._numbers.keys(), "one is missing"
        keys = _keys_in(found)
        expected = _keys_of(rollout, self._numbers)
        assert [with_id(key, -1) for key in keys] == expected, "not the keys of the rollout"
        numbers = {key.idKey for key in keys}
        assert not numbers & self._former_keys, "a new key has an old id"
        self._former_keys |= numbers
        self._keys, self._cut_short = keys, []

    def _checked_numbers(self, found: Rows) -> dict[str, int]:
        """The ids of the provisioned actions, which are whole and have their old ids."""
        rows = found.values()
        actions = [row for row in rows if isinstance(row, Action) and row.dmId]
        numbers = {action.dmId: action.idAction for action in actions}
        assert len(numbers) == len(actions), "an identifier is stored twice"
        assert {**numbers, **self._numbers} == numbers, "an id has changed, or is gone"
        for action in actions:
            assert with_id(action, -1) in self._contents.get(action.dmId, []), "not as rolled out"
        return numbers


def _keys_in(found: Rows) -> list[Key]:
    return sorted(row for row in found.values() if isinstance(row, Key) and row.dmId)


def _keys_of(rollout: Rollout, numbers: dict[str, int]) -> list[Key]:
    """The keys that a rollout creates, without their ids: those that have an action."""
    keys = [key for key in rollout.keys if key.dmId in numbers]
    return [key._replace(idAction=numbers[key.dmId]) for key in keys]
