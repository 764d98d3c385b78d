#pragma once

#include "outcome/ExitStatus.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <limits>
#include <optional>

namespace cli {

class Arguments;
class Session;

/// What an option or argument takes.
struct ValueType
{
    enum Check { Any, NotEmpty, Number, Seconds, Choice, ExistingDirectory };

    QString name; ///< as help shows it, such as FILE; empty for a flag
    Check check = Any;
    qlonglong min = std::numeric_limits<qlonglong>::min(); ///< for Number
    qlonglong max = std::numeric_limits<qlonglong>::max();
    QStringList choices = {}; ///< for Choice

    /// What is wrong with a value, as the end of a sentence; empty if it is valid.
    QString faultOf(const QByteArray &value) const;
};

/// An option or a positional argument of a command.
struct Parameter
{
    QString name; ///< "--limit", or "KEY_ID" for a positional argument
    ValueType type;
    QString help;
    bool isRequired = false;
    bool isRepeatable = false;
    QString shortName = {}; ///< such as "-o"

    bool isPositional() const { return !name.startsWith(QLatin1Char('-')); }
    bool isFlag() const { return type.name.isEmpty(); }

    /// The same, changed.
    Parameter required() const;
    Parameter optional() const;
    Parameter repeatable() const;
    Parameter withShortName(const char *text) const;
};

Parameter flag(const char *name, const char *help);
Parameter option(const char *name, const ValueType &type, const char *help);

/// A positional argument, required unless `optional()`.
Parameter argument(const char *name, const ValueType &type, const char *help);

/// A field of a `FIELD=VALUE` argument.
struct FieldHelp
{
    QString term; ///< such as "position=NUMBER"
    QString help;
};

/// What a command does once the command line is understood.
using Run = ExitStatus (*)(Session &, const Arguments &);

/// A command such as `key add`, or a group such as `key`, which does nothing itself.
struct Command
{
    QStringList words;
    QString summary;
    QList<Parameter> parameters;
    Run run = nullptr;
    QList<FieldHelp> fields = {};
    QString notes = {}; ///< shown at the end of its help

    bool isGroup() const { return run == nullptr; }
    QString name() const { return words.join(QLatin1Char(' ')); }

    /// Whether help shows it in the group of these words, or at the top for none.
    bool isMemberOf(const QStringList &group) const;
};

Command command(const char *words, const char *summary, const QList<Parameter> &parameters,
                Run run);
Command group(const char *word, const char *summary);

/// Types of values.
namespace type {
ValueType text(const char *name);
ValueType nonEmptyText(const char *name);
ValueType id(const char *name);
ValueType integer(const char *name, int min = std::numeric_limits<int>::min(),
                  int max = std::numeric_limits<int>::max());
ValueType seconds();
ValueType choice(const QStringList &choices);
ValueType file();
ValueType directory();
ValueType existingDirectory();
} // namespace type

} // namespace cli
