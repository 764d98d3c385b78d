#pragma once

#include <QByteArray>
#include <QString>

namespace defaults {

/// The text, from its first byte to its last: a byte order mark and U+0000 are characters like any
/// other. What is not UTF-8 comes as U+FFFD.
QString decodeUtf8(const QByteArray &bytes);

/// The text of a file in UTF-8, without a byte order mark if it has one. Throws a Failure of status
/// InvalidText if it is not UTF-8.
QByteArray requireUtf8(QByteArray bytes, const QString &file);

/// "line 3 of FILE", for a place in bytes.
QString lineOf(const QByteArray &bytes, qint64 offset, const QString &file);

} // namespace defaults
