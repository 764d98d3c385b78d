"""The power fails: what was answered is on the disk, and the rest is not half there."""

import os
import random
import signal
import sqlite3
import time
from contextlib import closing
from pathlib import Path
from typing import Callable, Iterator

import pytest

from mounts import skipped_where_nothing_can_be_mounted
from rollout import random_rollout
from sandbox.client import Client
from sandbox.names import LIFECYCLE
from sandbox.settings import write_settings
from writing.ledger import Ledger
from writing.power import Disk
from writing.provisioned import Provisioned, users_own
from writing.restarts import NOTHING_MADE, RestartedService
from writing.user import MOST_IN_FLIGHT, SEED, TO_REPEAT, User
from writing.writes import Rows

CUT_IN_A_START = 0.25
"""The share of the cuts in the midst of work that come while the service starts and merges a rollout."""


@pytest.fixture
def disk(tmp_path) -> Iterator[Disk]:
    with skipped_where_nothing_can_be_mounted():
        the_disk = Disk(tmp_path)
    try:
        yield the_disk
    finally:
        the_disk.remove()


class Phone:
    """A phone that loses its power again and again, and is given another rollout every time."""

    def __init__(
        self, service: RestartedService, client: Client, disk: Disk, settings_dir: Path
    ) -> None:
        self._client = client
        self._disk = disk
        self._settings_dir = settings_dir
        self.service = service
        self.source = random.Random(SEED)
        self.merges_cut = 0
        self.merges_right = 0
        self._begin_anew()
        self._roll_out()
        service.start()
        self._look()

    def _begin_anew(self) -> None:
        self.ledger = Ledger(NOTHING_MADE)
        self.user = User(self._client, self.ledger, self.source)
        self._provisioned = Provisioned()

    def _roll_out(self) -> None:
        self._rollout = random_rollout(self.source)
        write_settings(self._settings_dir, self._rollout.settings)

    def _wait_a_while(self, at_most: float) -> None:
        time.sleep(self.source.uniform(0, at_most))

    # Cuts

    def lose_power(self) -> None:
        """Everything ends at once, and what is on the disk is all there is.

        The disk goes down over some milliseconds, in which a sync may still claim to have succeeded. So the
        service is held first: without power nobody would hear such an answer.
        """
        self.service.module.send_signal(signal.SIGSTOP)
        self._disk.cut_power()
        self.service.kill()
        self.ledger.settle()
        self._disk.restore_power()
        self._roll_out()

    def lose_power_in_the_midst_of_writes(self) -> None:
        count = self.source.randint(1, MOST_IN_FLIGHT)
        seconds = self.user.write_all(count)
        self.user.write_until(time.monotonic() + self.source.uniform(0, seconds), count)
        self.lose_power()

    def lose_power_in_a_start(self) -> None:
        self.service.launch()
        self._wait_a_while(self.service.seconds_to_start)
        self._lose_power_in_a_merge()
        log = self.service.module.log.texts("debug")
        self.merges_cut += any(text.startswith("Processing ") for text in log)

    def lose_power_in_a_reset(self) -> None:
        self._client.send("restoreDefault", interface=LIFECYCLE)
        self._client.connection.flush()
        self._wait_a_while(self.service.seconds_to_start / 20)
        self._lose_power_in_a_merge()

    def _lose_power_in_a_merge(self) -> None:
        self._rollout_cut_short = self._rollout
        self._provisioned.cut_short(self._rollout)
        self.lose_power()

    def come_up_and_lose_power(self) -> None:
        """Loses power as soon as the name is on the bus; the whole rollout has to be on the disk."""
        self.service.start()
        self._lose_power_after_a_merge()

    def restore_and_lose_power(self) -> None:
        """As `come_up_and_lose_power`, as soon as a restore is answered."""
        self._client.call("restoreDefault", interface=LIFECYCLE)
        self._begin_anew()
        self._lose_power_after_a_merge()

    def _lose_power_after_a_merge(self) -> None:
        rollout = self._rollout
        self.lose_power()
        self._provisioned.check(rollout, self.service.left())

    # What is left

    def come_up(self) -> None:
        self._come_up_with(self.service.left())

    def come_up_reset_or_not(self) -> bool:
        """As `come_up`, after a cut in a reset; tells whether the reset was done by then."""
        left = self.service.left()
        was_reset = users_own(left) != self.ledger.confirmed
        if was_reset:
            self._begin_anew()
            self._provisioned.cut_short(self._rollout_cut_short)
        self._come_up_with(left)
        return was_reset

    def _come_up_with(self, left: Rows) -> None:
        # Looked at before the start: its merge would mend what the one before it left half done.
        self.ledger.check(users_own(left))
        self._provisioned.check_left(left)
        self.service.start()
        assert self.service.data_was_kept()
        self._look()

    def _look(self) -> None:
        found = self.service.found()
        self.ledger.check(users_own(found))
        self._provisioned.check(self._rollout, found)
        self.merges_right += 1
        self.user.provisioned_actions = self._provisioned.action_ids

    def report_merges(self, figures: Callable[[str], None], cuts: str) -> None:
        figures(f"{cuts}: {self.merges_right} merges right, 0 rows lost (seed {SEED})")

    def report(self, figures: Callable[[str], None], cuts: str) -> None:
        figures(f"{cuts}, {self.ledger.summary()}; {self.merges_right} merges right (seed {SEED})")
        assert self.ledger.acknowledged
        self.ledger.assert_balanced()


