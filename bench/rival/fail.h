#pragma once

/// Ends the program with status 1, after a line that says what failed and why.
_Noreturn void fail(const char *what, const char *why);
