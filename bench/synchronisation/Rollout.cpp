#include "Rollout.h"

#include <QStringList>

namespace {

QString makeKey(int number, Keys kind)
{
    constexpr int keysOfModule = 24;
    if (kind == Keys::OfSet)
        return QStringLiteral("D%1,main,%1,phone,0,0,0").arg(number);
    return QStringLiteral("D%1,module,%2,phone,1,1,%3")
        .arg(QString::number(number), QString::number(number % keysOfModule),
             QString::number(number / keysOfModule));
}

} // namespace

Rollout makeRollout(int count, Keys kind)
{
    QStringList actions;
    QStringList keys;
    for (int i = 0; i < count; ++i) {
        const QString number = QString::number(i);
        actions << QStringLiteral("D%1,3,call,,%1,Office %1\\, second floor,Off %1").arg(number);
        keys << makeKey(i, kind);
    }
    return {actions.join(QLatin1Char('#')), keys.join(QLatin1Char('#'))};
}
