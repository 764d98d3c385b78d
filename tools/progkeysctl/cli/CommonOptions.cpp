#include "cli/CommonOptions.h"

#include "cli/Arguments.h"

#include <unistd.h>

namespace cli {
namespace {

client::BusChoice busFrom(const Arguments &arguments)
{
    if (arguments.has("--session"))
        return {client::BusChoice::Session, {}};
    if (arguments.has("--address"))
        return {client::BusChoice::Address, arguments.text("--address")};
    return {};
}

output::Form formFrom(const Arguments &arguments)
{
    if (arguments.has("--terse"))
        return output::Form::Terse;
    if (!arguments.has("--json") && !arguments.has("-j"))
        return output::Form::Human;
    const bool isPretty = arguments.has("--json")
                              ? arguments.text("--json") == QLatin1String("pretty")
                              : isatty(STDOUT_FILENO) == 1;
    return isPretty ? output::Form::JsonPretty : output::Form::JsonShort;
}

} // namespace

QList<Parameter> commonOptions()
{
    return {
        parameter("-h, --help", "show this help and exit"),
        parameter("-V, --version", "show the version and exit"),
        parameter("--system", "use the system bus (default)"),
        parameter("--session", "use the session bus"),
        parameter("--address ADDRESS", "use the bus at this address", check::notEmpty),
        parameter("--timeout SECONDS", "maximum wait", check::seconds),
        parameter("--json pretty|short", "print JSON, indented or on one line"),
        parameter("-j", "print JSON: pretty on a terminal, short otherwise"),
        parameter("--terse", "print one line per row, with fields separated by colons"),
        parameter("--fields FIELD,...", "print only these fields, in this order", check::notEmpty),
        parameter("--no-legend", "omit headings and totals"),
        parameter("--color auto|always|never", "when to use colors (default: auto)"),
    };
}

QList<QStringList> exclusiveOptions()
{
    return {{QStringLiteral("--system"), QStringLiteral("--session"), QStringLiteral("--address")},
            {QStringLiteral("--json"), QStringLiteral("-j"), QStringLiteral("--terse")}};
}

output::ColourChoice colourFrom(const Arguments &arguments)
{
    const QString choice = arguments.text("--color");
    if (choice == QLatin1String("always"))
        return output::ColourChoice::Always;
    return choice == QLatin1String("never") ? output::ColourChoice::Never
                                            : output::ColourChoice::Auto;
}

Options optionsFrom(const Arguments &arguments)
{
    Options options;
    options.bus = busFrom(arguments);
    if (arguments.has("--timeout"))
        options.timeout = arguments.value("--timeout").toDouble();
    options.manner.form = formFrom(arguments);
    if (arguments.has("--fields"))
        options.manner.fields = arguments.text("--fields").split(QLatin1Char(','));
    options.manner.hasLegend = !arguments.has("--no-legend");
    return options;
}

} // namespace cli
