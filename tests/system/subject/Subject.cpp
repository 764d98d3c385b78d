#include <zelcore/ZELApplication.h>
#include <zelcore/ZELException.h>
#include <zelcore/ZELLogger.h>
#include <zelcore/ZELModule.h>

#include <QDBusAbstractAdaptor>
#include <QDebug>
#include <QDir>
#include <QTimer>

#include <csignal>
#include <utility>

namespace {

/// A subscriber that is destroyed before an event arrives.
class DestroyedReceiver : public QObject
{
    Q_OBJECT

public slots:
    void receive(const ZELEvent & /*event*/) { qFatal("A destroyed receiver was called"); }
};

/// A module for tests of the framework. Its arguments control its hooks: with "init=no" the hook
/// `init` fails, with "init=throw" it throws, and with "init=term" it sends the process SIGTERM.
/// With "deploy=wipe", `deploy` removes the module's data. With "check=no", `check` fails until
/// `deploy` runs; with "check=never", it always fails. With "no-adaptor", the module has no
/// adaptor. Each hook that runs writes a debug line.
class Subject : public ZELModule
{
    Q_OBJECT

public:
    explicit Subject(QStringList arguments)
        : ZELModule(QStringLiteral("Subject")), m_arguments(std::move(arguments))
    {
    }

    bool check() override { return run("check"); }
    bool deploy() override
    {
        m_arguments.removeAll(QStringLiteral("check=no"));
        return run("deploy");
    }
    bool init() override
    {
        const QString event = QStringLiteral("SUBJECT_EVENT");
        DestroyedReceiver destroyed;
        return subscribeEvent(event, &destroyed, SLOT(receive(ZELEvent))) &&
               subscribeEvent(event, this, SLOT(receive(ZELEvent))) && run("init");
    }
    bool start() override;
    void presentation_loaded() override { run("presentation_loaded"); }
    void presentation_stop() override { run("presentation_stop"); }
    bool stop() override { return run("stop"); }
    bool preSaveForSaveRestore() override { return run("preSaveForSaveRestore"); }
    bool postRestoreForSaveRestore() override { return run("postRestoreForSaveRestore"); }
    bool restoreDefault() override { return run("restoreDefault"); }
    bool restoreFactory() override { return run("restoreFactory"); }

private slots:
    /// Sends the event SUBJECT_ANSWER, or throws the text of the argument "throw".
    void receive(const ZELEvent &event);

private:
    bool run(const char *hook);
    bool has(const QString &hook, const char *value) const
    {
        return m_arguments.contains(hook + QLatin1Char('=') + QLatin1String(value));
    }

    QStringList m_arguments;
};

/// Operations that return or throw.
class SubjectAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    explicit SubjectAdaptor(Subject &subject) : QDBusAbstractAdaptor(&subject), m_subject(subject)
    {
    }

public slots:
    QString echo(const QString &text) { return text; }
    QString fail(const QString &message) { throw new ZELException(&m_subject, 4, message); }
    QString failWithoutModule(const QString &message)
    {
        throw new ZELException(nullptr, 9, message);
    }
    /// Returns, and throws when the event loop continues.
    void failLater(const QString &message)
    {
        QTimer::singleShot(0, &m_subject,
                           [this, message] { throw new ZELException(&m_subject, 5, message); });
    }
    /// Writes messages at all levels of Qt's log functions.
    QString logThroughQt(const QString &text)
    {
        qDebug().noquote() << text;
        qInfo().noquote() << text;
        qWarning().noquote() << text;
        qCritical().noquote() << text;
        return text;
    }

private:
    Subject &m_subject;
};

bool Subject::run(const char *hook)
{
    const QString name = QLatin1String(hook);
    logger().debug(QStringLiteral("hook ") + name);
    if (has(name, "throw"))
        throw new ZELException(this, 4, name + QStringLiteral(" threw"));
    if (has(name, "term"))
        raise(SIGTERM);
    if (has(name, "wipe"))
        QDir(ZELApplication::dataRoot() + getModuleName()).removeRecursively();
    return !has(name, "no") && !has(name, "never");
}

bool Subject::start()
{
    if (!m_arguments.contains(QStringLiteral("no-adaptor")))
        m_adaptor = new SubjectAdaptor(*this);
    return run("start");
}

void Subject::receive(const ZELEvent &event)
{
    const QVariant thrown = event.getArgument(QStringLiteral("throw"));
    if (thrown.isValid())
        throw new ZELException(this, 7, thrown.toString());
    ZELEvent answer;
    answer.setEvtName(QStringLiteral("SUBJECT_ANSWER"));
    if (!notifyEvent(answer))
        logger().error(QStringLiteral("The answer could not be sent"));
}

} // namespace

int main(int argc, char **argv)
{
    ZELApplication application(argc, argv);
    ZELApplication::setApplicationName(QStringLiteral("Subject"));
    const Subject module(ZELApplication::arguments().mid(1));
    return ZELApplication::exec();
}

#include "Subject.moc"
