#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QMap>
#include <QStringList>

#include <optional>

namespace cli {

/// The values of a command's options and arguments, already checked, by the names in its `Command`.
/// A single value that is not given is empty, or 0.
class Arguments
{
public:
    void add(const QString &name, const QByteArray &value) { m_values[name].append(value); }

    bool has(const QString &name) const { return m_values.contains(name); }
    bool has(const char *name) const { return has(QString::fromLatin1(name)); }

    QList<QByteArray> values(const char *name) const
    {
        return m_values.value(QString::fromLatin1(name));
    }
    QByteArray value(const char *name) const { return values(name).value(0); }

    QStringList texts(const char *name) const
    {
        return converted(name, [](const QByteArray &value) { return QString::fromUtf8(value); });
    }
    QString text(const char *name) const { return texts(name).value(0); }

    QStringList paths(const char *name) const
    {
        return converted(name, [](const QByteArray &value) { return QFile::decodeName(value); });
    }
    QString path(const char *name) const { return paths(name).value(0); }

    qlonglong id(const char *name) const { return value(name).toLongLong(); }
    int integer(const char *name) const { return value(name).toInt(); }
    std::optional<int> optionalInteger(const char *name) const
    {
        return has(name) ? std::optional(integer(name)) : std::nullopt;
    }

private:
    template <typename Convert>
    QStringList converted(const char *name, Convert convert) const
    {
        QStringList result;
        for (const QByteArray &each : values(name))
            result.append(convert(each));
        return result;
    }

    QMap<QString, QList<QByteArray>> m_values;
};

} // namespace cli
