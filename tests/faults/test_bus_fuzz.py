"""Calls and events at random, right and wrong ones: each call is answered once, and nothing breaks."""

import random
import tempfile
from contextlib import closing, contextmanager
from itertools import islice, repeat
from pathlib import Path
from typing import Callable, Iterable, Iterator, Sequence

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA
from fuzzing.barrage import Barrage, Fault
from fuzzing.calls import STANDARD, Call, CallMaker
from fuzzing.replay import script_of
from model.phone import Phone
from operations import HOOKS, METHODS, STOP, Operation
from replaying import keep_script, replayed
from sanitizing import check_end, end_cleanly

FIXED_SEED = 7
ANY_SEED = random.SystemRandom().randrange(2**32)
LARGEST_BURST = 32
WRONG_CALLS_OF_STOP = 100
"""Before the right one, in each round."""
BURSTS_BETWEEN_RESETS = 30
LOG_LEVEL = 6
LOG_SHOWN = 3000

Bursts = Iterable[Sequence[Call]]

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
def faults_told(phone: Phone, barrage: Barrage, seed: int) -> Iterator[None]:
    """Tells of what went wrong, and leaves a script that replays all calls since the last reset."""
    fault = None
    try:
        yield
    except Fault as caught:
        fault = caught
    if fault is not None:
        state = "runs" if phone.service.running else f"ended: {phone.service.status}"
        script = keep_script(f"calls-{seed}", script_of(barrage.since_reset))
        log = phone.service.log.raw()[-LOG_SHOWN:]
        pytest.fail(f"seed {seed}: {fault}\nThe service {state}.\n{log}\n{script}", pytrace=False)


def take_all(
    phone: Phone, barrage: Barrage, take: Callable[[Sequence[Call]], None], bursts: Bursts
) -> None:
    """Takes burst after burst, with a reset now and then so that not too much is stored."""
    for number, burst in enumerate(bursts):
        if number % BURSTS_BETWEEN_RESETS == 0:
            barrage.reset()
        take(burst)
        phone.forget_what_was_seen()
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
    with faults_told(phone, barrage, seed):
        take_all(phone, barrage, barrage.fire, bursts_of(calls, source))
    check_soundness(phone, files)
    figures(f"seed {seed}: {len(wanted)} calls, each answered once; 0 crashes")


def test_events_of_any_content_are_survived(phone, barrage, seed, source, amount, figures):
    files = open_files(phone)
    maker = CallMaker(source)
    count = amount(2000, 50_000)
    events = (maker.event() for _ in range(count))
    with faults_told(phone, barrage, seed):
        take_all(phone, barrage, barrage.send_events, bursts_of(events, source))
    check_soundness(phone, files)
    figures(f"seed {seed}: {count} events; 0 crashes")


def wrong_calls_of_stop(maker: CallMaker) -> Iterator[Call]:
    """As many as one likes."""
    return (call for call in map(maker.call, repeat(STOP)) if call.returns != "b")


def some_calls() -> list[Call]:
    """One of everything that can be called but `stop`, right or wrong."""
    maker = CallMaker(random.Random(FIXED_SEED))
    return [maker.call(operation) for operation in (*METHODS, *HOOKS, *STANDARD)]


@pytest.fixture
def launch_phone(bin_dir: Path, tmp_path: Path) -> Callable[[], Phone]:
    """Makes a phone, each in a directory of its own."""
    made: list[Path] = []

    def launch() -> Phone:
        made.append(tmp_path / f"phone-{len(made)}")
        return Phone(bin_dir, made[-1], LOG_LEVEL)

    return launch


def test_only_a_right_call_of_stop_ends_the_service(launch_phone, seed, source, amount, figures):
    rounds = amount(2, 50)
    maker = CallMaker(source)
    for _ in range(rounds):
        wrong = islice(wrong_calls_of_stop(maker), WRONG_CALLS_OF_STOP)
        others = [maker.call(source.choice(METHODS)) for _ in range(10)]
        right = Call("stop", "", (), STOP.interface, "b")
        with launch_phone() as phone, closing(Barrage(phone.client, phone.bus.address)) as barrage:
            with faults_told(phone, barrage, seed):
                take_all(phone, barrage, barrage.fire, bursts_of(wrong, source))
                barrage.fire([*others, right])
            check_end(phone.service)
    wrong_calls = rounds * WRONG_CALLS_OF_STOP
    figures(f"seed {seed}: {rounds} ends, {wrong_calls} wrong calls before, each answered")


# What would be found and replayed


def test_the_script_of_right_calls_runs_and_finds_nothing(bin_dir, tmp_path, figures):
    maker = CallMaker(random.Random(FIXED_SEED))
    calls = [*some_calls(), *(maker.event() for _ in range(30))]
    script = tmp_path / "replay.py"
    script.write_text(script_of(calls), encoding="utf-8")
    run = replayed(bin_dir, script)
    assert run.returncode == 0, run.stdout + run.stderr
    assert f"{len(calls)} calls, each answered once" in run.stdout
    figures(f"{len(calls)} calls and events replayed, none otherwise than expected")


def test_a_wrong_expectation_is_found_and_its_script_finds_it_again(
    bin_dir, tmp_path, monkeypatch, phone, barrage, figures
):
    before, calls = some_calls(), some_calls()
    calls[-1] = Call("getAllActions", "", (), None, "a{sv}")
    monkeypatch.setattr(tempfile, "tempdir", str(tmp_path))
    with pytest.raises(pytest.fail.Exception, match="not with 'a{sv}'"):
        with faults_told(phone, barrage, FIXED_SEED):
            barrage.fire(before)
            barrage.reset()
            barrage.fire(calls)
    (script,) = tmp_path.glob("progkeys-replay-*.py")
    assert script.read_text(encoding="utf-8") == script_of(calls)
    run = replayed(bin_dir, script)
    assert run.returncode == 1, run.stdout + run.stderr
    assert "not with 'a{sv}'" in run.stdout
    figures(f"{len(calls)} calls since the reset replayed, the wrong expectation found again")
