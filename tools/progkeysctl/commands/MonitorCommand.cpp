#include "commands/MonitorCommand.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "events/EventListener.h"
#include "events/EventText.h"
#include "outcome/Failure.h"
#include "output/Text.h"

#include <zelcore/ZELBusNames.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>

namespace commands {
namespace {

// Nothing but * and ? stands for something else; no name of an event is a pattern that is broken.
QRegularExpression patternOf(const QString &name)
{
    QString pattern = QRegularExpression::escape(name);
    pattern.replace(QLatin1String("\\*"), QLatin1String(".*"))
        .replace(QLatin1String("\\?"), QLatin1String("."));
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern));
}

class Patterns
{
public:
    explicit Patterns(const QStringList &names)
    {
        for (const QString &name : names)
            m_patterns.append(patternOf(name));
    }

    bool admit(const QString &name) const
    {
        return m_patterns.isEmpty() || std::any_of(m_patterns.begin(), m_patterns.end(),
                                                   [&](const QRegularExpression &each) {
                                                       return each.match(name).hasMatch();
                                                   });
    }

private:
    QList<QRegularExpression> m_patterns;
};

QList<output::Column> columns()
{
    return {{QStringLiteral("time"), QStringLiteral("TIME")},
            {QStringLiteral("event"), QStringLiteral("EVENT")},
            {QStringLiteral("module"), QStringLiteral("MODULE")},
            {QStringLiteral("arguments"), QStringLiteral("ARGUMENTS")}};
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
                           : QStringLiteral("%1").arg(time.toDouble(), 9, 'f', 3);
}

QString lineText(const output::Terminal &terminal, const QJsonObject &row)
{
    const QString event = output::printable(row.value(QStringLiteral("event")).toString());
    QStringList parts = {terminal.dim(timeText(row.value(QStringLiteral("time")))),
                         terminal.bold(event)};
    const QString arguments = events::argumentsText(row);
    if (!arguments.isEmpty())
        parts.append(arguments);
    return parts.join(QStringLiteral("  "));
}

// On stderr, so that it is no event; whoever starts the monitor knows by it that none is missed.
void sayListening(const client::Bus &bus)
{
    std::fputs(QStringLiteral("Listening on %1.\n").arg(bus.description()).toUtf8().constData(),
               stderr);
    std::fflush(stderr);
}

ExitStatus monitor(cli::Session &session, const cli::Arguments &arguments)
{
    constexpr double NoTimeout = -1;
    session.out().requireFields(columns());
    const Patterns patterns(arguments.texts("--match"));
    const bool isSinceStart = arguments.has("--since-start");
    const std::optional<int> limit = arguments.optionalInteger("--limit");
    client::Bus &bus = session.bus();
    QElapsedTimer sinceStart;
    sinceStart.start();
    events::EventListener listener(bus);
    sayListening(bus);
    int shown = 0;
    const auto take = [&](const events::ReceivedEvent &received) {
        if (!patterns.admit(received.event.getEvtName()))
            return false;
        QJsonObject row = events::toJson(received);
        row.insert(QStringLiteral("time"), timeValue(sinceStart, isSinceStart));
        session.out().stream(lineText(session.out().terminal(), row), columns(), row);
        return ++shown == limit;
    };
    const double seconds = session.options().timeout.value_or(NoTimeout);
    const bool isEnough = listener.listen(seconds < 0 ? -1 : session.timeoutMs(seconds), take);
    return isEnough ? ExitStatus::Done : ExitStatus::TimeRanOut;
}

} // namespace

cli::Command monitorCommand()
{
    constexpr int LargestLimit = 1'000'000'000;
    return cli::command(
        "monitor", "show every event on the bus as it comes",
        {cli::option("--match", cli::type::text("EVENT"),
                     "only events of these names; * stands for anything")
             .repeatable(),
         cli::option("--limit", cli::type::integer("NUMBER", 1, LargestLimit),
                     "end after so many events"),
         cli::flag("--since-start",
                   "tell the seconds since the start of the monitor, not the time of day")},
        monitor);
}

} // namespace commands
