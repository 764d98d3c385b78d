#pragma once

/// Ends the program with status 1, after a line with its name, what failed and why.
_Noreturn void fail(const char *what, const char *why);

/// Fails if `result` is a negative errno; otherwise returns it.
int check(int result, const char *what);
