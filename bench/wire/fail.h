#pragma once

/// Prints the program's name, what failed and why, and ends the program with status 1.
_Noreturn void fail(const char *what, const char *why);

/// Calls `fail` if `result` is a negative errno, otherwise returns it.
int check(int result, const char *what);
