#pragma once

#include <QByteArray>
#include <QString>

namespace files {

/// Stands for stdin, or stdout, in the place of a file.
const QLatin1String StandardStream("-");

/// Everything that the file, or stdin, has. Throws a Failure if it cannot be read.
QByteArray readAll(const QString &file);

/// Makes these bytes the content of the file: all of them or, with a Failure, none. A pipe or a
/// device is written to as it is. Throws a Failure if that cannot be.
void writeWhole(const QString &file, const QByteArray &bytes);

} // namespace files
