#include "output/Listing.h"

#include "text/Format.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace output {

QJsonValue jsonNumber(qlonglong number)
{
    constexpr qlonglong Safe = 1LL << 53;
    if (number < -Safe || number > Safe)
        return QString::number(number);
    return number;
}

QString displayText(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool() ? "yes"_s : "no"_s;
    case QJsonValue::Double:
        return value.toVariant().toString();
    case QJsonValue::Array: {
        QStringList parts;
        const QJsonArray array = value.toArray();
        for (const QJsonValue &part : array)
            parts.append(displayText(part));
        return parts.join(", "_s);
    }
    case QJsonValue::Object:
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        return "-"_s;
    default:
        return value.toString();
    }
}

} // namespace output
