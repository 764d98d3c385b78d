"""The steps in which a rollout is merged into what is on the phone."""

from pathlib import Path
from typing import NamedTuple

from sandbox.records import Key

from . import expected
from .merge import Merge, Rows
from .narrate import Narrator
from .phone import Phone
from .rollout import Rollout, read_rollout
from .stage import RESERVED_ACTION, Stage
from .strip import strips_of
from .words import KEY_TITLES, ON_MODULE, ON_SET, RESERVED, contrast, count_of, key_rows

LIMIT = "ProgKeysMax"
NOTHING = Rows([RESERVED_ACTION], [])
"""What is on a phone before the first merge."""


class Settings(NamedTuple):
    """The directories with what device management rolls out, at first and later."""

    first: Path
    later: Path


def first_day(rollout: Rollout) -> Rows:
    """What the rollout brings onto an empty phone, where numbers begin with 1."""
    actions = [action._replace(idAction=number) for number, action in enumerate(rollout.actions, 1)]
    numbers = {action.dmId: action.idAction for action in actions}
    keys = [
        key._replace(idKey=number, idAction=numbers.get(key.dmId, RESERVED))
        for number, key in enumerate(rollout.keys, 1)
    ]
    return Rows([RESERVED_ACTION, *actions], keys)


class Merges(Stage):
    """Starts the phone for the first time and once more, and resets it."""

    def __init__(self, phone: Phone, show: Narrator, settings: Settings) -> None:
        super().__init__(phone, show)
        self._settings = settings
        self._first, self._later = map(read_rollout, settings)

    def first_start(self) -> None:
        self.show.step("A phone is switched on for the first time, with what device management provides for it")
        self.show.act("SettingsManager starts on a bus of its own", self.phone.start_settings_manager)
        due = first_day(self._first)
        events = expected.merged(Merge(self._first, NOTHING, due))
        self.show.act("The service starts, with no data yet", self.start_service, events=events)
        self._check_all(due)
        self.show.call("getAction", RESERVED, answer=[RESERVED_ACTION])
        on_set = [key for key in self.keys if key.type == ON_SET]
        self.show.table(KEY_TITLES, key_rows(on_set, self.actions))
        self.show.strips(strips_of(self.keys, self.actions))

    def _check_all(self, due: Rows) -> None:
        """All that is there came with the rollout, except the reserved action."""
        counts = f"{count_of(len(due.actions) - 1, 'action')} and {count_of(len(due.keys), 'key')}"
        self.show.check(
            f"{counts} are provisioned, numbered from 1; beside them there is only the reserved action",
            self.rows == due,
            lambda: contrast(sum(due, []), sum(self.rows, [])),
        )

    def key_on_its_way_out(self) -> Key:
        """A provisioned key on a module, whose action will be withdrawn."""
        remaining = {action.dmId for action in self._later.actions}
        for key in self.keys:
            if key.dmId and key.dmId not in remaining and key.type == ON_MODULE:
                return key
        raise AssertionError(f"{self._settings.later} withdraws no action of a key on a module")

    def second_start(self) -> None:
        self.show.step("Device management rolls out other settings; the phone is switched off and on")
        before, of_user = self.rows, self.user_rows()

        def restart() -> None:
            self.phone.stop_service()
            self.phone.roll_out(self._settings.later)
            self.start_service()

        self.show.act(
            "The service ends, the settings change, and it starts again",
            restart,
            events=lambda _: expected.merged(Merge(self._later, before, self.rows)),
        )
        merge = Merge(self._later, before, self.rows)
        self._check_actions(merge)
        self._check_keys(merge)
        self.show.changes(merge)
        self.show.check(
            f"{count_of(len(of_user.actions), 'action')} and {count_of(len(of_user.keys), 'key')}"
            " of the user are as they were",
            self.user_rows() == of_user,
            lambda: contrast(sum(of_user, []), sum(self.user_rows(), [])),
        )

    def _check_actions(self, merge: Merge) -> None:
        withdrawn = count_of(len(merge.withdrawn), "withdrawn one")
        self.show.check(
            f"{count_of(len(merge.updated), 'action')} of the rollout keep their numbers, "
            f"{len(merge.added)} more are added, and {withdrawn} stay as they were",
            self.actions == merge.due.actions,
            lambda: contrast(merge.due.actions, self.actions),
        )

    def _check_keys(self, merge: Merge) -> None:
        withdrawn = {action.dmId for action in merge.withdrawn}
        due = [key for key in merge.made if key.dmId not in withdrawn]
        found = [key for key in self.keys if key.dmId]
        self.show.check(
            f"{count_of(len(self._later.keys), 'key')} of the rollout are made anew, with new numbers, "
            "and none for a withdrawn action",
            found == due and len(due) == len(self._later.keys),
            lambda: contrast(due, found),
        )

    def reset(self) -> None:
        self.show.step("The phone is reset: it is as if switched on for the first time now")

        def restore() -> bool:
            done = self.phone.client.restore_default()
            self.read_all()
            return done

        due = first_day(self._later)
        events = [expected.RESET, *expected.merged(Merge(self._later, NOTHING, due))]
        self.show.act("restoreDefault()", restore, answer=False, events=events)
        self._check_all(due)
