"""Plans taken at their word: what the rows of a phone must be after the start that was planned."""

from collections import Counter
from typing import Any, NamedTuple

from sandbox.records import Action, Key


class Rows(NamedTuple):
    """The rows of both tables, in the order of their numbers."""

    actions: list[Action]
    keys: list[Key]


def check_plan(plan: dict[str, Any], before: Rows, after: Rows) -> None:
    """Does what the plan says to the rows before; the outcome must be the rows after."""
    added = _check_actions(plan["actions"], before.actions, after.actions)
    _check_keys(plan["keys"], before.keys, after.keys, added)
    assert plan["hasChanges"] == (_visible(before) != _visible(after))


def _record(kind: Any, row: dict[str, Any]) -> Any:
    return kind(*(row[name] for name in kind._fields))


def _changed(record: Any, changes: list[dict[str, Any]]) -> Any:
    assert changes
    for change in changes:
        assert getattr(record, change["field"]) == change["old"] != change["new"]
    return record._replace(**{change["field"]: change["new"] for change in changes})


def _check_actions(plan: dict[str, Any], before: list[Action], after: list[Action]) -> list[Action]:
    """Returns the new actions, under the numbers that they were given."""
    expected = {action.idAction: action for action in before}
    for changed in plan["changed"]:
        action = expected[changed["idAction"]]
        assert action.dmId == changed["dmId"]
        expected[action.idAction] = _changed(action, changed["changes"])
    for row in (*plan["kept"], *plan["left"]):
        assert expected[row["idAction"]] == _record(Action, row)
    told = [row["idAction"] for name in ("changed", "kept", "left") for row in plan[name]]
    assert len(told) == len(set(told))
    assert {action.idAction for action in before if action.dmId} <= set(told)

    stored, added = after[: len(before)], after[len(before) :]
    assert stored == list(expected.values())
    assert [action._replace(idAction=None) for action in added] == [
        _record(Action, row) for row in plan["added"]
    ]
    return added


def _check_keys(
    plan: dict[str, Any], before: list[Key], after: list[Key], added: list[Action]
) -> None:
    removed = {row["idKey"]: row for row in plan["removed"]}
    assert [_record(Key, row) for row in plan["removed"]] == [key for key in before if key.dmId]
    expected = [key for key in before if key.idKey not in removed]
    stored, made = after[: len(expected)], after[len(expected) :]
    assert stored == expected
    assert [key._replace(idKey=None) for key in made] == [_made(row, added) for row in plan["made"]]
    assert not {key.idKey for key in made} & {key.idKey for key in before}
    _check_successors(plan, removed)


def _made(row: dict[str, Any], added: list[Action]) -> Key:
    key = _record(Key, row)
    if key.idAction is not None:
        return key
    return key._replace(
        idAction=next(action.idAction for action in added if action.dmId == key.dmId)
    )


def _check_successors(plan: dict[str, Any], removed: dict[int, dict[str, Any]]) -> None:
    """Each key that is removed becomes one that is made, and each in the way that is told of both."""
    becomes = {id_key: "gone" for id_key in removed}
    for row in plan["made"]:
        if row["comparison"] == "new":
            assert row["replaces"] is None and not row["changes"]
            continue
        before = _record(Key, removed[row["replaces"]])
        assert becomes[before.idKey] == "gone", "one key becomes two"
        becomes[before.idKey] = row["comparison"]
        assert (row["comparison"] == "changed") == bool(row["changes"])
        then = _changed(before, row["changes"]) if row["changes"] else before
        assert then._replace(idKey=None) == _record(Key, row)
    assert becomes == {id_key: row["becomes"] for id_key, row in removed.items()}


def _visible(rows: Rows) -> tuple[list[Action], Counter[Key]]:
    """What somebody sees of the rows: provisioned keys by what they hold, not by their numbers."""
    return rows.actions, Counter(key._replace(idKey=0) if key.dmId else key for key in rows.keys)
