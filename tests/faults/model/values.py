"""Random arguments for the steps of the model: typical and extreme values."""

from hypothesis import strategies as st

from hostile import DOUBLES, INT_MAX, INT_MIN, INTS, LONGS, NUMBERS, TEXTS
from rollout import DM_IDS
from sandbox.records import Action, Key


class Nth(int):
    """The nth stored row, counted from 0, modulo the number of rows."""

    def __repr__(self) -> str:
        return f"Nth({int(self)})"


SMALL = st.integers(0, 2)
NUMBER = SMALL | st.sampled_from(INTS)
TEXT = st.sampled_from(("a", "bell", "Rec")) | st.sampled_from(TEXTS)
CONTAINER = st.sampled_from(("main", "module", "Main", "", "it's", "%1"))
DM_ID = st.sampled_from(("",) * 2 * len(DM_IDS) + DM_IDS)
STORED = st.integers(0, 11).map(Nth)
ROW = st.one_of(
    STORED, st.integers(1, 12).map(Nth), st.sampled_from((*range(-1, 20), *INTS, *LONGS))
)
"""A stored row in two of three cases, otherwise an arbitrary id."""
ID32 = STORED | st.sampled_from((*range(-1, 20), INT_MIN, INT_MAX))

TYPE = st.sampled_from((0, 1, 1, 2))
KEYS = st.builds(Key, st.just(-1), DM_ID, st.just(-1), CONTAINER, NUMBER, TEXT, TYPE, TYPE, SMALL)
UNUSUAL_KEYS = st.builds(
    Key, st.just(-1), DM_ID, st.just(-1), TEXT, NUMBER, TEXT, NUMBER, NUMBER, NUMBER
)
ACTIONS = st.builds(Action, st.just(-1), DM_ID, NUMBER, TEXT, TEXT, TEXT, TEXT, TEXT)
MOVES = st.lists(st.tuples(ID32, NUMBER), max_size=6)

# Presses


def _argument(name: str) -> st.SearchStrategy:
    """An argument of a press: a number, a value of another type, or no argument."""
    long = st.sampled_from((*INTS, *LONGS))
    others = (
        st.just(()),
        st.tuples(st.just("s"), st.sampled_from((*NUMBERS, *TEXTS))),
        st.tuples(st.just("x"), long),
        st.tuples(st.just("t"), long.map(lambda number: number % 2**64)),
        st.tuples(st.just("u"), long.map(lambda number: number % 2**32)),
        st.tuples(st.just("d"), st.sampled_from(DOUBLES) | long.map(float)),
        st.tuples(st.just("y"), st.integers(0, 255)),
    )
    number = st.tuples(st.just("i"), SMALL)
    chosen = st.integers(0, 2).flatmap(lambda place: number if place else st.one_of(others))
    return chosen.map(lambda typed: (name, *typed))


PRESSES = (
    st.tuples(*map(_argument, ("aom_key_num", "aom_type", "addr")))
    .map(lambda arguments: [argument for argument in arguments if len(argument) == 3])
    .flatmap(st.permutations)
)

# Settings

ESCAPES = str.maketrans({",": "\\,", "#": "\\#"})
PIECES = (
    *(",", "#", "\\", "\\,", "\\#", "\\\\,", "esc", "Coma", "escComa", "escSharp", ",,,,,,", "#,"),
    *("D1", "d1", "7", " ", "a"),
)
_FIELD = (
    SMALL.map(str)
    | st.sampled_from((*NUMBERS, *TEXTS)).map(lambda text: text.translate(ESCAPES))
    | st.sampled_from(TEXTS)
)
_RECORD = st.tuples(
    st.sampled_from((*DM_IDS, "")).map(lambda dm_id: dm_id.translate(ESCAPES)),
    st.sampled_from((6, 6, 6, 6, 6, 5, 7)).flatmap(
        lambda count: st.lists(_FIELD, min_size=count, max_size=count)
    ),
).map(lambda parts: ",".join([parts[0], *parts[1]]))
_VALID_RECORD = st.tuples(
    st.sampled_from(DM_IDS).map(lambda dm_id: dm_id.translate(ESCAPES)),
    st.lists(SMALL.map(str), min_size=6, max_size=6),
).map(lambda parts: ",".join([parts[0], *parts[1]]))
VALID_PROVISIONING = st.lists(_VALID_RECORD, max_size=9).map("#".join)
PROVISIONING = st.one_of(
    VALID_PROVISIONING,
    st.lists(_RECORD, max_size=6).map("#".join),
    st.lists(st.sampled_from(PIECES), max_size=40).map("".join),
)
LIMIT = st.sampled_from(("5", "10", "30", "100")) | st.sampled_from(NUMBERS)
