"""Records, events and answers in words."""

import itertools
from typing import Any, Iterator, Sequence

from sandbox.events import Argument, Event
from sandbox.records import Action, Key

RESERVED = -1
ON_SET, ON_MODULE = 0, 1

MANY_EVENTS, SOME_EVENTS = 6, 2


def place_of(key: Key) -> str:
    """Where a key is."""
    if key.type == ON_MODULE:
        return f"module {key.aom_addr} key {key.position}"
    return f"{key.container} {key.position}"


def does(action: Action) -> str:
    """What an action does."""
    return " ".join(part for part in (action.action, action.webAppName, action.arguments) if part) or "nothing"


def labels_of(action: Action) -> str:
    if not action.label and not action.shortLabel:
        return ""
    return f' "{action.label}"' + (f" ({action.shortLabel})" if action.shortLabel else "")


def origin(record: "Key | Action") -> str:
    return f', provisioned as "{record.dmId}"' if record.dmId else ""


def new_action(action: Action) -> str:
    return f"{does(action)}{labels_of(action)}"


def new_key(key: Key) -> str:
    icon = f", icon {key.icon}" if key.icon else ""
    return f"{place_of(key)}{icon}, action {key.idAction}"


def in_words(value: Any) -> str:
    """A value of any kind that the service takes or gives."""
    if isinstance(value, Key):
        return f"key {value.idKey}: {new_key(value)}{origin(value)}"
    if isinstance(value, Action):
        return f"action {value.idAction}: {new_action(value)}{origin(value)}"
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, str):
        return f'"{value}"'
    if isinstance(value, dict):
        return ", ".join(f"{in_words(name)} to {in_words(item)}" for name, item in value.items())
    if isinstance(value, list):
        return "; ".join(map(in_words, value)) or "none"
    return str(value)


def count_of(number: int, what: str) -> str:
    """A number of things."""
    return f"{number} {what}" if number == 1 else f"{number} {what}s"


def gist(event: Event) -> str:
    """What an event is about, when many of its kind come."""
    value = event.arguments[0].value if event.arguments else ""
    if isinstance(value, Key):
        return f"{value.idKey} {place_of(value)}"
    if isinstance(value, Action):
        return f"{value.idAction} {value.label}"
    if event.name.startswith("AOM_SET_"):
        return f"module {event.values['addr']} key {event.values['key_num']}"
    return str(value)


def condensed(events: Sequence[Event], ellipsis: str) -> Iterator[tuple[str, str]]:
    """Events by name and content, one by one; if they are many, those of one name together."""
    if len(events) <= MANY_EVENTS:
        yield from ((event.name, arguments_in_words(event)) for event in events)
        return
    for name in dict.fromkeys(event.name for event in events):
        alike = [event for event in events if event.name == name]
        if len(alike) == 1:
            yield name, arguments_in_words(alike[0])
        else:
            gists = list(map(gist, alike))
            if len(gists) > MANY_EVENTS:
                gists[SOME_EVENTS:-1] = [ellipsis]
            yield f"{name} {len(alike)} times:", "; ".join(gists)


def arguments_in_words(event: Event) -> str:
    """What an event carries."""
    return ", ".join(f"{argument.name} {_shown(argument)}" for argument in event.arguments)


def _shown(argument: Argument) -> str:
    words = in_words(argument.value)
    return f"({words})" if isinstance(argument.value, (Key, Action)) else words


def event_in_full(event: Event) -> str:
    """An event with all that can be wrong in it."""
    parts = (
        f"{argument.name}: {argument.signature} = {in_full(argument.value)}"
        + ("" if argument.flag else " (flag false)")
        for argument in event.arguments
    )
    return f"{event.name}({', '.join(parts)})"


def in_full(value: Any) -> str:
    """A value with all that can be wrong in it."""
    if isinstance(value, Event):
        return event_in_full(value)
    if isinstance(value, list):
        return "; ".join(map(in_full, value)) or "none"
    return repr(tuple(value)) if isinstance(value, tuple) else repr(value)


def contrast(due: Any, found: Any) -> str:
    """What is wrong; of lists only the part in which they differ."""
    if not isinstance(due, list) or not isinstance(found, list):
        return f"expected {in_full(due)}, got {in_full(found)}"
    same = len(list(itertools.takewhile(lambda pair: pair[0] == pair[1], zip(due, found))))
    due, found = due[same:], found[same:]
    while due and found and due[-1] == found[-1]:
        due, found = due[:-1], found[:-1]
    lead = f"after {same} as they should be, " if same else ""
    return f"{lead}expected {in_full(due)}, got {in_full(found)}"


def key_rows(keys: Sequence[Key], actions: Sequence[Action]) -> list[list[str]]:
    by_id = {action.idAction: action for action in actions}
    return [
        [str(key.idKey), place_of(key), key.icon, *_bound_to(key, by_id), key.dmId]
        for key in keys
    ]


def _bound_to(key: Key, by_id: dict[int, Action]) -> list[str]:
    action = by_id.get(key.idAction)
    return [f"{key.idAction} {action.label}", does(action)] if action else [f"{key.idAction} (gone)", ""]


KEY_TITLES = ("key", "place", "icon", "triggers", "which does", "dmId")
