#pragma once

/// Ends the program with status 1, after a line that says what failed. `error` is a negative errno.
_Noreturn void fail(const char *what, int error);

/// As `fail` where `result` is negative; else gives it back.
int check(int result, const char *what);
