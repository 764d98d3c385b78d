"""Calls and events at random, right and wrong ones: each call is answered once, and nothing breaks."""

import random
from contextlib import closing, contextmanager
from itertools import islice
from pathlib import Path
from typing import Callable, Iterable, Iterator, Sequence

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA
from fuzzing.barrage import Barrage, Fault
from fuzzing.calls import STANDARD, Call, CallMaker
from fuzzing.replay import script_of
from model.phone import Phone
from operations import HOOKS, METHODS, STOP, Operation
from replaying import keep_script
from sanitizing import check_end, end_cleanly

FIXED_SEED = 7
ANY_SEED = random.SystemRandom().randrange(2**32)
LARGEST_BURST = 32
BURSTS_BETWEEN_RESETS = 30
LOG_LEVEL = 6
LOG_SHOWN = 3000

pytestmark = pytest.mark.sanitizers


@pytest.fixture
def phone(bin_dir: Path, tmp_path: Path) -> Iterator[Phone]:
    with Phone(bin_dir, tmp_path, LOG_LEVEL) as the_phone:
        yield the_phone


@pytest.fixture
def barrage(phone: Phone) -> Iterator[Barrage]:
    with closing(Barrage(phone.client, phone.bus.address)) as the_barrage:
        yield the_barrage


@pytest.fixture(params=[FIXED_SEED, ANY_SEED], ids=lambda seed: f"seed {seed}")
def seed(request) -> int:
    return request.param


@pytest.fixture
def source(seed: int) -> random.Random:
    return random.Random(seed)


def open_files(phone: Phone) -> int:
    return len(list(Path(f"/proc/{phone.service.pid}/fd").iterdir()))


def check_soundness(phone: Phone, files_before: int) -> None:
    """The service answers, its data are whole, it has kept no file, and it ends cleanly."""
    phone.client.round_trip()
    assert phone.database.value("PRAGMA integrity_check") == "ok"
    assert phone.database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}
    assert phone.client.get_all_actions() == phone.database.actions()
    assert phone.client.get_all_programmable_keys() == phone.database.keys()
    assert open_files(phone) == files_before
    end_cleanly(phone.service)


def bursts_of(calls: Iterator[Call], source: random.Random) -> Iterator[Sequence[Call]]:
    """A burst at a time, made when it is its turn."""
    while burst := list(islice(calls, source.randint(1, LARGEST_BURST))):
        yield burst


@contextmanager
def faults_told(phone: Phone, seed: int) -> Iterator[None]:
    """Tells of the calls that something went wrong with, and leaves a script that replays them."""
    fault = None
    try:
        yield
    except Fault as caught:
        fault = caught
    if fault is not None:
        state = "runs" if phone.service.running else f"ended: {phone.service.status}"
        script = keep_script(f"calls-{seed}", script_of(fault.calls))
        log = phone.service.log.raw()[-LOG_SHOWN:]
        pytest.fail(f"seed {seed}: {fault}\nThe service {state}.\n{log}\n{script}", pytrace=False)


def fire_all(phone: Phone, barrage: Barrage, bursts: Iterable[Sequence[Call]]) -> None:
    """Fires burst after burst, with a reset now and then so that not too much is stored."""
    for number, burst in enumerate(bursts):
        if number % BURSTS_BETWEEN_RESETS == 0:
            barrage.check_that_each_was_answered_once()
            phone.client.restore_factory()
            phone.forget_what_was_seen()
        barrage.fire(burst)
    barrage.check_that_each_was_answered_once()


@pytest.mark.parametrize(
    "operations",
    [METHODS, HOOKS, STANDARD],
    ids=["methods", "lifecycle", "standard interfaces"],
)
def test_every_call_is_answered_once_and_as_its_signature_deserves(
    phone, barrage, seed, source, amount, figures, operations: Sequence[Operation]
):
    files = open_files(phone)
    maker = CallMaker(source)
    wanted = list(operations) * amount(200, 5000)
    source.shuffle(wanted)
    calls = (maker.call(operation) for operation in wanted)
    with faults_told(phone, seed):
        fire_all(phone, barrage, bursts_of(calls, source))
    check_soundness(phone, files)
    figures(f"seed {seed}: {len(wanted)} calls, each answered once; 0 crashes")


def test_events_of_any_content_are_survived(phone, barrage, seed, source, amount, figures):
    files = open_files(phone)
    maker = CallMaker(source)
    count = amount(2000, 50_000)
    events = (maker.event() for _ in range(count))
    with faults_told(phone, seed):
        for burst in bursts_of(events, source):
            barrage.send_events(burst)
            phone.forget_what_was_seen()
    check_soundness(phone, files)
    figures(f"seed {seed}: {count} events; 0 crashes")


@pytest.fixture
def launch_phone(bin_dir: Path, tmp_path: Path) -> Callable[[], Phone]:
    """Makes a phone, each in a directory of its own."""
    made: list[Path] = []

    def launch() -> Phone:
        made.append(tmp_path / f"phone-{len(made)}")
        return Phone(bin_dir, made[-1], LOG_LEVEL)

    return launch


def test_only_a_right_call_of_stop_ends_the_service(launch_phone, seed, source, amount, figures):
    rounds, calls = amount(2, 50), 0
    maker = CallMaker(source)
    for _ in range(rounds):
        wrong = [call for call in (maker.call(STOP) for _ in range(40)) if call.returns != "b"]
        others = [maker.call(source.choice(METHODS)) for _ in range(10)]
        right = Call("stop", "", (), STOP.interface, "b")
        with launch_phone() as phone, closing(Barrage(phone.client, phone.bus.address)) as barrage:
            with faults_told(phone, seed):
                fire_all(phone, barrage, [wrong])
                barrage.fire([*others, right])
            check_end(phone.service)
        calls += len(wrong) + len(others) + 1
    figures(f"seed {seed}: {rounds} ends, {calls} calls, each answered")
