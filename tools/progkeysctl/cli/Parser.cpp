#include "cli/Parser.h"

#include "outcome/Failure.h"
#include "text/Format.h"
#include "text/Suggestion.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace cli {
namespace {

// The name under which the library knows a parameter. It refuses some characters in the name of an
// argument, such as those of "FIELD=VALUE".
std::string nameOf(const Parameter &parameter)
{
    QString name = parameter.name;
    return parameter.isPositional() ? name.replace(QLatin1Char('='), QLatin1Char('_')).toStdString()
                                    : name.toStdString();
}

// Begins each word after "--". No word has a null character.
const std::string ArgumentMark(2, '\0');

bool isAfterMark(const std::string &word)
{
    return word.compare(0, ArgumentMark.size(), ArgumentMark) == 0;
}

// The words in reverse, as the library takes them. It would take "[1,2]" for a list and "--limit="
// for an option without its value, and would interpret the words after "--". Null characters
// prevent this.
std::vector<std::string> marked(const QList<QByteArray> &words)
{
    std::vector<std::string> marked;
    bool areArguments = false;
    for (const QByteArray &word : words) {
        if (areArguments)
            marked.push_back(ArgumentMark + word.toStdString());
        else if (word.endsWith(']') || word.endsWith('='))
            marked.push_back(word.toStdString() + '\0');
        else if (word != "--")
            marked.push_back(word.toStdString());
        areArguments = areArguments || word == "--";
    }
    std::reverse(marked.begin(), marked.end());
    return marked;
}

QByteArray valueOf(const std::string &word)
{
    return QByteArray::fromStdString(word).replace('\0', "");
}

void declare(CLI::App *app, const QList<Parameter> &parameters)
{
    for (const Parameter &parameter : parameters) {
        std::string names = nameOf(parameter);
        if (!parameter.shortName.isEmpty())
            names.insert(0, parameter.shortName.toStdString() + ',');
        CLI::Option *option =
            parameter.isFlag()
                ? app->add_flag(names)
                : app->add_option(names)->expected(1, parameter.isRepeatable ? -1 : 1);
        option->allow_extra_args(parameter.isRepeatable)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }
}

class Parser
{
public:
    explicit Parser(const QList<Command> &commands) : m_commands(commands), m_app("", "progkeysctl")
    {
        m_app.set_help_flag();
        m_app.fallthrough();
        m_app.allow_extras();
        m_app.require_subcommand(0, 1);
        declare(&m_app, commonOptions());
        for (const Command &command : commands.mid(1))
            declareCommand(command);
    }

    ParsedLine parse(const QList<QByteArray> &words)
    {
        try {
            m_app.parse(marked(words));
        } catch (const CLI::ArgumentMismatch &error) {
            const QString message = QString::fromUtf8(error.what()); // "--limit: ..."
            findCommand();
            refuse(format("%1 requires a value", message.section(QLatin1Char(':'), 0, 0)));
        }
        findCommand();
        refuseUnknown();
        for (const Parameter &parameter : parameters())
            for (const std::string &value : optionOf(parameter)->results())
                add(parameter, value);
        requireAtMostOne({"--system"_s, "--session"_s, "--address"_s});
        requireAtMostOne({"--json"_s, "-j"_s, "--terse"_s});
        if (!m_line.arguments.has("--help") && !m_line.arguments.has("--version"))
            requireComplete();
        return m_line;
    }

private:
    void declareCommand(const Command &command)
    {
        CLI::App *app = appOf(command.words.mid(0, command.words.size() - 1))
                            ->add_subcommand(command.words.last().toStdString());
        app->require_subcommand(0, 1);
        declare(app, command.parameters);
    }

    CLI::App *appOf(const QStringList &words)
    {
        CLI::App *app = &m_app;
        for (const QString &word : words)
            app = app->get_subcommand(word.toStdString());
        return app;
    }

