"""How the service's threads are scheduled."""

import os
from pathlib import Path


def policies_of(service):
    """The policies of the main thread, and of the others."""
    others = [int(task.name) for task in Path(f"/proc/{service.pid}/task").iterdir()]
    others.remove(service.pid)
    return os.sched_getscheduler(service.pid), {os.sched_getscheduler(task) for task in others}


def test_the_bus_librarys_thread_lets_others_finish_first(service):
    assert policies_of(service) == (os.SCHED_OTHER, {os.SCHED_BATCH})


def test_a_policy_that_the_process_was_given_stays(start):
    os.sched_setscheduler(0, os.SCHED_BATCH, os.sched_param(0))
    try:
        service = start()
    finally:
        os.sched_setscheduler(0, os.SCHED_OTHER, os.sched_param(0))
    assert policies_of(service) == (os.SCHED_BATCH, {os.SCHED_BATCH})
