#include "defaults/Messages.h"

#include "output/TextWidth.h"

namespace defaults {

QString quoted(const QString &value)
{
    constexpr int Longest = 40;
    return QStringLiteral("`%1`").arg(output::elided(output::printable(value), Longest));
}

QString counted(int count, const QString &noun)
{
    return QStringLiteral("%1 %2%3").arg(QString::number(count), noun,
                                         count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace defaults
