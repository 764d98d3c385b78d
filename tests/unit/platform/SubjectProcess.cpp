#include "SubjectProcess.h"

#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QFile>
#include <QtTest>

#include <csignal>

namespace {

constexpr int LimitMs = 20000;

} // namespace

SubjectProcess::SubjectProcess(const QStringList &words, const QStringList &environment)
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("ZEL_LOG_LEVEL"), QStringLiteral("7"));
    for (const QString &entry : environment)
        variables.insert(entry.section(QLatin1Char('='), 0, 0), entry.section(QLatin1Char('='), 1));
    m_process.setProcessEnvironment(variables);
    m_process.setStandardOutputFile(m_directory.filePath(QStringLiteral("notes")));
    m_process.setStandardErrorFile(m_directory.filePath(QStringLiteral("log")));
    m_process.start(
        QCoreApplication::applicationDirPath() + QStringLiteral("/unit_platform_subject"), words);
    if (!m_process.waitForStarted(LimitMs))
        qFatal("Cannot start the subject");
}

SubjectProcess::~SubjectProcess()
{
    m_process.kill();
    m_process.waitForFinished(LimitMs);
}

QString SubjectProcess::serviceName()
{
    return QStringLiteral("com.velmora.Tessaro.Subject");
}

QString SubjectProcess::objectPath()
{
    return QStringLiteral("/com/velmora/Tessaro/Subject");
}

QString SubjectProcess::operations()
{
    return QStringLiteral("com.velmora.Tessaro.ZELInterface");
}

QString SubjectProcess::lifecycle()
{
    return QStringLiteral("com.velmora.Tessaro.ZELLifecycle");
}

bool SubjectProcess::waitUntilReady()
{
    const auto isOwned = [] {
        return QDBusConnection::systemBus().interface()->isServiceRegistered(serviceName()).value();
    };
    const auto isSettled = [this, isOwned] { return isOwned() || hasEnded(); };
    return QTest::qWaitFor(isSettled, LimitMs) && isOwned();
}

bool SubjectProcess::waitForNote(const QString &note)
{
    return QTest::qWaitFor([&] { return notes().contains(note) || hasEnded(); }, LimitMs) &&
           notes().contains(note);
}

int SubjectProcess::waitForExit()
{
    if (!hasEnded() && !m_process.waitForFinished(LimitMs))
        return -1;
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

void SubjectProcess::sendSignal(int number) const
{
    ::kill(static_cast<pid_t>(m_process.processId()), number);
}

QStringList SubjectProcess::notes() const
{
    return linesOf(QStringLiteral("notes"));
}

QStringList SubjectProcess::log() const
{
    return unit::withoutPrefixes(linesOf(QStringLiteral("log")));
}

QDBusMessage SubjectProcess::call(const QString &interface, const QString &method,
                                  const QList<QVariant> &arguments) const
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(serviceName(), objectPath(), interface, method);
    call.setArguments(arguments);
    return QDBusConnection::systemBus().call(call, QDBus::Block, LimitMs);
}

bool SubjectProcess::isAnswering() const
{
    const QString text = QStringLiteral("are you there?");
    return call(operations(), QStringLiteral("echo"), {text}).arguments() == QVariantList{text};
}

QStringList SubjectProcess::linesOf(const QString &file) const
{
    QFile reader(m_directory.filePath(file));
    if (!reader.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(reader.readAll()).split(QLatin1Char('\n'));
    lines.removeLast(); // what follows the last newline: nothing
    return lines;
}
