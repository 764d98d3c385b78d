#include "cli/Arguments.h"

#include <QFile>

namespace cli {

bool Arguments::has(const char *name) const
{
    return m_values.contains(QString::fromLatin1(name));
}

QString Arguments::text(const char *name) const
{
    return QString::fromUtf8(value(name));
}

QStringList Arguments::texts(const char *name) const
{
    QStringList texts;
    const QList<QByteArray> all = values(QString::fromLatin1(name));
    for (const QByteArray &each : all)
        texts.append(QString::fromUtf8(each));
    return texts;
}

QString Arguments::path(const char *name) const
{
    return QFile::decodeName(value(name));
}

QStringList Arguments::paths(const char *name) const
{
    QStringList paths;
    const QList<QByteArray> all = values(QString::fromLatin1(name));
    for (const QByteArray &each : all)
        paths.append(QFile::decodeName(each));
    return paths;
}

qlonglong Arguments::id(const char *name) const
{
    return value(name).toLongLong();
}

QList<qlonglong> Arguments::ids(const char *name) const
{
    QList<qlonglong> ids;
    const QList<QByteArray> all = values(QString::fromLatin1(name));
    for (const QByteArray &each : all)
        ids.append(each.toLongLong());
    return ids;
}

int Arguments::integer(const char *name) const
{
    return value(name).toInt();
}

std::optional<int> Arguments::optionalInteger(const char *name) const
{
    return has(name) ? std::optional(integer(name)) : std::nullopt;
}

std::optional<double> Arguments::optionalSeconds(const char *name) const
{
    return has(name) ? std::optional(value(name).toDouble()) : std::nullopt;
}

QByteArray Arguments::value(const char *name) const
{
    const QList<QByteArray> all = values(QString::fromLatin1(name));
    return all.isEmpty() ? QByteArray() : all.last();
}

} // namespace cli
