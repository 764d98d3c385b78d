#include "cli/Command.h"

#include <QFile>
#include <QFileInfo>

namespace cli {
namespace {

constexpr double ShortestTime = 0.001;
constexpr double LongestTime = 2'000'000;

QString numberFault(const QByteArray &value, qlonglong min, qlonglong max)
{
    bool isNumber = false;
    const qlonglong number = value.toLongLong(&isNumber);
    if (isNumber && number >= min && number <= max)
        return {};
    const ValueType widest;
    if (min == widest.min && max == widest.max)
        return QStringLiteral("is not a whole number of 64 bits");
    return QStringLiteral("is not a whole number from %1 to %2").arg(min).arg(max);
}

QString secondsFault(const QByteArray &value)
{
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    if (isNumber && seconds >= ShortestTime && seconds <= LongestTime)
        return {};
    return QStringLiteral("is not a number of seconds from 0.001 to 2000000");
}

} // namespace

QString ValueType::faultOf(const QByteArray &value) const
{
    switch (check) {
    case NotEmpty:
        return value.isEmpty() ? QStringLiteral("is empty") : QString();
    case Number:
        return numberFault(value, min, max);
    case Seconds:
        return secondsFault(value);
    case Choice:
        if (choices.contains(QString::fromUtf8(value)))
            return {};
        return QStringLiteral("is not one of %1").arg(choices.join(QStringLiteral(", ")));
    case ExistingDirectory:
        return QFileInfo(QFile::decodeName(value)).isDir()
                   ? QString()
                   : QStringLiteral("is not an existing directory");
    default:
        return {};
    }
}

Parameter Parameter::required() const
{
    Parameter result = *this;
    result.isRequired = true;
    return result;
}

Parameter Parameter::optional() const
{
    Parameter result = *this;
    result.isRequired = false;
    return result;
}

Parameter Parameter::repeatable() const
{
    Parameter result = *this;
    result.isRepeatable = true;
    return result;
}

Parameter Parameter::withShortName(const char *text) const
{
    Parameter result = *this;
    result.shortName = QString::fromLatin1(text);
    return result;
}

bool Command::isMemberOf(const QStringList &group) const
{
    return words.size() == group.size() + 1 && words.mid(0, group.size()) == group;
}

Parameter flag(const char *name, const char *help)
{
    return {QString::fromLatin1(name), {}, QString::fromUtf8(help)};
}

Parameter option(const char *name, const ValueType &type, const char *help)
{
    return {QString::fromLatin1(name), type, QString::fromUtf8(help)};
}

Parameter argument(const char *name, const ValueType &type, const char *help)
{
    return {QString::fromLatin1(name), type, QString::fromUtf8(help), true};
}

Command command(const char *words, const char *summary, const QList<Parameter> &parameters, Run run)
{
    return {QString::fromLatin1(words).split(QLatin1Char(' ')), QString::fromUtf8(summary),
            parameters, run};
}

Command group(const char *word, const char *summary)
{
    return {{QString::fromLatin1(word)}, QString::fromUtf8(summary), {}};
}

namespace type {

ValueType text(const char *name)
{
    return {QString::fromLatin1(name)};
}

ValueType nonEmptyText(const char *name)
{
    return {QString::fromLatin1(name), ValueType::NotEmpty};
}

ValueType id(const char *name)
{
    return {QString::fromLatin1(name), ValueType::Number};
}

ValueType integer(const char *name, int min, int max)
{
    return {QString::fromLatin1(name), ValueType::Number, min, max};
}

ValueType seconds()
{
    return {QStringLiteral("SECONDS"), ValueType::Seconds};
}

ValueType choice(const QStringList &choices)
{
    ValueType type{choices.join(QLatin1Char('|')), ValueType::Choice};
    type.choices = choices;
    return type;
}

ValueType file()
{
    return nonEmptyText("FILE");
}

ValueType directory()
{
    return nonEmptyText("DIR");
}

ValueType existingDirectory()
{
    return {QStringLiteral("DIR"), ValueType::ExistingDirectory};
}

} // namespace type
} // namespace cli
