"""Power cuts: acknowledged writes are on the disk, and no other write is incomplete."""

import random
import signal
import sqlite3
import time
from contextlib import closing
from typing import Callable, Iterator

import pytest

from mounts import skip_if_mounting_fails
from phones import INITIAL_ROWS, Phone, pause
from rollout import random_rollout
from sandbox.names import LIFECYCLE
from writing.ledger import Ledger
from writing.power import Disk
from writing.provisioned import Provisioned, user_rows
from writing.user import MOST_IN_FLIGHT, SEED, User
from writing.writes import Rows

CUT_DURING_A_START = 0.25
"""The share of the power cuts that happen while the service starts and merges a rollout."""


@pytest.fixture
def disk(tmp_path) -> Iterator[Disk]:
    with skip_if_mounting_fails():
        the_disk = Disk(tmp_path)
    try:
        yield the_disk
    finally:
        the_disk.remove()


class Experiment:
    """A phone with repeated power cuts and a new rollout after each cut."""

    def __init__(self, phone: Phone, disk: Disk) -> None:
        self._phone = phone
        self._disk = disk
        self.source = random.Random(SEED)
        self.merges_cut = 0
        self.merges_checked = 0
        self._reset_expectations()
        self._roll_out()
        phone.use_data_root(disk.path / "data")
        phone.start()
        self._check_rows()

    def _reset_expectations(self) -> None:
        self.ledger = Ledger(INITIAL_ROWS)
        self.user = User(self._phone.client, self.ledger, self.source)
        self._provisioned = Provisioned()

    def _roll_out(self) -> None:
        self._rollout = random_rollout(self.source)
        self._phone.settings.values.update(self._rollout.settings)

    def _wait_random(self, at_most: float) -> None:
        pause(self.source.uniform(0, at_most))

    # Cuts

    def lose_power(self) -> None:
        """Cuts the power of the disk and of the service.

        Shutting down the disk takes some milliseconds, during which a sync may return success
        without writing. The service is therefore stopped first, so that it sends no reply then.
        """
        self._phone.service.send_signal(signal.SIGSTOP)
        self._disk.cut_power()
        self._phone.kill()
        self.ledger.settle()
        self._disk.restore_power()
        self._roll_out()

    def lose_power_after_replies(self, count: int) -> None:
        for _ in range(count):
            self.user.write_all(1)
        self.lose_power()

    def lose_power_during_writes(self) -> None:
        count = self.source.randint(1, MOST_IN_FLIGHT)
        seconds = self.user.write_all(count)
        self.user.write_until(time.monotonic() + self.source.uniform(0, seconds), count)
        self.lose_power()

    def lose_power_during_a_start(self) -> None:
        self._phone.kill()
        self._phone.launch()
        self._wait_random(self._phone.seconds_to_start)
        self._lose_power_during_a_merge()
        log = self._phone.service.log.texts("debug")
        self.merges_cut += any(text.startswith("Processing ") for text in log)

    def lose_power_during_a_reset(self) -> None:
        self._phone.client.send("restoreDefault", interface=LIFECYCLE)
        self._phone.client.connection.flush()
        self._wait_random(self._phone.seconds_to_start / 20)
        self._lose_power_during_a_merge()

    def _lose_power_during_a_merge(self) -> None:
        self._interrupted_rollout = self._rollout
        self._provisioned.interrupt(self._rollout)
        self.lose_power()

    def lose_power_after_a_start(self) -> None:
        """Cuts the power when the name has an owner. The whole rollout must be on the disk."""
        self.lose_power()
        self._phone.start()
        self._lose_power_after_a_merge()

    def lose_power_after_a_restore(self) -> None:
        """Cuts the power after the reply to a restore. The whole rollout must be on the disk."""
        self._phone.client.restore_default()
        self._reset_expectations()
        self._lose_power_after_a_merge()

    def _lose_power_after_a_merge(self) -> None:
        rollout = self._rollout
        self.lose_power()
        self._provisioned.check(rollout, self._phone.rows_on_disk())

    # Starts after a power cut

    def start(self) -> None:
        self._start_with(self._phone.rows_on_disk())

    def start_after_a_reset(self) -> bool:
        """Starts the service. Returns whether the reset was complete before the power cut."""
        on_disk = self._phone.rows_on_disk()
        was_reset = user_rows(on_disk) != self.ledger.confirmed
        if was_reset:
            self._reset_expectations()
            self._provisioned.interrupt(self._interrupted_rollout)
        self._start_with(on_disk)
        return was_reset

    def _start_with(self, on_disk: Rows) -> None:
        # Check before the start, because its merge completes an interrupted merge.
        self.ledger.check(user_rows(on_disk))
        self._provisioned.check_interrupted(on_disk)
        self._phone.start()
        assert self._phone.data_was_kept()
        self._check_rows()

    def _check_rows(self) -> None:
        found = self._phone.stored_rows()
        self.ledger.check(user_rows(found))
        self._provisioned.check(self._rollout, found)
        self.merges_checked += 1
        self.user.provisioned_actions = self._provisioned.action_ids

    def report(self, summarize: Callable[[str], None], cuts: str) -> None:
        merges = f"{self.merges_checked} complete merges"
        summarize(f"{cuts}, {self.ledger.summary()}; {merges} (seed {SEED})")
        self.ledger.assert_balanced()


