"""Checks of the provisioned rows after starts, including interrupted ones."""

from rollout import Rollout
from sandbox.records import Action, Key
from writing.writes import Rows, with_id


def user_rows(rows: Rows) -> Rows:
    return {row: record for row, record in rows.items() if not record.dmId}


class Provisioned:
    """Tracks the expected provisioned rows and checks them after each start."""

    def __init__(self) -> None:
        self._numbers: dict[str, int] = {}
        self._contents: dict[str, list[Action]] = {}
        """The possible contents of the action of each identifier."""
        self._keys: list[Key] = []
        """The keys of the last complete rollout."""
        self._interrupted: list[Rollout] = []
        """The later rollouts, which were interrupted."""
        self._old_keys: set[int] = set()

    @property
    def action_ids(self) -> list[int]:
        return sorted(self._numbers.values())

    def interrupt(self, rollout: Rollout) -> None:
        """Notes that some actions and keys of the rollout may be missing."""
        self._interrupted.append(rollout)
        for action in rollout.actions:
            self._contents.setdefault(action.dmId, []).append(action)

    def check_interrupted(self, found: Rows) -> None:
        """Checks the rows after an interruption.

        Some rows may be missing, but each row is complete, and each key has its action.
        """
        numbers = self._checked_numbers(found)
        keys = _keys_in(found)
        if keys != self._keys:
            created = [with_id(key, -1) for key in keys]
            possible = [
                _keys_of(rollout, numbers)[: len(created)] for rollout in self._interrupted
            ]
            assert created in possible, "neither the old keys nor the first keys of a rollout"

    def check(self, rollout: Rollout, found: Rows) -> None:
        """Checks that the rollout is complete and that there are no unexpected rows."""
        self._contents.update({action.dmId: [action] for action in rollout.actions})
        self._numbers = self._checked_numbers(found)
        missing = {action.dmId for action in rollout.actions} - self._numbers.keys()
        assert not missing, "actions are missing"
        keys = _keys_in(found)
        expected = _keys_of(rollout, self._numbers)
        assert [with_id(key, -1) for key in keys] == expected, "not the keys of the rollout"
        numbers = {key.idKey for key in keys}
        assert not numbers & self._old_keys, "a new key has an old id"
        self._old_keys |= numbers
        self._keys, self._interrupted = keys, []

    def _checked_numbers(self, found: Rows) -> dict[str, int]:
        """The ids of the provisioned actions. Checks the actions and their ids."""
        rows = found.values()
        actions = [row for row in rows if isinstance(row, Action) and row.dmId]
        numbers = {action.dmId: action.idAction for action in actions}
        assert len(numbers) == len(actions), "an identifier is stored twice"
        assert {**numbers, **self._numbers} == numbers, "an id has changed or is missing"
        for action in actions:
            assert with_id(action, -1) in self._contents.get(action.dmId, []), "not as rolled out"
        return numbers


def _keys_in(found: Rows) -> list[Key]:
    return sorted(row for row in found.values() if isinstance(row, Key) and row.dmId)


def _keys_of(rollout: Rollout, numbers: dict[str, int]) -> list[Key]:
    """The keys of a rollout that have an action, without their ids."""
    keys = [key for key in rollout.keys if key.dmId in numbers]
    return [key._replace(idAction=numbers[key.dmId]) for key in keys]
