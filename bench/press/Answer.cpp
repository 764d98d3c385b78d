#include "Answer.h"

#include <QDBusMetaType>
#include <QDBusVariant>

namespace {

// Stands for one argument where the bus library asks what an array is made of.
struct Argument
{
};

int argumentType = 0;

template <typename Value>
void write(QDBusArgument &out, const QString &name, const Value &value)
{
    out.beginStructure();
    out << name << QDBusVariant(QVariant::fromValue(value)) << true;
    out.endStructure();
}

QDBusArgument &operator<<(QDBusArgument &out, const Argument & /*argument*/)
{
    write(out, QString(), 0);
    return out;
}

// Asked for by the registration; nothing of this is ever read.
const QDBusArgument &operator>>(const QDBusArgument &in, Argument & /*argument*/)
{
    return in;
}

} // namespace

Q_DECLARE_METATYPE(Argument)

static QDBusArgument &operator<<(QDBusArgument &out, const Answer &answer)
{
    out.beginArray(argumentType);
    write(out, QStringLiteral("key"), answer.key);
    write(out, QStringLiteral("action"), answer.action);
    write(out, QStringLiteral("exists"), true);
    out.endArray();
    return out;
}

static const QDBusArgument &operator>>(const QDBusArgument &in, Answer & /*answer*/)
{
    return in;
}

void registerAnswer()
{
    argumentType = qDBusRegisterMetaType<Argument>();
    qDBusRegisterMetaType<Answer>();
}
