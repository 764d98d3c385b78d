"""Checking and ending the installed service."""

from bus_users import NAME, BusUser
from sandbox.loop import wait_until
from sandbox.names import LIFECYCLE
from target_root import TargetRoot

DATABASE = "data/ZELApplication/ZelProgrammableKeys/zelprogrammablekeys.data"


def has_owner(user: BusUser, name: str) -> bool:
    return "true" in user.ask_bus("NameHasOwner", f"string:{name}").reply


def is_running(user: BusUser) -> bool:
    return has_owner(user, NAME)


def stop(root_user: BusUser) -> None:
    """Ends the service if it runs."""
    if is_running(root_user):
        assert not root_user.call(f"{LIFECYCLE}.stop").error
        wait_until(lambda: not is_running(root_user), "the service's name has no owner")


def process_owner(root: TargetRoot, root_user: BusUser) -> str:
    """The user of the process that owns the service's name."""
    number = root_user.ask_bus("GetConnectionUnixUser", f"string:{NAME}").reply.split()[-1]
    return root.demand("id", "-nu", number).strip()
