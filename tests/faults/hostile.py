"""Values that programs often handle incorrectly."""

import math

MEBIBYTE = 2**20
INT_MIN, INT_MAX = -(2**31), 2**31 - 1
LONG_MIN, LONG_MAX = -(2**63), 2**63 - 1

INTS = (INT_MIN, INT_MIN + 1, -3, -2, -1, 0, 1, 2, 255, 65536, INT_MAX - 1, INT_MAX)
LONGS = (
    *(LONG_MIN, LONG_MIN + 1, -(2**32), INT_MIN - 1),
    *(2**31, 2**32 - 1, 2**32, 2**32 + 1, LONG_MAX - 1, LONG_MAX),
)
# Without negative numbers halfway between two integers: Qt versions round them differently.
DOUBLES = (
    *(0.0, -0.0, 5e-324, 0.5, 1.4, 1.5, 5.0, -0.4, -0.6, -1.4, 2.0**31, 1e300, -1e300),
    *(INT_MAX + 0.4, INT_MAX + 0.5, INT_MIN - 0.4, INT_MIN - 0.6, math.inf, -math.inf, math.nan),
)

# Without a leading byte order mark, which the bus library removes, and without two noncharacters
# that SQLite does not store.
TEXTS = (
    "",
    " ",
    "it's ''quoted''",
    'say "hello" and ""',
    "x'); DROP TABLE KEY; DROP TABLE ACTION; --",
    "' OR '1'='1",
    "? ?1 :a :name @b $c",
    "%1",
    "%1 %2 %L1 %% %s %n %99",
    "%_*[a-z]?",
    "\\ \\n \\0 \\' \\\\",
    "a,b#c\\,d\\#e",
    "escComa",
    "escSharpescComa",
    "".join(map(chr, range(1, 32))) + "\x7f\x80\x9f",
    "\none\r\ntwo\n",
    "  \t around \u00a0\u3000 ",
    "007",
    "1e999",
    "NULL",
    "שלום \u202eהפוך\u202c",
    "e\u0301 is not é",
    "🙂👩\u200d👩\u200d👧𝔘\U0010fffd",
    "a\ufeffb",
    "\ufdd0\ue000\u0378\U000e0001",
    '<arg type="x"/>&amp;]]>',
)

# Without non-ASCII spaces around a number: not all Qt versions skip them.
NUMBERS = (
    "0",
    "1",
    "7",
    "-1",
    "007",
    "+5",
    "-0",
    " 5 ",
    "\t5\n",
    "2147483647",
    "2147483648",
    "4294967295",
    "4294967301",
    "-2147483648",
    "-2147483649",
    "9223372036854775808",
    "18446744073709551621",
    "99999999999999999999999999",
    "",
    " ",
    "five",
    "5 5",
    "+ 5",
    "+-5",
    "--5",
    "5.0",
    "1e3",
    "0x10",
    "\uff15",
    "\u0665",
    "5;",
)
"""Texts that are numbers or resemble numbers."""

LARGE_TEXTS = ("0123456789abcdef" * (MEBIBYTE // 16), "電話🙂é" * (MEBIBYTE // 12))
"""Each text has a length of one mebibyte on the wire."""
