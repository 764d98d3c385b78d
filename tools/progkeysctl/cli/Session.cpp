#include "cli/Session.h"

#include "outcome/Failure.h"
#include "text/Format.h"
#include "text/Suggestion.h"

#include <algorithm>
#include <unistd.h>

namespace cli {
namespace {

// The default of the bus library.
constexpr double CallSeconds = 25;

client::BusChoice busFrom(const Arguments &arguments)
{
    if (arguments.has("--address"))
        return {"address"_s, arguments.text("--address")};
    if (arguments.has("--session"))
        return {"session"_s, qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS")};
    return {"system"_s, qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS")};
}

output::Form formFrom(const Arguments &arguments)
{
    if (arguments.has("--terse"))
        return output::Form::Terse;
    if (!arguments.has("--json") && !arguments.has("-j"))
        return output::Form::Human;
    const bool isPretty = arguments.has("--json") ? arguments.text("--json") == "pretty"_s
                                                  : isatty(STDOUT_FILENO) == 1;
    return isPretty ? output::Form::JsonPretty : output::Form::JsonShort;
}

QStringList selectedFields(const Command &command, const QString &selection)
{
    QStringList fields = selection.split(QLatin1Char(','));
    for (const QString &field : fields)
        if (!command.columns.contains(field))
            throw Failure{ExitStatus::Usage, format("--fields: unknown field %1", field),
                          text::adviceOnField(field, command.columns)};
    return fields;
}

QStringList usualFields(const Command &command, output::Form form)
{
    QStringList fields = command.columns;
    if (form == output::Form::Human)
        for (const QString &detail : command.details)
            fields.removeAll(detail);
    return fields;
}

output::Manner mannerFrom(const Command &command, const Arguments &arguments)
{
    const bool isSelection = arguments.has("--fields");
    const output::Form form = formFrom(arguments);
    if (command.columns.isEmpty() && (isSelection || form == output::Form::Terse))
        throw Failure{ExitStatus::Usage,
                      "This command prints no rows: --terse and --fields do not apply"_s};
    return {form,
            isSelection ? selectedFields(command, arguments.text("--fields"))
                        : usualFields(command, form),
            !isSelection, !arguments.has("--no-legend")};
}

} // namespace

Session::Session(const Command &command, const Arguments &arguments)
    : m_arguments(arguments), m_out(mannerFrom(command, arguments))
{
}

const client::Phone &Session::phone()
{
    if (!m_phone)
        m_phone.emplace(busFrom(m_arguments), timeoutMs(CallSeconds));
    return *m_phone;
}

int Session::timeoutMs(double defaultSeconds) const
{
    const double seconds =
        m_arguments.has("--timeout") ? m_arguments.value("--timeout").toDouble() : defaultSeconds;
    return std::max(1, static_cast<int>(seconds * 1000));
}

} // namespace cli
