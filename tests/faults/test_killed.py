"""The service is killed at any moment: while a client writes, during a start, during a reset."""

import itertools
import random
import time

import pytest

from phones import NOTHING_STORED, Phone, pause
from sandbox.client import BusError
from writing.ledger import Ledger
from writing.tracing import Tracer, fatal
from writing.user import MOST_IN_FLIGHT, SEED, User

KILLED_DURING_ITS_START = 0.1
"""The share of the kills."""


def kill_during_its_start(phone: Phone, source: random.Random) -> None:
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
def test_what_was_answered_survives_kills_at_any_moment(phone, amount, figures):
    kills = amount(50, 500)
    source = random.Random(SEED)
    ledger = Ledger(NOTHING_STORED)
    user = User(phone.client, ledger, source)
    phone.start()
    for _ in range(kills):
        if source.random() < KILLED_DURING_ITS_START:
            phone.kill()
            kill_during_its_start(phone, source)
        else:
            kill_during_writes(phone, source, user, ledger)
        phone.start()
        assert phone.data_was_kept()
        ledger.check(phone.found())
    figures(f"{kills} kills, {ledger.summary()} (seed {SEED})")
    assert ledger.acknowledged and ledger.in_doubt and ledger.done_in_doubt
    # A selection may be too small for it.
    assert ledger.moves_cut >= amount(0, 1), "no move was cut"
    ledger.assert_balanced()


def test_a_phone_whose_first_start_is_killed_is_whole_after_the_next_start(
    phone, tmp_path, amount, figures
):
    kills = amount(50, 500)
    source = random.Random(SEED)
    for number in range(kills):
        phone.use_data_root(tmp_path / f"data {number}")
        kill_during_its_start(phone, source)
        phone.start()
        assert phone.found() == NOTHING_STORED, f"kill {number}, seed {SEED}"
        phone.kill()
    figures(f"{kills} kills during a first start: 0 phones not whole after the next")


def is_killed_during_a_reset(phone: Phone) -> bool:
    try:
        phone.client.restore_default()
    except BusError:
        return True
    return False


def test_a_reset_that_is_killed_at_any_of_its_writes_is_done_completely_or_not_at_all(
    phone, tmp_path, figures
):
    kept = done = 0
    for call in ("pwrite64", "fdatasync"):
        for number in itertools.count(1):
            phone.use_data_root(tmp_path / f"{call} {number}")
            phone.start()
            User(phone.client, Ledger(NOTHING_STORED), random.Random(SEED)).write_all(8)
            before = phone.found()
            with Tracer(phone.service.pid, fatal(call, number), tmp_path):
                killed = is_killed_during_a_reset(phone)
            phone.kill()
            if not killed:
                break
            phone.start()
            found = phone.found()
            assert phone.data_was_kept(), f"{call} {number}"
            assert found in (before, NOTHING_STORED), f"{call} {number}"
            kept += found == before
            done += found == NOTHING_STORED
            phone.kill()
    figures(f"{kept + done} kills during a reset: {kept} undid it, {done} came after it")
    assert kept and done
