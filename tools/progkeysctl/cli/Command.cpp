#include "cli/Command.h"

#include "text/Format.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace cli {
namespace {

QString faultUnless(bool isValid, const QString &fault)
{
    return isValid ? QString() : fault;
}

Check oneOf(const QStringList &choices)
{
    return [choices](const QByteArray &value) {
        return faultUnless(choices.contains(QString::fromUtf8(value)),
                           format("is not one of %1", choices.join(", "_s)));
    };
}

} // namespace

Parameter parameter(const char *term, const char *help, Check check)
{
    // "[", "-o, ", a name, a value and "..."; "--fields FIELD,..." is one value.
    static const QRegularExpression form(
        R"(^(\[)?(?:(-.), )?(\S+?)(?: (\S+?))?((?<!,)\.{3})?\]?$)"_s);
    const QRegularExpressionMatch match = form.match(QString::fromLatin1(term));
    Parameter result;
    result.term = match.captured();
    result.help = QString::fromUtf8(help);
    result.shortName = match.captured(2);
    result.name = match.captured(3);
    result.valueName = result.isPositional() ? result.name : match.captured(4);
    result.isRequired = result.isPositional() && match.captured(1).isEmpty();
    result.isRepeatable = !match.captured(5).isEmpty();
    result.check = result.valueName.contains(QLatin1Char('|'))
                       ? oneOf(result.valueName.split(QLatin1Char('|')))
                       : std::move(check);
    return result;
}

Parameter required(Parameter parameter)
{
    parameter.isRequired = true;
    return parameter;
}

Command command(const char *words, const char *summary, const QList<Parameter> &parameters,
                const QStringList &columns, Run run)
{
    return {QString::fromLatin1(words).split(QLatin1Char(' ')), QString::fromUtf8(summary),
            parameters, columns, run};
}

Command group(const QStringList &words, const char *summary)
{
    return {words, QString::fromUtf8(summary), {}, {}};
}

const QList<Parameter> &commonOptions()
{
    static const QList<Parameter> options = {
        parameter("-h, --help", "show this help and exit"),
        parameter("-V, --version", "show the version and exit"),
        parameter("--system", "use the system bus (default)"),
        parameter("--session", "use the session bus"),
        parameter("--address ADDRESS", "use the bus at this address", check::notEmpty),
        parameter("--timeout SECONDS", "maximum wait", check::seconds),
        parameter("--json pretty|short", "print JSON, indented or on one line"),
        parameter("-j", "print JSON: pretty on a terminal, short otherwise"),
        parameter("--terse", "print one line per row, with fields separated by colons"),
        parameter("--fields FIELD,...", "print only these fields, in this order", check::notEmpty),
        parameter("--no-legend", "omit headings and totals"),
        parameter("--color auto|always|never", "when to use colors (default: auto)"),
    };
    return options;
}

QList<Command> membersOf(const QList<Command> &commands, const QStringList &group)
{
    QList<Command> members;
    for (const Command &command : commands)
        if (!command.words.isEmpty() && command.words.mid(0, command.words.size() - 1) == group)
            members.append(command);
    return members;
}

namespace check {

QString notEmpty(const QByteArray &value)
{
    return faultUnless(!value.isEmpty(), "is empty"_s);
}

QString utf8(const QByteArray &value)
{
    return faultUnless(QString::fromUtf8(value).toUtf8() == value, "is not UTF-8"_s);
}

QString id(const QByteArray &value)
{
    bool isNumber = false;
    value.toLongLong(&isNumber);
    return faultUnless(isNumber, "is not a 64-bit integer"_s);
}

QString seconds(const QByteArray &value)
{
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    return faultUnless(isNumber && seconds >= 0.001 && seconds <= 2'000'000,
                       "is not a number of seconds from 0.001 to 2000000"_s);
}

QString existingDirectory(const QByteArray &value)
{
    return faultUnless(QFileInfo(QFile::decodeName(value)).isDir(),
                       "is not an existing directory"_s);
}

Check integer(int min, int max)
{
    return [min, max](const QByteArray &value) {
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        return faultUnless(isNumber && number >= min && number <= max,
                           format("is not an integer from %1 to %2", min, max));
    };
}

} // namespace check
} // namespace cli
