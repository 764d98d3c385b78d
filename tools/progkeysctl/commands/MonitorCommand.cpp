#include "commands/Commands.h"

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

namespace commands {
namespace {

// A pattern in which * and ? are the only wildcards.
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
    return {{QStringLiteral("time"), QStringLiteral("time")},
            {QStringLiteral("event"), QStringLiteral("event")},
            {QStringLiteral("module"), QStringLiteral("module")},
            {QStringLiteral("arguments"), QStringLiteral("arguments")}};
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
    // From now on no event is missed.
    session.note(QStringLiteral("Listening on %1.").arg(bus.description()));
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
        "monitor", "show events as they arrive",
        {cli::option("--match", cli::type::text("EVENT"),
                     "only events with this name; * and ? are wildcards")
             .repeatable(),
         cli::option("--limit", cli::type::integer("NUMBER", 1, LargestLimit),
                     "exit after this number of events"),
         cli::flag("--since-start", "show the seconds since the start instead of the time of day")},
        monitor);
}

} // namespace commands
