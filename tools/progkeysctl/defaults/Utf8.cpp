#include "defaults/Utf8.h"

#include "outcome/Failure.h"

namespace defaults {

QString decodeUtf8(const QByteArray &bytes)
{
    // Behind a letter a byte order mark is not taken for one.
    const QByteArray guarded = 'x' + bytes;
    return QString::fromUtf8(guarded.constData(), static_cast<int>(guarded.size())).mid(1);
}

QByteArray requireUtf8(QByteArray bytes, const QString &file)
{
    const QByteArray mark = QByteArrayLiteral("\xef\xbb\xbf");
    if (bytes.startsWith(mark))
        bytes.remove(0, static_cast<int>(mark.size()));
    if (decodeUtf8(bytes).toUtf8() != bytes)
        throw Failure{ExitStatus::InvalidText, QStringLiteral("%1 is not UTF-8").arg(file),
                      QStringLiteral("Save it in that encoding.")};
    return bytes;
}

QString lineOf(const QByteArray &bytes, qint64 offset, const QString &file)
{
    const auto lines = bytes.left(static_cast<int>(offset)).count('\n');
    return QStringLiteral("line %1 of %2").arg(QString::number(lines + 1), file);
}

} // namespace defaults
