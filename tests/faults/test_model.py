"""Random sequences of everything that can be done to the service, held step by step against a model."""

import random
from pathlib import Path
from typing import NamedTuple, Optional

import pytest

from model import planted
from model.making import StepMaker
from model.phone import Phone
from model.reference import Reference
from model.replay import script_of
from model.shrinking import Shrinker
from model.steps import Step
from model.trial import Difference, Trial, try_steps
from replaying import keep_script, replayed

FIXED_SEED = 20
PLANTED_STEPS = 4000
"""Within which a planted difference must show; most do within a hundred."""
ANY_SEED = random.SystemRandom().randrange(2**32)


class Run(NamedTuple):
    """The steps that were taken, and what ended them early."""

    steps: list[Step]
    difference: Optional[Difference]


def run_at_random(
    bin_dir: Path, directory: Path, seed: int, count: int, reference: type[Reference] = Reference
) -> Run:
    steps: list[Step] = []
    with Phone(bin_dir, directory) as phone:
        trial = Trial(phone, reference)
        maker = StepMaker(random.Random(seed), trial.reference)
        difference = trial.begin()
        while difference is None and len(steps) < count:
            steps.append(maker.next())
            difference = trial.take(steps[-1])
        return Run(steps, difference or trial.end())


def shrunk(
    bin_dir: Path, run: Run, reference: type[Reference] = Reference, **bounds: int
) -> list[Step]:
    shrinker = Shrinker(lambda steps: try_steps(bin_dir, steps, reference), **bounds)
    return shrinker.shrink(run.steps)


def fail_with_script(bin_dir: Path, seed: int, run: Run) -> None:
    """Shrinks the run, and leaves the script that replays it, which is all that stays of it."""
    script = script_of(shrunk(bin_dir, run), Reference)
    told = keep_script(f"model-{seed}", script)
    pytest.fail(f"seed {seed}, {run.difference}\n\n{told}", pytrace=False)


@pytest.mark.parametrize(
    "seed, selection",
    [(FIXED_SEED, 1500), (ANY_SEED, 500)],
    ids=["a fixed seed", f"seed {ANY_SEED}"],
)
def test_replies_events_log_and_tables_are_those_of_the_model_after_every_step(
    bin_dir, tmp_path, amount, figures, seed, selection
):
    count = amount(selection, 20_000)
    run = run_at_random(bin_dir, tmp_path, seed, count)
    if run.difference is not None:
        fail_with_script(bin_dir, seed, run)
    assert len(run.steps) == count
    figures(f"seed {seed}: {count} steps, 0 otherwise than the model has it")


# What would be found


@pytest.mark.parametrize(
    "reference, what",
    [
        (planted.ForgetsTheIcon, "events"),
        (planted.ForgetsALine, "lines"),
        (planted.ForgetsALevel, "lines"),
        (planted.KeepsTheLabel, "table ACTION"),
        (planted.MovesNoKey, "table KEY"),
        (planted.HoldsToTheFirstMove, "table KEY"),
        (planted.TruncatesDoubles, "events"),
        (planted.GivesIdsAgain, "reply"),
        (planted.ReadsNoLimit, "settings_read"),
    ],
    ids=lambda value: getattr(value, "__name__", value),
)
def test_whatever_a_wrong_model_does_not_expect_is_found(
    bin_dir, tmp_path, figures, reference, what
):
    run = run_at_random(bin_dir, tmp_path, FIXED_SEED, PLANTED_STEPS, reference)
    assert run.difference is not None, f"{len(run.steps)} steps, and nothing found"
    assert run.difference.what.startswith(what)
    figures(f"seed {FIXED_SEED}: found in {len(run.steps)} steps: {what}")


def test_a_row_that_changes_without_a_step_is_found_after_the_next_one(bin_dir, tmp_path, figures):
    with Phone(bin_dir, tmp_path) as phone:
        trial = Trial(phone, Reference)
        assert trial.begin() is None
        assert trial.take(Step("getCapabilities")) is None
        phone.database.execute("UPDATE ACTION SET label = 'other'")
        assert "table ACTION" in trial.take(Step("getCapabilities")).what
    figures("1 row changed by another process, found")


def test_a_service_that_dies_is_found(bin_dir, tmp_path, figures):
    with Phone(bin_dir, tmp_path) as phone:
        trial = Trial(phone, Reference)
        assert trial.begin() is None
        phone.service.kill()
        assert "ended: -9" in trial.take(Step("getAllActions")).what
    figures("1 service killed, found")


def test_a_difference_is_found_shrunk_to_a_few_steps_and_replayed_by_its_script(
    bin_dir, tmp_path, figures
):
    run = run_at_random(bin_dir, tmp_path / "phone", 4, 300, planted.ForgetsTheIcon)
    assert "AOM_SET_ICON_PROPERTY_REC" in run.difference.what
    few = shrunk(bin_dir, run, planted.ForgetsTheIcon, attempts=100)
    assert len(few) <= 3 < len(run.steps), few
    script = tmp_path / "replay.py"
    script.write_text(script_of(few, planted.ForgetsTheIcon), encoding="utf-8")
    against_planted = replayed(bin_dir, script)
    assert against_planted.returncode == 1, against_planted.stderr
    assert "AOM_SET_ICON_PROPERTY_REC" in against_planted.stdout
    against_right = replayed(bin_dir, script, "model.reference:Reference")
    assert against_right.returncode == 0, against_right.stdout + against_right.stderr
    figures(f"{len(run.steps)} steps shrunk to {len(few)}; replayed wrong and right")
