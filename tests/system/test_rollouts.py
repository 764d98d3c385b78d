"""A phone that is restarted again and again, each time under another rollout."""

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
    """What has to hold for the phone, whatever was rolled out to it and in which order."""

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
        """Each as it was rolled out, under the number that it has had from the first time on."""
        stored = self.database.actions()
        assert [action for action in stored if not action.dmId] == self.user_actions
        provisioned = {action.dmId: action for action in stored if action.dmId}
        assert len(provisioned) == len(stored) - len(self.user_actions)
        for action in expected:
            found = provisioned[action.dmId]
            number = self.numbers.setdefault(action.dmId, found.idAction)
            assert found == action._replace(idAction=number)
        # Those that were withdrawn stay; nothing else is there.
        assert {dm_id: action.idAction for dm_id, action in provisioned.items()} == self.numbers

    def _check_keys(self, expected: list[Key]) -> None:
        """Those rolled out that have an action, in their order, and the users' own."""
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
        """A user makes an action, and keys for it and for provisioned ones."""
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
def test_a_phone_comes_through_twenty_restarts_under_changing_rollouts(
    start, client, settings, database, events, seed
):
    print(f"To have this run again: {SEED_VARIABLE}={seed}")
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


def test_a_merge_that_is_cut_short_is_made_good_at_the_next_start(
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

    cut_short = launch()

    def cut_at_a_key(event: Event) -> None:
        if event.name == "KEY_CREATE_NTF":
            cut_short.kill()

    events.on_event = cut_at_a_key
    cut_short.wait_for_exit()
    events.on_event = None
    events.take_received()

    start()
    phone.check(rollout)
