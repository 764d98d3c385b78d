#include "files/Utf8.h"

#include "outcome/Failure.h"

namespace files {

QString decodeUtf8(const QByteArray &bytes)
{
    // After a letter, a byte order mark is an ordinary character to Qt.
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
                      QStringLiteral("Save it as UTF-8.")};
    return bytes;
}

} // namespace files
