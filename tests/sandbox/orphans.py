"""Child processes that end with their parent."""

import ctypes
import os
import signal

PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None, use_errno=True)


def die_with_parent() -> None:
    """A `preexec_fn`: the kernel kills the process when its parent ends for any reason.

    The process gets its own session. Ctrl-C in a terminal then reaches only the parent, which ends
    its children in order.
    """
    os.setsid()
    _libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)
