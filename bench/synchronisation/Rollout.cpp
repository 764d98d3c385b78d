#include "Rollout.h"

#include <QStringList>

Rollout makeRollout(int count)
{
    constexpr int keysOfModule = 24;
    QStringList actions;
    QStringList keys;
    for (int i = 0; i < count; ++i) {
        const QString number = QString::number(i);
        actions << QStringLiteral("D%1,3,call,,%1,Office %1\\, second floor,Off %1").arg(number);
        keys << QStringLiteral("D%1,module,%2,phone,1,1,%3")
                    .arg(number, QString::number(i % keysOfModule),
                         QString::number(i / keysOfModule));
    }
    return {actions.join(QLatin1Char('#')), keys.join(QLatin1Char('#'))};
}
