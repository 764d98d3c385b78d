#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <limits>

namespace cli {

class Arguments;
class Session;

/// What is wrong with a value, as the end of a sentence; empty if it is valid.
using Check = std::function<QString(const QByteArray &)>;

/// An option or a positional argument of a command.
struct Parameter
{
    QString name;      ///< "--limit", or "KEY_ID" for a positional argument
    QString shortName; ///< such as "-o"; empty if there is none
    QString valueName; ///< as help shows it, such as FILE; empty for a flag
    QString term;      ///< the whole parameter as help shows it
    QString help;
    Check check; ///< null if every value is valid
    bool isRequired = false;
    bool isRepeatable = false;

    bool isPositional() const { return !name.startsWith(QLatin1Char('-')); }
    bool isFlag() const { return valueName.isEmpty(); }
};

/// An option or an argument from the form in which help shows it: "--terse", "-o, --output FILE",
/// "--match EVENT...", "KEY_ID", "[MODULE]", "[COMMAND...]". If the value is a list of words, such
/// as "pretty|short", only these are valid.
Parameter parameter(const char *term, const char *help, Check check = {});

/// The same, but the option must be given.
Parameter required(Parameter parameter);

/// A field of a `FIELD=VALUE` argument.
struct FieldHelp
{
    QString term; ///< such as "position=NUMBER"
    QString help;
};

/// What a command does once the command line is parsed.
using Run = void (*)(Session &, const Arguments &);

/// A command such as `key add`, or a group such as `key`, which does nothing itself. The whole tool
/// is a group without words.
struct Command
{
    QStringList words;
    QString summary;
    QList<Parameter> parameters;
    QStringList columns; ///< the fields of the rows that it prints; empty if it prints none
    Run run = nullptr;
    QStringList details = {}; ///< columns that a table omits unless they are selected
    QList<FieldHelp> fields = {};
    QString notes = {}; ///< shown after its options

    bool isGroup() const { return run == nullptr; }
    QString name() const { return words.join(QLatin1Char(' ')); }
};

Command command(const char *words, const char *summary, const QList<Parameter> &parameters,
                const QStringList &columns, Run run);
Command group(const QStringList &words, const char *summary);

/// The options that every command has.
const QList<Parameter> &commonOptions();

/// The commands and groups whose words are those of `group` and one more.
QList<Command> membersOf(const QList<Command> &commands, const QStringList &group);

/// Checks of values.
namespace check {
QString notEmpty(const QByteArray &value);
QString utf8(const QByteArray &value);
QString id(const QByteArray &value);
QString seconds(const QByteArray &value);
QString existingDirectory(const QByteArray &value);
Check integer(int min = std::numeric_limits<int>::min(), int max = std::numeric_limits<int>::max());
} // namespace check

} // namespace cli
