"""Compares a plan with the effects of a start of the service."""

from collections import Counter
from typing import Any, NamedTuple

from sandbox.records import Action, Key

Plan = list[dict[str, Any]]


class Rows(NamedTuple):
    """The rows of both tables, in the order of their ids."""

    actions: list[Action]
    keys: list[Key]


def has_changes(plan: Plan) -> bool:
    return any(row["what"] in ("added", "changed", "removed") for row in plan)


def check_plan(plan: Plan, before: Rows, after: Rows) -> None:
    """Checks that the plan changes the rows `before` to the rows `after`."""
    actions = [row for row in plan if row["kind"] == "action" and row["what"] != "refused"]
    added = _check_actions(actions, before.actions, after.actions)
    _check_keys([row for row in plan if row["kind"] == "key"], before.keys, after.keys, added)
    assert has_changes(plan) == (_visible(before) != _visible(after))


def _change(records: dict[int, Any], row: dict[str, Any]) -> None:
    record = records[row["id"]]
    assert record.dmId == row["dmId"]
    assert getattr(record, row["field"]) == row["old"] != row["new"]
    records[row["id"]] = record._replace(**{row["field"]: row["new"]})


def _content(kind: Any, row: dict[str, Any]) -> Any:
    return kind(*(row["content"][name] for name in kind._fields))


def _check_actions(plan: Plan, before: list[Action], after: list[Action]) -> list[Action]:
    """Returns the new actions, with their ids."""
    expected = {action.idAction: action for action in before}
    for row in plan:
        if row["what"] == "changed":
            _change(expected, row)
    listed = {row["id"] for row in plan if row["what"] != "added"}
    assert {action.idAction for action in before if action.dmId} <= listed <= set(expected)

    stored, added = after[: len(before)], after[len(before) :]
    assert stored == list(expected.values())
    assert [action._replace(idAction=None) for action in added] == [
        _content(Action, row) for row in plan if row["what"] == "added"
    ]
    return added


def _check_keys(plan: Plan, before: list[Key], after: list[Key], added: list[Action]) -> None:
    provisioned = {key.idKey: key for key in before if key.dmId}
    records: dict[int, int] = {}
    for row in plan:
        if row["what"] in ("changed", "kept"):
            records[row["id"]] = row["record"]
        if row["what"] == "changed":
            _change(provisioned, row)
    removed = [row["id"] for row in plan if row["what"] == "removed"]
    assert sorted([*records, *removed]) == sorted(provisioned)

    created = {record: provisioned[id_key] for id_key, record in records.items()}
    created |= {row["record"]: _content(Key, row) for row in plan if row["what"] == "added"}
    expected = [_with_action(created[record], added) for record in sorted(created)]
    users = [key for key in before if not key.dmId]
    assert after[: len(users)] == users
    assert [key._replace(idKey=None) for key in after[len(users) :]] == expected
    assert not {key.idKey for key in after[len(users) :]} & {key.idKey for key in before}


def _with_action(key: Key, added: list[Action]) -> Key:
    """The key as the service creates it. Without an idAction, it gets the new action of its dmId."""
    key = key._replace(idKey=None)
    if key.idAction is not None:
        return key
    return key._replace(idAction=next(action.idAction for action in added if action.dmId == key.dmId))


def _visible(rows: Rows) -> tuple[list[Action], Counter[Key]]:
    """The rows without the ids of provisioned keys, which change at each start."""
    return rows.actions, Counter(key._replace(idKey=0) if key.dmId else key for key in rows.keys)
