#pragma once

#include <QString>

namespace defaults {

/// A value within a message: between backquotes, harmless, and not longer than is of use.
QString quoted(const QString &value);

/// "1 error", "2 errors".
QString counted(int count, const QString &noun);

} // namespace defaults
