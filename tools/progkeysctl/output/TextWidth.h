#pragma once

#include <QString>

/// Text as a terminal shows it, counted in its columns.
namespace output {

/// How many columns the text takes: 2 for a wide character, none for one that combines.
int textWidth(const QString &text);

/// The text in at most `width` columns, with an ellipsis where something was left out.
QString elided(const QString &text, int width);

/// The text on one line and harmless: control characters, and those that turn the direction of
/// writing, as escapes (`\n`, `\x1b`, `\u202e`); a backslash stays as it is.
QString printable(const QString &text);

} // namespace output
