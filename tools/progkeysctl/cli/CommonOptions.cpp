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
    return {flag("--help", "show this help and exit").withShortName("-h"),
            flag("--version", "show the version and exit").withShortName("-V"),
            flag("--system", "use the system bus (default)"),
            flag("--session", "use the session bus"),
            option("--address", type::nonEmptyText("ADDRESS"), "use the bus at this address"),
            option("--timeout", type::seconds(), "maximum wait"),
            option("--json", type::choice({QStringLiteral("pretty"), QStringLiteral("short")}),
                   "print JSON, indented or on one line"),
            flag("-j", "print JSON: pretty on a terminal, short otherwise"),
            flag("--terse", "print one line per row, with fields separated by colons"),
            option("--fields", type::nonEmptyText("FIELD,..."),
                   "print only these fields, in this order"),
            flag("--no-legend", "omit headings and totals"),
            option("--color",
                   type::choice(
                       {QStringLiteral("auto"), QStringLiteral("always"), QStringLiteral("never")}),
                   "when to use colors (default: auto)")};
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
    options.timeout = arguments.optionalSeconds("--timeout");
    options.manner.form = formFrom(arguments);
    if (arguments.has("--fields"))
        options.manner.fields = arguments.text("--fields").split(QLatin1Char(','));
    options.manner.hasLegend = !arguments.has("--no-legend");
    return options;
}

} // namespace cli
