#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "client/Phone.h"
#include "output/Output.h"

#include <optional>

namespace cli {

/// What a command works with: the output and the phone. The bus of the phone is connected when it
/// is first used, so that other commands do not need it.
class Session
{
public:
    /// The arguments have the common options. Throws a Failure of status Usage if --fields has a
    /// name that is not a column of the command, or if --fields or --terse is given for a command
    /// without columns.
    Session(const Command &command, const Arguments &arguments);

    output::Output &out() { return m_out; }
    const client::Phone &phone();

    /// The exit status is Done unless a command sets another one or throws a Failure.
    ExitStatus status() const { return m_status; }
    void exitWith(ExitStatus status) { m_status = status; }

    /// How long to wait for an answer or an event, at least 1 ms: --timeout, or else
    /// `defaultSeconds`.
    int timeoutMs(double defaultSeconds) const;

private:
    const Arguments &m_arguments;
    output::Output m_out;
    std::optional<client::Phone> m_phone;
    ExitStatus m_status = ExitStatus::Done;
};

} // namespace cli
