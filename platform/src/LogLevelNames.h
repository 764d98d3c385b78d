#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace zel {

/// The names of the syslog levels, from `emerg`, which is 0, to `debug`, which is 7.
const QStringList &logLevelNames();

/// The name of a level; one below 0 is named as 0, one above 7 as 7.
QString logLevelName(int level);

/// The level of exactly that name; nothing if there is none.
std::optional<int> logLevelNamed(const QString &name);

} // namespace zel
