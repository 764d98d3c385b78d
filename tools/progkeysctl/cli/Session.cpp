#include "cli/Session.h"

#include "text/Format.h"

#include <algorithm>
#include <cstdio>
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

output::Manner mannerFrom(const Arguments &arguments)
{
    output::Manner manner;
    manner.form = formFrom(arguments);
    if (arguments.has("--fields"))
        manner.fields = arguments.text("--fields").split(QLatin1Char(','));
    manner.hasLegend = !arguments.has("--no-legend");
    return manner;
}

} // namespace

Session::Session(const Arguments &arguments, const CommandLine &line)
    : m_arguments(arguments), m_line(line), m_out(mannerFrom(arguments))
{
}

client::Bus &Session::bus()
{
    if (!m_bus)
        m_bus.emplace(busFrom(m_arguments), timeoutMs(CallSeconds));
    return *m_bus;
}

client::ProgrammableKeys &Session::service()
{
    if (!m_service)
        m_service.emplace(bus());
    return *m_service;
}

void Session::note(const QString &line)
{
    m_out.flush();
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stderr);
    std::fflush(stderr);
}

int Session::timeoutMs(double defaultSeconds) const
{
    const double seconds =
        m_arguments.has("--timeout") ? m_arguments.value("--timeout").toDouble() : defaultSeconds;
    return std::max(1, static_cast<int>(seconds * 1000));
}

} // namespace cli
