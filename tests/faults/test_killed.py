"""The service is killed at any moment: while a client writes as fast as it can, in a start, in a reset."""

import itertools
import random
import time

import pytest

from sandbox.client import BusError, Client
from writing.ledger import Ledger
from writing.restarts import NOTHING_MADE, RestartedService
from writing.tracing import Tracer, fatal
from writing.user import MOST_IN_FLIGHT, SEED, TO_REPEAT, User

KILLED_IN_ITS_START = 0.1
"""The share of the kills."""


@pytest.fixture
def service(launch, client, data_root, settings_manager) -> RestartedService:
    return RestartedService(launch, client, data_root)


def kill_in_its_start(service: RestartedService, source: random.Random) -> None:
    service.launch()
    time.sleep(source.uniform(0, service.seconds_to_start))
    service.kill()


def kill_in_the_midst_of_writes(
    service: RestartedService, source: random.Random, user: User, ledger: Ledger
) -> None:
    count = source.randint(1, MOST_IN_FLIGHT)
    seconds = user.write_all(count)
    user.write_until(time.monotonic() + source.uniform(0, seconds), count)
    service.kill()
    ledger.settle()


@pytest.mark.sanitizers
def test_what_was_answered_survives_kills_at_any_moment(service, client, amount, figures):
    print(TO_REPEAT)
    kills = amount(50, 500)
    source = random.Random(SEED)
    ledger = Ledger(NOTHING_MADE)
    user = User(client, ledger, source)
    service.start()
    for _ in range(kills):
        if source.random() < KILLED_IN_ITS_START:
            service.kill()
            kill_in_its_start(service, source)
        else:
            kill_in_the_midst_of_writes(service, source, user, ledger)
        service.start()
        assert service.data_was_kept()
        ledger.check(service.found())
    figures(f"{kills} kills, {ledger.summary()} (seed {SEED})")
    assert ledger.acknowledged and ledger.in_doubt and ledger.done_in_doubt
    # A selection may be too small for it.
    assert ledger.moves_cut >= amount(0, 1), "no move was cut"
    ledger.assert_balanced()


def test_a_phone_whose_first_start_is_killed_is_whole_after_the_next(
    launch, client, settings_manager, tmp_path, amount, figures
):
    print(TO_REPEAT)
    kills = amount(50, 500)
    source = random.Random(SEED)
    seconds_to_start = 0.0
    broken = 0
    for number in range(kills):
        service = RestartedService(launch, client, tmp_path / f"phone {number}")
        service.launch()
        time.sleep(source.uniform(0, seconds_to_start))
        service.kill()
        service.start()
        seconds_to_start = service.seconds_to_start
        broken += service.found() != NOTHING_MADE
        service.kill()
    figures(f"{kills} kills in a first start: {broken} phones not whole after the next")
    assert broken == 0


def is_killed_in_a_reset(client: Client) -> bool:
    try:
        client.restore_default()
    except BusError:
        return True
    return False


def test_a_reset_that_is_killed_at_any_of_its_writes_is_done_wholly_or_not_at_all(
    launch, client, settings_manager, tmp_path, figures
):
    print(TO_REPEAT)
    kept, done, torn = 0, 0, []
    for call in ("pwrite64", "fdatasync"):
        for number in itertools.count(1):
            service = RestartedService(launch, client, tmp_path / f"{call} {number}")
            service.start()
            user = User(client, Ledger(NOTHING_MADE), random.Random(SEED))
            user.write_all(8)
            before = service.found()
            with Tracer(service.module.pid, fatal(call, number), tmp_path):
                killed = is_killed_in_a_reset(client)
            service.kill()
            if not killed:
                break
            service.start()
            found = service.found()
            if not service.data_was_kept() or found not in (before, NOTHING_MADE):
                torn.append(f"{call} {number}")
            elif found == before:
                kept += 1
            else:
                done += 1
            service.kill()
    kills = kept + done + len(torn)
    figures(f"{kills} kills in a reset: {kept} undid it, {done} came after it, {len(torn)} tore it")
    assert not torn, torn
    assert kept and done
