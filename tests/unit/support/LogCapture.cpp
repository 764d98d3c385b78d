#include "support/LogCapture.h"

#include <zelcore/ZELLogger.h>

#include <QRegularExpression>

#include <fcntl.h>
#include <unistd.h>

namespace unit {

QStringList withoutPrefixes(const QStringList &lines)
{
    static const QRegularExpression prefix(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} [^\\[]+\\[\\d+\\] "
                       "(?=(error|warning|info|debug): )"));
    QStringList texts = lines;
    for (QString &text : texts)
        text.remove(prefix);
    return texts;
}

LogCapture::LogCapture(int level)
    : m_reader(m_directory.filePath(QStringLiteral("log"))), m_formerOutput(dup(STDERR_FILENO)),
      m_formerLevel(ZELLogger::getConfiguredLevel())
{
    const QByteArray name = QFile::encodeName(m_reader.fileName());
    const int writer = ::open(name.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (writer < 0 || dup2(writer, STDERR_FILENO) < 0 ||
        !m_reader.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        qFatal("Cannot capture the error output");
    close(writer);
    ZELLogger::setConfiguredLevel(level);
}

LogCapture::~LogCapture()
{
    ZELLogger::setConfiguredLevel(m_formerLevel);
    dup2(m_formerOutput, STDERR_FILENO);
    close(m_formerOutput);
}

QStringList LogCapture::takeRaw()
{
    QStringList lines = QString::fromUtf8(m_reader.readAll()).split(QLatin1Char('\n'));
    lines.removeLast(); // the empty text after the last newline
    return lines;
}

QStringList LogCapture::take()
{
    return withoutPrefixes(takeRaw());
}

QString LogCapture::path() const
{
    return m_reader.fileName();
}

} // namespace unit
