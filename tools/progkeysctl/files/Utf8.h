#pragma once

#include <QByteArray>
#include <QString>

namespace files {

/// Decodes all bytes: a byte order mark and U+0000 are characters like others, and what is not
/// UTF-8 becomes U+FFFD.
QString decodeUtf8(const QByteArray &bytes);

/// The content of a file in UTF-8, without its byte order mark. Throws a Failure of status
/// InvalidText if it is not UTF-8.
QByteArray requireUtf8(QByteArray bytes, const QString &file);

} // namespace files