    void findCommand()
    {
        for (const Command &command : m_commands)
            if (appOf(command.words)->parsed())
                m_line.command = &command;
    }

    QList<Parameter> parameters() const { return m_line.command->parameters + commonOptions(); }

    // The word and the known words are for a suggestion.
    [[noreturn]] void refuse(const QString &message, const QString &word = {},
                             const QStringList &known = {}) const
    {
        const QStringList words = QStringList("progkeysctl"_s) + m_line.command->words;
        const QString help = format("See \"%1 --help\".", words.join(QLatin1Char(' ')));
        throw Failure{ExitStatus::Usage, message, text::withSuggestion(word, known, help)};
    }

    // Refuses the first word that the library has left.
    void refuseUnknown() const
    {
        const std::vector<std::string> left = m_app.remaining(true);
        if (left.empty())
            return;
        const QString word = QString::fromUtf8(valueOf(left.front()));
        if (left.front().size() > 1 && left.front().front() == '-') {
            const QString name = word.section(QLatin1Char('='), 0, 0);
            if (namesOfOptions().contains(name))
                refuse(format("%1 must follow the command", name));
            // Every option of one letter is similar to every other.
            refuse(format("Unknown option %1", name), name,
                   name.size() > 2 ? namesOfOptions() : QStringList());
        }
        if (!m_line.command->isGroup() || isAfterMark(left.front()))
            refuse(format("Unexpected argument \"%1\"", word));
        const QStringList words = m_line.command->words + QStringList(word);
        refuse(format("Unknown command \"%1\"", words.join(QLatin1Char(' '))), word,
               namesOfMembers());
    }

    QStringList namesOfOptions() const
    {
        QStringList names;
        for (const Parameter &parameter : parameters())
            if (!parameter.isPositional())
                names.append(parameter.name);
        return names;
    }

    QStringList namesOfMembers() const
    {
        QStringList names;
        for (const Command &member : membersOf(m_commands, m_line.command->words))
            names.append(member.words.last());
        return names;
    }

    const CLI::Option *optionOf(const Parameter &parameter)
    {
        const CLI::Option *own =
            appOf(m_line.command->words)->get_option_no_throw(nameOf(parameter));
        return own ? own : m_app.get_option(nameOf(parameter));
    }

    void add(const Parameter &parameter, const std::string &word)
    {
        const QByteArray value = valueOf(word);
        if (!parameter.isPositional() && isAfterMark(word))
            refuse(format("%1 requires a value", parameter.name));
        if (parameter.isFlag() && value != "true")
            refuse(format("%1 takes no value", parameter.name));
        if (!parameter.isRepeatable && !parameter.isFlag() && m_line.arguments.has(parameter.name))
            refuse(format("%1 is given more than once", parameter.name));
        const QString fault = parameter.check ? parameter.check(value) : QString();
        if (!fault.isEmpty())
            refuse(format("%1: \"%2\" %3", parameter.name, QString::fromUtf8(value), fault));
        m_line.arguments.add(parameter.name, value);
    }

    void requireAtMostOne(const QStringList &options) const
    {
        QStringList given;
        for (const QString &option : options)
            if (m_line.arguments.has(option))
                given.append(option);
        if (given.size() > 1)
            refuse(format("%1 cannot be combined with %2", given.at(1), given.at(0)));
    }

    void requireComplete() const
    {
        if (m_line.command->isGroup())
            refuse("A command is required"_s);
        for (const Parameter &parameter : m_line.command->parameters)
            if (parameter.isRequired && !m_line.arguments.has(parameter.name))
                refuse(format("%1 is required", parameter.name));
    }

    const QList<Command> &m_commands;
    CLI::App m_app;
    ParsedLine m_line;
};

} // namespace

ParsedLine parse(const QList<Command> &commands, const QList<QByteArray> &words)
{
    return Parser(commands).parse(words);
}

} // namespace cli
