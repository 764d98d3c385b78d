#pragma once

#include <QString>

/// Text for a terminal.
namespace text {

/// The text on one line, with control characters and characters that change the writing direction
/// as escapes: `\n`, `\x1b`, `\u202e`. A backslash stays as it is.
QString printable(const QString &text);

/// How many columns the text takes on a terminal.
int textWidth(const QString &text);

/// The text in at most `width` columns, with an ellipsis at the end if it was cut.
QString elided(const QString &text, int width);

/// A value in a message: in backquotes, printable, cut if it is long.
QString quoted(const QString &value);

/// "1 error", "2 errors".
QString counted(qlonglong count, const QString &noun);

} // namespace text
