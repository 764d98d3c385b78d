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

} // namespace files
