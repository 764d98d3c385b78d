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

/// Subscribes to the same event as the module, and is gone when it comes.
class FormerReceiver : public QObject
{
    Q_OBJECT

public slots:
    void receive(const ZELEvent & /*event*/) { qFatal("A former receiver is called"); }
};

/// A module for tests of the framework. It does what its words say: "init=no" lets the hook `init`
/// fail, "init=throw" lets it throw, "init=term" sends the process SIGTERM during it, "deploy=wipe"
/// lets `deploy` remove the module's data. "check=no" holds until `deploy` runs, "check=never" for
/// ever. "mute" leaves out the adaptor. Each hook that runs is a debug line.
class Subject : public ZELModule
{
    Q_OBJECT

public:
    explicit Subject(QStringList words)
        : ZELModule(QStringLiteral("Subject")), m_words(std::move(words))
    {
    }

    bool check() override { return run("check"); }
    bool deploy() override
    {
        m_words.removeAll(QStringLiteral("check=no"));
        return run("deploy");
    }
    bool init() override
    {
        const QString event = QStringLiteral("SUBJECT_EVENT");
        FormerReceiver former;
        return subscribeEvent(event, &former, SLOT(receive(ZELEvent))) &&
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
    /// Answers with the event SUBJECT_ANSWER, or throws the text of the argument "throw".
    void receive(const ZELEvent &event);

private:
    bool run(const char *hook);
    bool has(const QString &hook, const char *word) const
    {
        return m_words.contains(hook + QLatin1Char('=') + QLatin1String(word));
    }

    QStringList m_words;
};

/// Operations that answer, and some that do not.
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
    /// Answers, and throws when the event loop goes on.
    void failLater(const QString &message)
    {
        QTimer::singleShot(0, &m_subject,
                           [this, message] { throw new ZELException(&m_subject, 5, message); });
    }
    /// Reports through Qt, as its libraries do.
    QString report(const QString &text)
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
    if (!m_words.contains(QStringLiteral("mute")))
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
