#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <QVector>

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

    void setEvtName(const QString &name);
    QString getEvtName() const;

    /// Appends an argument. Its value must be of a type that the bus knows for the event to be
    /// sent; what the flag means is up to those who agree on the event.
    void addArgument(const QVariant &value, const QString &name, bool flag);

    /// The value of the first argument of that name, or an invalid QVariant if there is none. A
    /// received structure or list comes as a QDBusArgument.
    QVariant getArgument(const QString &name) const;

    /// All arguments at once, in their order.
    const QVector<Argument> &getArguments() const;
    void setArguments(QVector<Argument> arguments);

private:
    QString m_name;
    QVector<Argument> m_arguments;
};

Q_DECLARE_METATYPE(ZELEvent)
Q_DECLARE_METATYPE(ZELEvent::Argument)
