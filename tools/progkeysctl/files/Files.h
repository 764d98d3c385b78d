#pragma once

#include <QByteArray>
#include <QString>

namespace files {

/// Stands for stdin or stdout where a file is expected.
const QLatin1String StandardStream("-");

/// How messages call a file: its path, or "standard input".
QString displayName(const QString &file);

/// The content of the file or of stdin. Throws a Failure if it cannot be read.
QByteArray readAll(const QString &file);

/// Replaces the content of the file: completely or, with a Failure, not at all. Pipes, devices and
/// open files such as /dev/stdout are appended to instead.
void writeWhole(const QString &file, const QByteArray &bytes);

/// Decodes all bytes: a byte order mark and U+0000 are characters like others, and what is not
/// UTF-8 becomes U+FFFD.
QString decodeUtf8(const QByteArray &bytes);

/// The content of a file in UTF-8, without its byte order mark. Throws a Failure of status
/// InvalidText if it is not UTF-8.
QByteArray requireUtf8(QByteArray bytes, const QString &file);

} // namespace files
