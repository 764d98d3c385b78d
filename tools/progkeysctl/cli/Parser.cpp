#include "cli/Parser.h"

#include "outcome/Failure.h"
#include "outcome/Suggestion.h"

#include <algorithm>

namespace cli {
namespace {

// The word and the known words are for a suggestion.
[[noreturn]] void refuse(const Command *command, const QString &message, const QString &word = {},
                         const QStringList &known = {})
{
    const QString name = command ? QLatin1Char(' ') + command->name() : QString();
    const QString help = QStringLiteral("See \"progkeysctl%1 --help\".").arg(name);
    throw Failure{ExitStatus::Usage, message, outcome::withSuggestion(word, known, help)};
}

// A negative number is a value.
bool isOption(const QByteArray &word)
{
    bool isNumber = false;
    word.toDouble(&isNumber);
    return word.size() > 1 && word.startsWith('-') && !isNumber;
}

QList<Parameter> parametersOf(const Command *command)
{
    return command ? command->parameters + commonOptions() : commonOptions();
}

class Parser
{
public:
    Parser(const QList<Command> &commands, const QList<QByteArray> &words)
        : m_commands(commands), m_words(words)
    {
    }

    ParsedLine parse()
    {
        while (!m_words.isEmpty())
            takeWord(m_words.takeFirst());
        requireAtMostOne(
            {QStringLiteral("--system"), QStringLiteral("--session"), QStringLiteral("--address")});
        requireAtMostOne(
            {QStringLiteral("--json"), QStringLiteral("-j"), QStringLiteral("--terse")});
        return m_line;
    }

private:
    void takeWord(const QByteArray &word)
    {
        if (!m_hasOnlyArguments && word == "--")
            m_hasOnlyArguments = true;
        else if (!m_hasOnlyArguments && isOption(word))
            takeOption(word);
        else if (!m_line.command || m_line.command->isGroup())
            takeCommand(QString::fromUtf8(word));
        else
            takeArgument(word);
    }

    void takeCommand(const QString &word)
    {
        const QStringList group = m_line.command ? m_line.command->words : QStringList();
        const QStringList words = group + QStringList(word);
        const auto found =
            std::find_if(m_commands.begin(), m_commands.end(),
                         [&](const Command &command) { return command.words == words; });
        if (found == m_commands.end())
            refuse(m_line.command,
                   QStringLiteral("Unknown command \"%1\"").arg(words.join(QLatin1Char(' '))), word,
                   namesOfMembers(group));
        m_line.command = &*found;
    }

    QStringList namesOfMembers(const QStringList &group) const
    {
        QStringList names;
        const QList<Command> members = membersOf(m_commands, group);
        for (const Command &member : members)
            names.append(member.words.last());
        return names;
    }

    void takeArgument(const QByteArray &word)
    {
        for (const Parameter &parameter : m_line.command->parameters) {
            const bool isFull = !parameter.isRepeatable && m_line.arguments.has(parameter.name);
            if (parameter.isPositional() && !isFull) {
                add(parameter, word);
                return;
            }
        }
        refuse(m_line.command,
               QStringLiteral("Unexpected argument \"%1\"").arg(QString::fromUtf8(word)));
    }

    void takeOption(const QByteArray &word)
    {
        const auto equals = word.indexOf('=');
        const Parameter option = optionNamed(QString::fromUtf8(word.split('=').first()));
        if (option.isFlag()) {
            if (equals >= 0)
                refuse(m_line.command, QStringLiteral("%1 takes no value").arg(option.name));
            m_line.arguments.add(option.name, {});
        } else if (equals >= 0) {
            add(option, word.mid(equals + 1));
        } else {
            takeValues(option);
        }
    }

    Parameter optionNamed(const QString &name) const
    {
        QStringList known;
        const QList<Parameter> parameters = parametersOf(m_line.command);
        for (const Parameter &parameter : parameters) {
            if (parameter.isPositional())
                continue;
            if (name == parameter.name || name == parameter.shortName)
                return parameter;
            known.append(parameter.name);
        }
        refuse(m_line.command, QStringLiteral("Unknown option %1").arg(name), name, known);
    }

    void takeValues(const Parameter &option)
    {
        const auto hasValue = [this] { return !m_words.isEmpty() && !isOption(m_words.first()); };
        if (!hasValue())
            refuse(m_line.command, QStringLiteral("%1 requires a value").arg(option.name));
        do
            add(option, m_words.takeFirst());
        while (option.isRepeatable && hasValue());
    }

    void add(const Parameter &parameter, const QByteArray &value)
    {
        if (!parameter.isRepeatable && m_line.arguments.has(parameter.name))
            refuse(m_line.command,
                   QStringLiteral("%1 is given more than once").arg(parameter.name));
        const QString fault = parameter.check ? parameter.check(value) : QString();
        if (!fault.isEmpty())
            refuse(m_line.command, QStringLiteral("%1: \"%2\" %3")
                                       .arg(parameter.name, QString::fromUtf8(value), fault));
        m_line.arguments.add(parameter.name, value);
    }

    void requireAtMostOne(const QStringList &options) const
    {
        QStringList given;
        for (const QString &option : options)
            if (m_line.arguments.has(option))
                given.append(option);
        if (given.size() > 1)
            refuse(m_line.command,
                   QStringLiteral("%1 cannot be combined with %2").arg(given.at(1), given.at(0)));
    }

    const QList<Command> &m_commands;
    QList<QByteArray> m_words; ///< those that are left
    ParsedLine m_line;
    bool m_hasOnlyArguments = false; ///< from "--" on
};

} // namespace

ParsedLine parse(const QList<Command> &commands, const QList<QByteArray> &words)
{
    return Parser(commands, words).parse();
}

void requireComplete(const ParsedLine &line)
{
    if (!line.command || line.command->isGroup())
        refuse(line.command, QStringLiteral("A command is required"));
    for (const Parameter &parameter : line.command->parameters)
        if (parameter.isRequired && !line.arguments.has(parameter.name))
            refuse(line.command, QStringLiteral("%1 is required").arg(parameter.name));
}

} // namespace cli
