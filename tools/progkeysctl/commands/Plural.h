#pragma once

#include <QString>

namespace commands {

/// "1 key", "12 keys".
template <typename Count>
QString counted(Count count, const char *thing)
{
    const QString word = QString::fromLatin1(thing);
    return count == 1 ? QStringLiteral("1 %1").arg(word)
                      : QStringLiteral("%1 %2s").arg(QString::number(count), word);
}

} // namespace commands
