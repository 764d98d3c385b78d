#include "zelcore/ZELEvent.h"

#include <utility>

void ZELEvent::setEvtName(const QString &name)
{
    m_name = name;
}

QString ZELEvent::getEvtName() const
{
    return m_name;
}

void ZELEvent::addArgument(const QVariant &value, const QString &name, bool flag)
{
    m_arguments.append({name, value, flag});
}

QVariant ZELEvent::getArgument(const QString &name) const
{
    for (const Argument &argument : m_arguments) {
        if (argument.name == name)
            return argument.value;
    }
    return {};
}

const QVector<ZELEvent::Argument> &ZELEvent::getArguments() const
{
    return m_arguments;
}

void ZELEvent::setArguments(QVector<Argument> arguments)
{
    m_arguments = std::move(arguments);
}
