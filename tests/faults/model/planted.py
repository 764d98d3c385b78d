"""References that are wrong on purpose: what they do not expect of the service must be found."""

import math
from typing import Any, Optional

from model.reference import Reference
from model.steps import Moves
from sandbox.records import Action, Key


class ForgetsTheIcon(Reference):
    """Sends no icon when that of a stored module key is changed."""

    def modifyProgrammableKey(self, key: Key) -> int:
        result = super().modifyProgrammableKey(key)
        icon = "AOM_SET_ICON_PROPERTY_REC"
        self._events = [event for event in self._events if event.name != icon]
        return result


class ForgetsALine(Reference):
    """Does not log that a missing action was to be changed."""

    def _log(self, level: str, text: str) -> None:
        if text != "ZelProgrammableKeys::modifyAction(2) : fail !":
            super()._log(level, text)


class ForgetsALevel(Reference):
    """Logs a warning where it has to be an error."""

    def _log(self, level: str, text: str) -> None:
        super()._log("warning" if level == "error" else level, text)


class KeepsTheLabel(Reference):
    """Announces a modified action as it is to be, and stores it with the label that it had."""

    def modifyAction(self, action: Action) -> int:
        old = self.actions.get(action.idAction)
        result = super().modifyAction(action)
        if old is not None:
            self.actions[action.idAction] = action._replace(label=old.label)
        return result


class MovesNoKey(Reference):
    """Says that keys were moved, and moves none."""

    def changeProgrammableKeysPosition(self, _moves: Moves) -> bool:
        return True


class HoldsToTheFirstMove(Reference):
    """Of an id that comes repeatedly, takes the first position and not the last."""

    def changeProgrammableKeysPosition(self, moves: Moves) -> bool:
        return super().changeProgrammableKeysPosition(moves[::-1])


class TruncatesDoubles(Reference):
    """Takes a double in a press without what comes after the point."""

    def press(self, *arguments: tuple[str, str, Any]) -> None:
        super().press(*(_truncated(*argument) for argument in arguments))


class GivesIdsAgain(Reference):
    """Gives a key the id that the last one of the table has left."""

    def createProgrammableKey(self, key: Key) -> int:
        self._last_key = max(self.keys, default=0)
        return super().createProgrammableKey(key)


class ReadsNoLimit(Reference):
    """Does not ask for the limit."""

    def _read_setting(self, name: str) -> Optional[str]:
        text = super()._read_setting(name)
        if name == "ProgKeysMax":
            self._settings_read.remove(name)
        return text


def _truncated(name: str, signature: str, value: Any) -> tuple[str, str, Any]:
    is_finite = signature == "d" and math.isfinite(value)
    return name, signature, float(math.trunc(value)) if is_finite else value
