"""What device management provisioned, over any number of starts, some of them cut short."""

from rollout import Rollout
from sandbox.records import Action, Key
from writing.writes import Rows, with_id


def users_own(rows: Rows) -> Rows:
    return {row: record for row, record in rows.items() if not record.dmId}


class Provisioned:
    """What has to hold for the provisioned rows after each start that went through."""

    def __init__(self) -> None:
        self._numbers: dict[str, int] = {}
        self._contents: dict[str, list[Action]] = {}
        """What the action of an identifier may be by now, if it was rolled out no more."""
        self._former_keys: set[int] = set()

    @property
    def action_ids(self) -> list[int]:
        return sorted(self._numbers.values())

    def cut_short(self, rollout: Rollout) -> None:
        """The rollout may have got through to some of the actions."""
        for action in rollout.actions:
            self._contents.setdefault(action.dmId, []).append(action)

    def check(self, rollout: Rollout, found: Rows) -> None:
        """The rollout is there, wholly, and no more than is left of those before it."""
        provisioned = [record for record in found.values() if record.dmId]
        self._check_actions(rollout, [row for row in provisioned if isinstance(row, Action)])
        self._check_keys(rollout, sorted(row for row in provisioned if isinstance(row, Key)))

    def _check_actions(self, rollout: Rollout, found: list[Action]) -> None:
        numbers = {action.dmId: action.idAction for action in found}
        assert len(numbers) == len(found), "an identifier stands there twice"
        assert {**numbers, **self._numbers} == numbers, "a number has changed, or is gone"
        self._contents.update({action.dmId: [action] for action in rollout.actions})
        assert {action.dmId for action in rollout.actions} <= numbers.keys(), "one is missing"
        for action in found:
            assert with_id(action, -1) in self._contents.get(action.dmId, []), "not as rolled out"
        self._numbers = numbers

    def _check_keys(self, rollout: Rollout, found: list[Key]) -> None:
        expected = [
            key._replace(idAction=self._numbers[key.dmId])
            for key in rollout.keys
            if key.dmId in self._numbers
        ]
        assert [with_id(key, -1) for key in found] == expected, "not the keys of the rollout"
        numbers = {key.idKey for key in found}
        assert not numbers & self._former_keys, "a key was made anew under an old number"
        self._former_keys |= numbers
