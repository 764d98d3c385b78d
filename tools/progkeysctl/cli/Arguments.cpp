#include "cli/Arguments.h"

#include <QFile>

#include <algorithm>
#include <iterator>

namespace cli {
namespace {

template <typename Convert>
QStringList converted(const QList<QByteArray> &values, Convert convert)
{
    QStringList result;
    std::transform(values.begin(), values.end(), std::back_inserter(result), convert);
    return result;
}

} // namespace

QList<QByteArray> Arguments::values(const char *name) const
{
    return m_values.value(QString::fromLatin1(name));
}

QStringList Arguments::texts(const char *name) const
{
    return converted(values(name), [](const QByteArray &each) { return QString::fromUtf8(each); });
}

QString Arguments::path(const char *name) const
{
    return QFile::decodeName(value(name));
}

QStringList Arguments::paths(const char *name) const
{
    return converted(values(name), [](const QByteArray &each) { return QFile::decodeName(each); });
}

std::optional<int> Arguments::optionalInteger(const char *name) const
{
    return has(name) ? std::optional(integer(name)) : std::nullopt;
}

} // namespace cli
