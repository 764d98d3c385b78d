#pragma once

#include "client/Bus.h"
#include "client/ProgrammableKeys.h"
#include "output/Output.h"

#include <optional>

namespace cli {

class CommandLine;

/// The values of the common options.
struct Options
{
    client::BusChoice bus;
    std::optional<double> timeout; ///< seconds
    output::Manner manner;
};

/// What a command works with: the options, the output, and the bus. The bus is connected when it is
/// first used, so that other commands do not need it.
class Session
{
public:
    Session(Options options, const CommandLine &line);

    const Options &options() const { return m_options; }
    const CommandLine &line() const { return m_line; }
    output::Output &out() { return m_out; }
    client::Bus &bus();
    client::ProgrammableKeys &service();

    /// Prints a line on stderr, where it does not mix with results.
    void note(const QString &line);

    /// How long to wait for an answer or an event: --timeout, or else `defaultSeconds`.
    int timeoutMs(double defaultSeconds) const;

private:
    Options m_options;
    const CommandLine &m_line;
    output::Output m_out;
    std::optional<client::Bus> m_bus;
    std::optional<client::ProgrammableKeys> m_service;
};

} // namespace cli
