"""Sample rows: actions and keys of a user, and provisioned ones."""

from phones import TEST_SETTINGS
from rollout import Rollout
from samples import CALL, SET_KEY
from sandbox.records import Action, Key

D1 = Action(2, "D1", 3, "call", "", "501", "Reception", "Rec")
D2 = Action(3, "D2", 5, "open", "portal", "a,b", "Desk#1", "D")
D1_KEY = Key(3, "D1", 2, "main", 0, "ic1", 0, 0, 0)
D2_KEY = Key(4, "D2", 3, "module", 1, "ic2", 1, 1, 2)
PROVISIONED_ACTIONS = [D1, D2]
PROVISIONED_KEYS = [D1_KEY, D2_KEY]

USER_ACTION = CALL._replace(idAction=1)
USER_KEY = SET_KEY._replace(idKey=1, idAction=USER_ACTION.idAction)
USER_KEY_ON_D1 = SET_KEY._replace(idKey=2, idAction=D1.idAction, position=5)
USER_KEYS = [USER_KEY, USER_KEY_ON_D1]

SETTINGS = {**TEST_SETTINGS, **Rollout(PROVISIONED_ACTIONS, PROVISIONED_KEYS).settings}
STORED = [USER_ACTION, *PROVISIONED_ACTIONS, *USER_KEYS, *PROVISIONED_KEYS]


def without_id(keys: list[Key]) -> list[Key]:
    """The keys without their ids, because provisioned keys get new ids at each merge."""
    return [key._replace(idKey=-1) for key in keys]
