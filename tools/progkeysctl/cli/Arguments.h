#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
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

    QList<QByteArray> values(const char *name) const;
    QByteArray value(const char *name) const { return values(name).value(0); }

    QString text(const char *name) const { return QString::fromUtf8(value(name)); }
    QStringList texts(const char *name) const;
    QString path(const char *name) const;
    QStringList paths(const char *name) const;

    qlonglong id(const char *name) const { return value(name).toLongLong(); }
    int integer(const char *name) const { return value(name).toInt(); }
    std::optional<int> optionalInteger(const char *name) const;

private:
    QMap<QString, QList<QByteArray>> m_values;
};

} // namespace cli
