#pragma once

#include "client/Bus.h"
#include "client/ProgrammableKeys.h"
#include "output/Output.h"

#include <optional>

namespace cli {

class CommandLine;

/// What the options common to all commands say.
struct Options
{
    client::BusChoice bus;
    std::optional<double> timeout; ///< seconds
    output::Manner manner;
};

/// What a command works with: the options, the output, and the phone, connected when first asked
/// for, so that what works offline does not need one.
class Session
{
public:
    Session(Options options, const CommandLine &line);

    const Options &options() const { return m_options; }
    const CommandLine &line() const { return m_line; }
    output::Output &out() { return m_out; }
    client::Bus &bus();
    client::ProgrammableKeys &service();

    /// How long to wait for an answer or an event; what --timeout says, else `defaultSeconds`.
    int timeoutMs(double defaultSeconds) const;

private:
    Options m_options;
    const CommandLine &m_line;
    output::Output m_out;
    std::optional<client::Bus> m_bus;
    std::optional<client::ProgrammableKeys> m_service;
};

} // namespace cli
