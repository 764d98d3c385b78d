"""The service in use for a long time: it ends cleanly, has leaked nothing, and is no larger than before."""

from pathlib import Path

import pytest

from model.phone import Phone
from sanitizing import end_cleanly, is_sanitized
from soaking import Soak, private_kibibytes

SEED = 11
LOG_LEVEL = 6
# Large pieces of memory go back at once, so that what is measured is what is kept and not the gaps
# that the largest texts have left.
GIVE_MEMORY_BACK = {"MALLOC_MMAP_THRESHOLD_": "65536", "MALLOC_TRIM_THRESHOLD_": "65536"}
MOST_GROWTH_KIB = 256


@pytest.mark.sanitizers
def test_a_service_in_long_use_ends_cleanly_and_leaks_nothing(bin_dir, tmp_path, amount, figures):
    count = amount(4000, 200_000)
    with Phone(bin_dir, tmp_path, LOG_LEVEL) as phone:
        soak = Soak(phone, SEED)
        soak.use(count)
        end_cleanly(phone.service)
    watched = "under sanitizers" if is_sanitized(program(bin_dir)) else "plain"
    figures(f"seed {SEED}: {done(soak, count)}, {watched}; a clean end")


def test_a_service_in_long_use_takes_no_more_memory(bin_dir, tmp_path, amount, figures):
    if is_sanitized(program(bin_dir)):
        pytest.skip("sanitizers keep what is freed")
    warm_up, count = amount(1000, 20_000), amount(4000, 200_000)
    with Phone(bin_dir, tmp_path, LOG_LEVEL, GIVE_MEMORY_BACK) as phone:
        soak = Soak(phone, SEED)
        soak.use(warm_up)
        before = private_kibibytes(phone.service.pid)
        soak.use(count - warm_up)
        after = private_kibibytes(phone.service.pid)
        end_cleanly(phone.service)
    figures(f"seed {SEED}: {done(soak, count)}; {before} KiB at first, {after} KiB at the end")
    assert after - before < MOST_GROWTH_KIB, f"{after - before} KiB more"


def done(soak: Soak, count: int) -> str:
    return f"{count} operations, {soak.provisioned} rows provisioned"


def program(bin_dir: Path) -> Path:
    return bin_dir / "zelprogrammablekeys"
