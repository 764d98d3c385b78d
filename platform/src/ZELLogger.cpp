#include "zelcore/ZELLogger.h"

#include "LogStream.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>

#include <cstdio>
#include <utility>

namespace {

constexpr int DefaultLevel = 6;
constexpr int HighestLevel = 7;

int levelFromEnvironment()
{
    bool isNumber = false;
    const int level = qEnvironmentVariableIntValue("ZEL_LOG_LEVEL", &isNumber);
    return isNumber && level >= 0 && level <= HighestLevel ? level : DefaultLevel;
}

int &configuredLevel()
{
    static int level = levelFromEnvironment();
    return level;
}

const char *levelName(int level)
{
    switch (level) {
    case 3:
        return "error";
    case 4:
        return "warning";
    case 6:
        return "info";
    default:
        return "debug";
    }
}

QByteArray linePrefix(int level)
{
    if (zel::isStderrTheJournal())
        return '<' + QByteArray::number(level) + '>';
    return QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toUtf8() + ' ' +
           QCoreApplication::applicationName().toUtf8() + '[' +
           QByteArray::number(QCoreApplication::applicationPid()) + "] " + levelName(level) + ": ";
}

} // namespace

ZELLogger::ZELLogger(QString category) : m_category(std::move(category)) {}

int ZELLogger::getConfiguredLevel()
{
    return configuredLevel();
}

void ZELLogger::setConfiguredLevel(int level)
{
    configuredLevel() = level;
}

void ZELLogger::write(Level level, const QString &text) const
{
    if (level > getConfiguredLevel())
        return;
    QByteArray line = linePrefix(level);
    if (!m_category.isEmpty())
        line += m_category.toUtf8() + ": ";
    line += text.toUtf8() + '\n';
    // Write each line with one call, because stderr is not buffered and lines of several processes
    // must not mix. A failure cannot be reported.
    static_cast<void>(std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr));
}

ZELLogger logger(const QString &category)
{
    return ZELLogger(category);
}
