#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace cli {

/// The values of a command's options and arguments, already checked, by the names in its `Command`.
class Arguments
{
public:
    void add(const QString &name, const QByteArray &value) { m_values[name].append(value); }

    bool has(const char *name) const;
    QList<QByteArray> values(const QString &name) const { return m_values.value(name); }

    /// The value as text, or as a path; empty if it is not given.
    QString text(const char *name) const;
    QStringList texts(const char *name) const;
    QString path(const char *name) const;
    QStringList paths(const char *name) const;

    /// A number that must have been given.
    qlonglong id(const char *name) const;
    QList<qlonglong> ids(const char *name) const;
    int integer(const char *name) const;

    std::optional<int> optionalInteger(const char *name) const;
    std::optional<double> optionalSeconds(const char *name) const;

private:
    QByteArray value(const char *name) const;

    QMap<QString, QList<QByteArray>> m_values;
};

} // namespace cli
