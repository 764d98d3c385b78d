"""The power fails: what was answered is on the disk, and nothing else is half done."""

import random
import signal
import sqlite3
import time
from contextlib import closing
from typing import Callable, Iterator

import pytest

from mounts import skip_if_mounting_fails
from phones import NOTHING_STORED, Phone, pause
from rollout import random_rollout
from sandbox.names import LIFECYCLE
from writing.ledger import Ledger
from writing.power import Disk
from writing.provisioned import Provisioned, users_own
from writing.user import MOST_IN_FLIGHT, SEED, User
from writing.writes import Rows

CUT_DURING_A_START = 0.25
"""The share of the cuts during work that come while the service starts and merges a rollout."""


@pytest.fixture
def disk(tmp_path) -> Iterator[Disk]:
    with skip_if_mounting_fails():
        the_disk = Disk(tmp_path)
    try:
        yield the_disk
    finally:
        the_disk.remove()


class Experiment:
    """A phone that loses its power again and again, and gets another rollout each time."""

    def __init__(self, phone: Phone, disk: Disk) -> None:
        self._phone = phone
        self._disk = disk
        self.source = random.Random(SEED)
        self.merges_cut = 0
        self.merges_right = 0
        self._begin_again()
        self._roll_out()
        phone.use_data_root(disk.path / "data")
        phone.start()
        self._look()

    def _begin_again(self) -> None:
        self.ledger = Ledger(NOTHING_STORED)
        self.user = User(self._phone.client, self.ledger, self.source)
        self._provisioned = Provisioned()

    def _roll_out(self) -> None:
        self._rollout = random_rollout(self.source)
        self._phone.settings.values.update(self._rollout.settings)

    def _wait_a_while(self, at_most: float) -> None:
        pause(self.source.uniform(0, at_most))

    # Cuts

    def lose_power(self) -> None:
        """Everything ends at once, and what is on the disk is all there is.

        The disk goes down over some milliseconds, during which a sync may still claim success. So
        the service is stopped first: without power nobody would receive its answer.
        """
        self._phone.service.send_signal(signal.SIGSTOP)
        self._disk.cut_power()
        self._phone.kill()
        self.ledger.settle()
        self._disk.restore_power()
        self._roll_out()

    def lose_power_after_answers(self, count: int) -> None:
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
        self._wait_a_while(self._phone.seconds_to_start)
        self._lose_power_during_a_merge()
        log = self._phone.service.log.texts("debug")
        self.merges_cut += any(text.startswith("Processing ") for text in log)

    def lose_power_during_a_reset(self) -> None:
        self._phone.client.send("restoreDefault", interface=LIFECYCLE)
        self._phone.client.connection.flush()
        self._wait_a_while(self._phone.seconds_to_start / 20)
        self._lose_power_during_a_merge()

    def _lose_power_during_a_merge(self) -> None:
        self._rollout_cut_short = self._rollout
        self._provisioned.cut_short(self._rollout)
        self.lose_power()

    def lose_power_after_a_start(self) -> None:
        """As soon as the name is on the bus; the whole rollout must be on the disk."""
        self.lose_power()
        self._phone.start()
        self._lose_power_after_a_merge()

    def lose_power_after_a_restore(self) -> None:
        """As soon as the restore is answered; the whole rollout must be on the disk."""
        self._phone.client.restore_default()
        self._begin_again()
        self._lose_power_after_a_merge()

    def _lose_power_after_a_merge(self) -> None:
        rollout = self._rollout
        self.lose_power()
        self._provisioned.check(rollout, self._phone.left())

    # What is left

    def come_up(self) -> None:
        self._come_up_with(self._phone.left())

    def come_up_after_a_reset(self) -> bool:
        """As `come_up`; tells whether the reset was done before the cut."""
        left = self._phone.left()
        was_reset = users_own(left) != self.ledger.confirmed
        if was_reset:
            self._begin_again()
            self._provisioned.cut_short(self._rollout_cut_short)
        self._come_up_with(left)
        return was_reset

    def _come_up_with(self, left: Rows) -> None:
        # Checked before the start, whose merge would complete what the last one left half done.
        self.ledger.check(users_own(left))
        self._provisioned.check_left(left)
        self._phone.start()
        assert self._phone.data_was_kept()
        self._look()

    def _look(self) -> None:
        found = self._phone.found()
        self.ledger.check(users_own(found))
        self._provisioned.check(self._rollout, found)
        self.merges_right += 1
        self.user.provisioned_actions = self._provisioned.action_ids

    def report(self, figures: Callable[[str], None], cuts: str) -> None:
        figures(f"{cuts}, {self.ledger.summary()}; {self.merges_right} merges right (seed {SEED})")
        self.ledger.assert_balanced()


