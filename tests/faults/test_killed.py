"""Kills of the service during writes, starts and resets."""

import itertools
import random
import time

import pytest

from phones import INITIAL_ROWS, Phone, pause
from sandbox.client import BusError
from writing.ledger import Ledger
from writing.tracing import Tracer, killing
from writing.user import MOST_IN_FLIGHT, SEED, User

KILLED_DURING_START = 0.1
"""The share of the kills that happen during a start."""


def kill_during_start(phone: Phone, source: random.Random) -> None:
    phone.launch()
    pause(source.uniform(0, phone.seconds_to_start))
    phone.kill()


def kill_during_writes(
    phone: Phone, source: random.Random, user: User, ledger: Ledger
) -> None:
    count = source.randint(1, MOST_IN_FLIGHT)
    seconds = user.write_all(count)
    user.write_until(time.monotonic() + source.uniform(0, seconds), count)
    phone.kill()
    ledger.settle()


@pytest.mark.sanitizers
def test_acknowledged_writes_survive_kills_at_any_time(phone, amount, summarize):
    kills = amount(50, 500)
    source = random.Random(SEED)
    ledger = Ledger(INITIAL_ROWS)
    user = User(phone.client, ledger, source)
    phone.start()
    for _ in range(kills):
        if source.random() < KILLED_DURING_START:
            phone.kill()
            kill_during_start(phone, source)
        else:
            kill_during_writes(phone, source, user, ledger)
        phone.start()
        assert phone.data_was_kept()
        ledger.check(phone.stored_rows())
    summarize(f"{kills} kills, {ledger.summary()} (seed {SEED})")
    assert ledger.acknowledged and ledger.in_doubt and ledger.done_in_doubt
    # The selection may have too few kills for this.
    assert ledger.moves_cut >= amount(0, 1), "no move was interrupted"
    ledger.assert_balanced()


def test_the_data_is_complete_after_a_killed_first_start_and_another_start(
    phone, tmp_path, amount, summarize
):
    kills = amount(50, 500)
    source = random.Random(SEED)
    for number in range(kills):
        phone.use_data_root(tmp_path / f"data {number}")
        kill_during_start(phone, source)
        phone.start()
        assert phone.stored_rows() == INITIAL_ROWS, f"kill {number}, seed {SEED}"
        phone.kill()
    summarize(f"{kills} kills during a first start: all complete after the next start")


def is_killed_during_a_reset(phone: Phone) -> bool:
    try:
        phone.client.restore_default()
    except BusError:
        return True
    return False


def test_a_reset_that_is_killed_at_any_write_is_complete_or_has_no_effect(
    phone, tmp_path, summarize
):
    kept = done = 0
    for call in ("pwrite64", "fdatasync"):
        for number in itertools.count(1):
            phone.use_data_root(tmp_path / f"{call} {number}")
            phone.start()
            User(phone.client, Ledger(INITIAL_ROWS), random.Random(SEED)).write_all(8)
            before = phone.stored_rows()
            with Tracer(phone.service.pid, killing(call, number), tmp_path):
                killed = is_killed_during_a_reset(phone)
            phone.kill()
            if not killed:
                break
            phone.start()
            found = phone.stored_rows()
            assert phone.data_was_kept(), f"{call} {number}"
            assert found in (before, INITIAL_ROWS), f"{call} {number}"
            kept += found == before
            done += found == INITIAL_ROWS
            phone.kill()
    summarize(f"{kept + done} kills during a reset: {kept} undone, {done} complete")
    assert kept and done
