"""Steps that name rows by who made them: they mean the same rows when other steps are left out."""

from typing import Any, Callable, Iterable, NamedTuple, Sequence, Union

from model.phone import FIRST_SETTINGS
from model.reference import Reference
from model.steps import Outcome, Step
from sandbox.records import Action, Key

KEY_ID_FIRST = (
    "deleteProgrammableKey",
    "getProgrammableKey",
    "setIconStateForKey",
    "setLabelStateForKey",
)
ACTION_ID_FIRST = ("deleteAction", "getAction")


class Maker(NamedTuple):
    """The step that made a row, and which of its rows this is."""

    place: int
    number: int


class Handle(NamedTuple):
    """A row by its maker, or by the id that it had once where the maker is left out."""

    maker: Maker
    id_then: int


Id = Union[int, Handle]
Translate = Callable[[Id], Id]


class PlacedStep(NamedTuple):
    """A step with the place that it had at first."""

    place: int
    step: Step


def with_handles(steps: Sequence[Step]) -> list[PlacedStep]:
    """The steps, each id of a row replaced by a handle."""
    reference = Reference("", FIRST_SETTINGS)
    keys: dict[Id, Handle] = {}
    actions: dict[Id, Handle] = {}
    placed = []
    for place, step in enumerate(steps):
        named = _translated(step, lambda id_: keys.get(id_, id_), lambda id_: actions.get(id_, id_))
        placed.append(PlacedStep(place, named))
        outcome = reference.perform(step)
        for made, handles in zip(_made(outcome), (keys, actions)):
            handles.update((id_, Handle(Maker(place, n), id_)) for n, id_ in enumerate(made))
    return placed


def with_ids(steps: Iterable[PlacedStep]) -> list[Step]:
    """The steps as they can be taken, each handle replaced by the id that the row has now."""
    reference = Reference("", FIRST_SETTINGS)
    keys: dict[Maker, int] = {}
    actions: dict[Maker, int] = {}
    taken = []
    for place, step in steps:
        taken.append(_translated(step, _resolver(keys), _resolver(actions)))
        outcome = reference.perform(taken[-1])
        for made, ids in zip(_made(outcome), (keys, actions)):
            ids.update((Maker(place, number), id_) for number, id_ in enumerate(made))
    return taken


def _resolver(ids: dict[Maker, int]) -> Translate:
    return lambda id_: ids.get(id_.maker, id_.id_then) if isinstance(id_, Handle) else id_


def _made(outcome: Outcome) -> tuple[list[int], list[int]]:
    """The ids of the keys and of the actions that a step made."""
    told = [(event.name, event.arguments[0].value) for event in outcome.events if event.arguments]
    keys = [value.idKey for name, value in told if name == "KEY_CREATE_NTF"]
    return keys, [value.idAction for name, value in told if name == "ACTION_CREATE_NTF"]


def _translated(step: Step, key: Translate, action: Translate) -> Step:
    if step.name in KEY_ID_FIRST:
        return step._replace(values=(key(step.values[0]), *step.values[1:]))
    if step.name in ACTION_ID_FIRST:
        return step._replace(values=(action(step.values[0]), *step.values[1:]))
    return step._replace(values=tuple(_value(value, key, action) for value in step.values))


def _value(value: Any, key: Translate, action: Translate) -> Any:
    if isinstance(value, Key):
        return value._replace(idKey=key(value.idKey), idAction=action(value.idAction))
    if isinstance(value, Action):
        return value._replace(idAction=action(value.idAction))
    if isinstance(value, list):
        return [(key(id_key), position) for id_key, position in value]
    return value
