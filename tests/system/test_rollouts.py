"""Many restarts with changing provisioned defaults."""

import os
import random

import pytest

from database import RESERVED_ACTION, Database
from rollout import Rollout, random_rollout
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.client import Client
from sandbox.events import Event, EventRecorder
from sandbox.records import Action, Key

RESTARTS = 20
SEED_VARIABLE = "PROGKEYS_TEST_SEED"
FIXED_SEED = 20240229
RANDOM_SEED = int(os.environ.get(SEED_VARIABLE) or random.SystemRandom().randrange(2**32))


class Phone:
    """Tracks the expected records and checks them after each rollout."""

    def __init__(self, client: Client, database: Database, events: EventRecorder) -> None:
        self.client = client
        self.database = database
        self.events = events
        self.numbers: dict[str, int] = {}
        self.user_actions = [RESERVED_ACTION]
        self.user_keys: list[Key] = []

    def check(self, rollout: Rollout) -> None:
        self._check_actions(rollout.actions)
        self._check_keys(rollout.keys)
        self._check_events()

    def _check_actions(self, expected: list[Action]) -> None:
        """Each provisioned action has its latest content and the id of its first rollout."""
        stored = self.database.actions()
        assert [action for action in stored if not action.dmId] == self.user_actions
        provisioned = {action.dmId: action for action in stored if action.dmId}
        assert len(provisioned) == len(stored) - len(self.user_actions)
        for action in expected:
            found = provisioned[action.dmId]
            number = self.numbers.setdefault(action.dmId, found.idAction)
            assert found == action._replace(idAction=number)
        # Withdrawn actions stay, and there are no others.
        assert {dm_id: action.idAction for dm_id, action in provisioned.items()} == self.numbers

    def _check_keys(self, expected: list[Key]) -> None:
        """The provisioned keys that have an action are stored in order, and user keys are kept."""
        stored = self.database.keys()
        assert [key for key in stored if not key.dmId] == self.user_keys
        found = [key._replace(idKey=-1) for key in stored if key.dmId]
        assert found == [
            key._replace(idAction=self.numbers[key.dmId])
            for key in expected
            if key.dmId in self.numbers
        ]

    def _check_events(self) -> None:
        names = {event.name for event in self.events.take()}
        assert not names & {"KEY_DELETE_NTF", "ACTION_DELETE_NTF", "KEY_MODIFY_NTF"}
        assert "KO_PROGKEYS_DB_FULL" not in names

    def use(self, source: random.Random) -> None:
        """A user adds an action, and keys for it and for a provisioned one."""
        action = CALL._replace(label=f"user {source.randrange(1000)}")
        action = action._replace(idAction=self.client.add_action(action))
        self.user_actions.append(action)
        id_actions = [action.idAction]
        if self.numbers:
            id_actions.append(source.choice(sorted(self.numbers.values())))
        for id_action in id_actions:
            key = source.choice((SET_KEY, MODULE_KEY))._replace(idAction=id_action)
            key = key._replace(idKey=self.client.create_programmable_key(key))
            self.user_keys.append(key)
        self.events.take()


@pytest.mark.parametrize("seed", [FIXED_SEED, RANDOM_SEED], ids=lambda seed: f"seed {seed}")
def test_user_records_and_action_ids_are_kept_over_twenty_restarts_with_changing_defaults(
    start, client, settings, database, events, seed
):
    print(f"To repeat this run: {SEED_VARIABLE}={seed}")
    source = random.Random(seed)
    phone = Phone(client, database, events)
    for _ in range(RESTARTS):
        rollout = random_rollout(source)
        settings.values.update(rollout.settings)
        service = start()
        phone.check(rollout)
        if source.random() < 0.5:
            phone.use(source)
        if source.random() < 0.2:
            service.kill()
        else:
            service.stop()
    assert phone.numbers and phone.user_keys


def test_a_start_completes_a_merge_that_was_interrupted_by_a_kill(
    start, launch, client, settings, database, events
):
    source = random.Random(FIXED_SEED)
    phone = Phone(client, database, events)
    dm_ids = [f"D{number}" for number in range(100)]
    rollout = Rollout(
        [Action(-1, dm_id, 1, "call") for dm_id in dm_ids],
        [Key(-1, dm_id, -1, "main", 0, "", 0, 0, 0) for dm_id in dm_ids],
    )
    settings.values.update(rollout.settings)
    first = start()
    phone.check(rollout)
    phone.use(source)
    first.stop()

    killed = launch()

    def kill_at_a_key(event: Event) -> None:
        if event.name == "KEY_CREATE_NTF":
            killed.kill()

    events.on_event = kill_at_a_key
    killed.wait_for_exit()
    events.on_event = None
    events.take_received()

    start()
    phone.check(rollout)