@pytest.fixture
def experiment(phone, disk) -> Iterator[Experiment]:
    yield Experiment(phone, disk)
    phone.kill()


def test_acknowledged_writes_survive_a_power_cut_after_the_reply(experiment, amount, summarize):
    cuts = amount(50, 1000)
    for number in range(cuts):
        # Every other cut is after the first write after a merge, because merges sync differently.
        experiment.lose_power_after_replies(1 + number % 2 * experiment.source.randint(1, 5))
        experiment.start()
    experiment.report(summarize, f"{cuts} power cuts after a reply")
    assert experiment.ledger.acknowledged


def test_acknowledged_writes_survive_a_power_cut_during_writes_or_a_start(
    experiment, amount, summarize
):
    cuts = amount(50, 1000)
    starts_cut = 0
    for _ in range(cuts):
        if experiment.source.random() < CUT_DURING_A_START:
            starts_cut += 1
            experiment.lose_power_during_a_start()
        else:
            experiment.lose_power_during_writes()
        experiment.start()
    starts = f"{starts_cut} of them during a start and {experiment.merges_cut} during its merge"
    experiment.report(summarize, f"{cuts} power cuts during writes, {starts}")
    assert experiment.ledger.acknowledged
    assert experiment.ledger.in_doubt and experiment.ledger.done_in_doubt
    # The selection may have too few power cuts for these.
    assert experiment.merges_cut >= amount(0, 1), "no merge was interrupted"
    assert experiment.ledger.moves_cut >= amount(0, 1), "no move was interrupted"


def test_a_reset_is_complete_or_has_no_effect_after_a_power_cut(experiment, amount, summarize):
    cuts = amount(25, 250)
    resets = 0
    for _ in range(cuts):
        experiment.user.write_all(10)
        experiment.lose_power_during_a_reset()
        resets += experiment.start_after_a_reset()
        experiment.ledger.assert_balanced()
    summarize(f"{cuts} power cuts during a reset: {cuts - resets} undone, {resets} complete")
    assert min(resets, cuts - resets) >= amount(0, 1), "all resets were undone, or none"


# A merge is synced once, at its end


def test_a_merge_is_on_the_disk_when_the_name_is_claimed(experiment, amount, summarize):
    cuts = amount(10, 100)
    for _ in range(cuts):
        experiment.lose_power_after_a_start()
        experiment.start()
    experiment.report(summarize, f"{cuts} power cuts after the name was claimed")


def test_a_merge_is_on_the_disk_when_a_restore_returns(experiment, amount, summarize):
    cuts = amount(10, 100)
    for _ in range(cuts):
        experiment.lose_power_after_a_restore()
        experiment.start()
    experiment.report(summarize, f"{cuts} power cuts after the reply to a restore")


# Check of the experiment itself


def test_a_power_cut_loses_acknowledged_rows_of_a_database_with_a_deleted_journal(disk, summarize):
    cuts = 10
    lost = 0
    path = disk.path / "unsafe.data"
    for number in range(cuts):
        with closing(sqlite3.connect(path, isolation_level=None)) as connection:
            connection.execute("PRAGMA journal_mode=DELETE")
            connection.execute("PRAGMA synchronous=FULL")
            connection.execute("CREATE TABLE IF NOT EXISTS T (number)")
            connection.execute("INSERT INTO T VALUES (?)", (number,))
            disk.cut_power()
        disk.restore_power()
        with closing(sqlite3.connect(path)) as connection:
            connection.execute("CREATE TABLE IF NOT EXISTS T (number)")
            lost += not connection.execute("SELECT 1 FROM T WHERE number = ?", (number,)).fetchall()
    summarize(f"{cuts} power cuts with a deleted journal: {lost} of {cuts} rows lost")
    assert lost
