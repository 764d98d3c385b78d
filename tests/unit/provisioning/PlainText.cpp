#include "provisioning/PlainText.h"

namespace plain {
namespace {

const QString Comma = QStringLiteral(",");
const QString Sharp = QStringLiteral("#");
const QString HiddenComma = QStringLiteral("escComa");
const QString HiddenSharp = QStringLiteral("escSharp");

} // namespace

QString hideEscapes(QString text)
{
    text.replace(QStringLiteral("\\,"), HiddenComma);
    text.replace(QStringLiteral("\\#"), HiddenSharp);
    return text;
}

QList<Record> parseText(const QString &text)
{
    QList<Record> records;
    const QStringList parts = hideEscapes(text).split(Sharp);
    for (const QString &part : parts) {
        const QStringList hiddenFields = part.split(Comma);
        QStringList fields = hiddenFields;
        for (QString &field : fields) {
            field.replace(HiddenComma, Comma);
            field.replace(HiddenSharp, Sharp);
        }
        records.append({part, hiddenFields, fields});
    }
    return records;
}

} // namespace plain