@pytest.fixture
def experiment(phone, disk) -> Iterator[Experiment]:
    yield Experiment(phone, disk)
    phone.kill()


def test_answered_writes_survive_a_power_cut_right_after_the_answer(experiment, amount, figures):
    cuts = amount(50, 1000)
    for number in range(cuts):
        # Every other cut comes after the first answer after a merge, which is synced otherwise.
        experiment.lose_power_after_answers(1 + number % 2 * experiment.source.randint(1, 5))
        experiment.come_up()
    experiment.report(figures, f"{cuts} power cuts right after an answer")
    assert experiment.ledger.acknowledged


def test_a_power_cut_during_work_loses_nothing_that_was_answered(experiment, amount, figures):
    cuts = amount(50, 1000)
    starts_cut = 0
    for _ in range(cuts):
        if experiment.source.random() < CUT_DURING_A_START:
            starts_cut += 1
            experiment.lose_power_during_a_start()
        else:
            experiment.lose_power_during_writes()
        experiment.come_up()
    starts = f"{starts_cut} of them during a start and {experiment.merges_cut} during its merge"
    experiment.report(figures, f"{cuts} power cuts during work, {starts}")
    assert experiment.ledger.acknowledged
    assert experiment.ledger.in_doubt and experiment.ledger.done_in_doubt
    # A selection may be too small for these.
    assert experiment.merges_cut >= amount(0, 1), "no merge was cut"
    assert experiment.ledger.moves_cut >= amount(0, 1), "no move was cut"


def test_a_power_cut_during_a_reset_leaves_it_done_completely_or_not_at_all(
    experiment, amount, figures
):
    cuts = amount(25, 250)
    resets = 0
    for _ in range(cuts):
        experiment.user.write_all(10)
        experiment.lose_power_during_a_reset()
        resets += experiment.come_up_after_a_reset()
        experiment.ledger.assert_balanced()
    figures(f"{cuts} power cuts during a reset: {cuts - resets} undid it, {resets} came after it")
    assert min(resets, cuts - resets) >= amount(0, 1), "all of them undone, or none"


# A merge is synced once, at its end


def test_a_power_cut_right_after_the_name_appears_loses_nothing_of_the_merge(
    experiment, amount, figures
):
    cuts = amount(10, 100)
    for _ in range(cuts):
        experiment.lose_power_after_a_start()
        experiment.come_up()
    experiment.report(figures, f"{cuts} power cuts right after the name appeared")


def test_a_power_cut_right_after_a_restore_is_answered_loses_nothing_of_the_merge(
    experiment, amount, figures
):
    cuts = amount(10, 100)
    for _ in range(cuts):
        experiment.lose_power_after_a_restore()
        experiment.come_up()
    experiment.report(figures, f"{cuts} power cuts right after a restore was answered")


# That a cut takes what is not on the disk


def test_a_power_cut_takes_rows_that_a_database_with_a_deleted_journal_acknowledged(disk, figures):
    cuts = 10
    lost = 0
    path = disk.path / "careless.data"
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
    figures(f"{cuts} power cuts: {lost} of {cuts} rows lost that were acknowledged without care")
    assert lost
