#include "LogLevelNames.h"

#include <algorithm>

namespace zel {

const QStringList &logLevelNames()
{
    static const QStringList names{QStringLiteral("emerg"),   QStringLiteral("alert"),
                                   QStringLiteral("crit"),    QStringLiteral("err"),
                                   QStringLiteral("warning"), QStringLiteral("notice"),
                                   QStringLiteral("info"),    QStringLiteral("debug")};
    return names;
}

QString logLevelName(int level)
{
    const int highest = static_cast<int>(logLevelNames().size()) - 1;
    return logLevelNames().at(std::clamp(level, 0, highest));
}

std::optional<int> logLevelNamed(const QString &name)
{
    const auto level = static_cast<int>(logLevelNames().indexOf(name));
    return level >= 0 ? std::make_optional(level) : std::nullopt;
}

} // namespace zel
