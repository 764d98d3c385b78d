#pragma once

#include <CLI/CLI.hpp>

#include <map>
#include <string>
#include <vector>

namespace completion {

/// A command line of which the last word is not all there: what stands before that word, and what
/// may stand in its place.
class HalfTyped
{
public:
    /// `before` are the words after the program's name, `word` is the last as far as it is typed.
    HalfTyped(const CLI::App &program, const std::vector<std::string> &before,
              const std::string &word);

    const CLI::App &program() const { return m_program; }

    /// The innermost command or group that is named.
    const CLI::App &command() const { return *m_command; }

    /// The option or positional argument that the last word may be an argument of; or null.
    const CLI::Option *wanted() const { return m_wanted; }

    /// Whether the last word may be an option or a command as well.
    bool isFree() const { return m_isFree; }

    /// What stands in the last word before the argument, such as `--json=`.
    const std::string &head() const { return m_head; }

    /// The rest of it.
    const std::string &typed() const { return m_typed; }

    /// What an option or positional argument was given already.
    const std::vector<std::string> &given(const CLI::Option &option) const;

    bool isGiven(const CLI::Option &option) const;

    /// Whether it may not be given again.
    bool isSettled(const CLI::Option &option) const;

    /// The option of the command, or of all commands, by one of its names as typed; or null.
    const CLI::Option *find(const std::string &name) const;

private:
    void take(const std::string &word);
    bool takeAsArgument(const std::string &word);
    void takeLong(const std::string &word);
    void takeShort(const std::string &word);
    void takePlain(const std::string &word);
    void begin(const CLI::Option *option);
    void begin(const CLI::Option *option, const std::string &argument);
    void settle(const std::string &word);
    const CLI::Option *nextPositional() const;

    const CLI::App &m_program;
    const CLI::App *m_command;
    std::map<const CLI::Option *, std::vector<std::string>> m_given;
    const CLI::Option *m_open = nullptr; ///< the option before, which takes an argument or more
    bool m_isArgumentMissing = false;
    bool m_isAfterMark = false; ///< behind `--`
    const CLI::Option *m_wanted = nullptr;
    bool m_isFree = false;
    std::string m_head;
    std::string m_typed;
};

} // namespace completion
