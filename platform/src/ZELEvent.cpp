#include "zelcore/ZELEvent.h"

#include <algorithm>
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
    const auto found =
        std::find_if(m_arguments.cbegin(), m_arguments.cend(),
                     [&name](const Argument &argument) { return argument.name == name; });
    return found == m_arguments.cend() ? QVariant() : found->value;
}

const QVector<ZELEvent::Argument> &ZELEvent::getArguments() const
{
    return m_arguments;
}

void ZELEvent::setArguments(QVector<Argument> arguments)
{
    m_arguments = std::move(arguments);
}