@pytest.fixture
def phone(launch, client, disk, settings_dir, settings_manager) -> Iterator[Phone]:
    print(TO_REPEAT)
    service = RestartedService(launch, client, disk.path / "data")
    yield Phone(service, client, disk, settings_dir)
    service.kill()


def test_what_was_just_answered_survives_a_power_cut(phone, amount, figures):
    cuts = amount(50, 1000)
    for _ in range(cuts):
        for _ in range(phone.source.randint(1, 6)):
            phone.user.write_and_wait()
        phone.lose_power()
        phone.come_up()
    phone.report(figures, f"{cuts} power cuts right after an answer")


def test_a_power_cut_in_the_midst_of_work_takes_nothing_that_was_answered(phone, amount, figures):
    cuts = amount(50, 1000)
    starts_cut = 0
    for _ in range(cuts):
        if phone.source.random() < CUT_IN_A_START:
            starts_cut += 1
            phone.service.kill()
            phone.lose_power_in_a_start()
        else:
            phone.lose_power_in_the_midst_of_writes()
        phone.come_up()
    starts = f"{starts_cut} of them in a start and {phone.merges_cut} of these in its merge"
    phone.report(figures, f"{cuts} power cuts in the midst of work, {starts}")
    assert phone.ledger.in_doubt and phone.ledger.done_in_doubt
    # A selection may be too small for these.
    assert phone.merges_cut >= amount(0, 1), "no merge was cut"
    assert phone.ledger.moves_cut >= amount(0, 1), "no move was cut"


def test_a_power_cut_in_a_reset_leaves_it_done_wholly_or_not_at_all(phone, amount, figures):
    cuts = amount(25, 250)
    resets = 0
    for _ in range(cuts):
        phone.user.write_all(10)
        phone.lose_power_in_a_reset()
        resets += phone.come_up_reset_or_not()
        phone.ledger.assert_balanced()
    figures(
        f"{cuts} power cuts in a reset: {cuts - resets} undid it, {resets} came after it, "
        f"0 tore it (seed {SEED})"
    )
    assert min(resets, cuts - resets) >= amount(0, 1), "all of them undone, or none"


# A merge is synced once, at its end


def test_a_power_cut_right_after_the_name_appeared_loses_nothing_of_the_merge(
    phone, amount, figures
):
    cuts = amount(10, 100)
    for _ in range(cuts):
        phone.lose_power()
        phone.come_up_and_lose_power()
        phone.come_up()
    phone.report_merges(figures, f"{cuts} power cuts right after the name appeared")


def test_a_power_cut_right_after_a_restore_was_answered_loses_nothing_of_the_merge(
    phone, amount, figures
):
    cuts = amount(10, 100)
    for _ in range(cuts):
        phone.restore_and_lose_power()
        phone.come_up()
    phone.report_merges(figures, f"{cuts} power cuts right after a restore was answered")


def test_a_write_that_is_answered_directly_after_a_merge_survives_a_power_cut(
    phone, amount, figures
):
    cuts = amount(20, 200)
    for _ in range(cuts):
        phone.user.write_and_wait()
        phone.lose_power()
        phone.come_up()
    phone.report(figures, f"{cuts} power cuts right after the first answer after a merge")


# That a cut takes what is not on the disk


def test_a_power_cut_takes_a_file_that_was_not_synced_and_leaves_one_that_was(disk, figures):
    cuts = 10
    lost = 0
    for number in range(cuts):
        unsynced, synced = disk.path / f"unsynced {number}", disk.path / f"synced {number}"
        with open(synced, "w", encoding="utf-8") as file:
            file.write("safe")
            file.flush()
            os.fsync(file.fileno())
        unsynced.write_text("not safe", encoding="utf-8")
        disk.cut_power()
        disk.restore_power()
        lost += not unsynced.exists()
        assert synced.read_text(encoding="utf-8") == "safe"
    figures(f"{cuts} power cuts: {lost} of as many unsynced files lost, and no synced one")
    assert lost == cuts


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
    figures(f"{cuts} power cuts: {lost} of as many rows that were acknowledged without care lost")
    assert lost
