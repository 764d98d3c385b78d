#include "commands/Commands.h"

#include "events/EventListener.h"
#include "events/EventText.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QRegularExpression>

namespace commands {
namespace {

// All names, or those that match one of the patterns, in which * and ? are the only wildcards.
QRegularExpression namesLike(const QStringList &patterns)
{
    if (patterns.isEmpty())
        return QRegularExpression();
    QString expression = QRegularExpression::escape(patterns.join(QLatin1Char('\n')));
    expression.replace("\\*"_s, ".*"_s).replace("\\?"_s, "."_s).replace("\\\n"_s, "|"_s);
    return QRegularExpression(QRegularExpression::anchoredPattern(expression));
}

QJsonValue timeValue(const QElapsedTimer &sinceStart, bool isSinceStart)
{
    if (isSinceStart)
        return static_cast<double>(sinceStart.elapsed()) / 1000;
    return QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
}

QString timeText(const QJsonValue &time)
{
    return time.isString() ? time.toString().section(QLatin1Char('T'), 1)
                           : "%1"_s.arg(time.toDouble(), 9, 'f', 3);
}

QString lineText(const output::Terminal &terminal, const QJsonObject &row)
{
    const QString event = text::printable(row.value("event"_s).toString());
    QStringList parts = {terminal.dim(timeText(row.value("time"_s))), terminal.bold(event)};
    const QString arguments = events::argumentsText(row);
    if (!arguments.isEmpty())
        parts.append(arguments);
    return parts.join("  "_s);
}

void monitor(cli::Session &session, const cli::Arguments &arguments)
{
    const QRegularExpression names = namesLike(arguments.texts("--match"));
    const bool isSinceStart = arguments.has("--since-start");
    const std::optional<int> limit = arguments.optionalInteger("--limit");
    QElapsedTimer sinceStart;
    sinceStart.start();
    events::EventListener listener(session.phone());
    // From now on no event is missed.
    output::note(format("Listening on %1.", session.phone().busName()));
    int shown = 0;
    const auto take = [&](const events::ReceivedEvent &received) {
        if (!names.match(received.event.getEvtName()).hasMatch())
            return false;
        QJsonObject row = events::toJson(received);
        row.insert("time"_s, timeValue(sinceStart, isSinceStart));
        session.out().stream(lineText(session.out().terminal(), row), row);
        return ++shown == limit;
    };
    const int timeoutMs = arguments.has("--timeout") ? session.timeoutMs(0) : -1;
    if (!listener.listen(timeoutMs, take))
        session.exitWith(ExitStatus::TimeRanOut);
}

} // namespace

cli::Command monitorCommand()
{
    constexpr int LargestLimit = 1'000'000'000;
    return cli::command(
        "monitor", "show events as they arrive",
        {cli::parameter("--match EVENT...", "only events with this name; * and ? are wildcards"),
         cli::parameter("--limit NUMBER", "exit after this number of events",
                        cli::check::integer(1, LargestLimit)),
         cli::parameter("--since-start",
                        "show the seconds since the start instead of the time of day")},
        {"time"_s, "event"_s, "module"_s, "arguments"_s}, monitor);
}

} // namespace commands
