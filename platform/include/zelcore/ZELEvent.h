#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <QVector>

#include <utility>

/// A platform event: a name and an ordered list of named arguments.
class ZELEvent
{
public:
    struct Argument
    {
        QString name;
        QVariant value;
        bool flag = false;
    };

    void setEvtName(const QString &name) { m_name = name; }
    QString getEvtName() const { return m_name; }

    /// Appends an argument. An event can be sent only if the types of all values have a D-Bus
    /// signature. The meaning of the flag depends on the event.
    void addArgument(const QVariant &value, const QString &name, bool flag)
    {
        m_arguments.append({name, value, flag});
    }

    /// The value of the first argument with that name, or an invalid QVariant if there is none. In
    /// a received event, structures and lists are QDBusArgument objects.
    QVariant getArgument(const QString &name) const
    {
        for (const Argument &argument : m_arguments) {
            if (argument.name == name)
                return argument.value;
        }
        return {};
    }

    /// All arguments in order.
    const QVector<Argument> &getArguments() const { return m_arguments; }
    void setArguments(QVector<Argument> arguments) { m_arguments = std::move(arguments); }

private:
    QString m_name;
    QVector<Argument> m_arguments;
};

Q_DECLARE_METATYPE(ZELEvent)
Q_DECLARE_METATYPE(ZELEvent::Argument)
