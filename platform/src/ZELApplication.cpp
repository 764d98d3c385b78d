#include "zelcore/ZELApplication.h"

#include "ServiceManager.h"
#include "TerminationSignals.h"
#include "zelcore/ZELException.h"
#include "zelcore/ZELLogger.h"
#include "zelcore/ZELModule.h"

namespace {

// The bus and SQL libraries log through Qt. Their messages go to the same log.
void logQtMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    switch (type) {
    case QtDebugMsg:
        return logger().debug(text);
    case QtInfoMsg:
        return logger().info(text);
    case QtWarningMsg:
        return logger().warning(text);
    default:
        return logger().error(text);
    }
}

// Qt's own event loop is faster than GLib's, and this speeds up every call.
int &withoutGLib(int &argc)
{
    if (!qEnvironmentVariableIsSet("QT_NO_GLIB"))
        qputenv("QT_NO_GLIB", "1");
    return argc;
}

ZELApplication *theApplication()
{
    return qobject_cast<ZELApplication *>(QCoreApplication::instance());
}

} // namespace

ZELApplication::ZELApplication(int &argc, char **argv)
    : QCoreApplication(withoutGLib(argc), argv),
      m_signals(std::make_unique<zel::TerminationSignals>())
{
    qInstallMessageHandler(logQtMessage);
    connect(m_signals.get(), &zel::TerminationSignals::arrived, this, &ZELApplication::end);
    // For a process that ends without end(): after a failed start, or when the bus is lost.
    connect(this, &QCoreApplication::aboutToQuit, this, [this] {
        if (!m_isEnding)
            zel::tellStopping();
    });
}

ZELApplication::~ZELApplication()
{
    qInstallMessageHandler(nullptr);
}

QString ZELApplication::dataRoot()
{
    QString root = qEnvironmentVariable("ZEL_DATA_ROOT");
    if (root.isEmpty())
        root = QStringLiteral("/data/ZELApplication/");
    if (!root.endsWith(QLatin1Char('/')))
        root += QLatin1Char('/');
    return root;
}

void ZELApplication::end()
{
    ZELApplication *application = theApplication();
    if (application && !application->m_isEnding) {
        application->m_isEnding = true;
        zel::tellStopping(); // now, because the current event may take a long time
    }
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
}

bool ZELApplication::isEnding(std::chrono::milliseconds age)
{
    ZELApplication *application = theApplication();
    if (!application)
        return false;
    application->m_signals->poll(age);
    return application->m_isEnding;
}

void ZELApplication::dispose(ZELException *exception)
{
    const std::unique_ptr<ZELException> owned(exception);
    const ZELModule *module = owned->getModule();
    logger().error(QStringLiteral("Exception of type %1 left module %2: %3")
                       .arg(QString::number(owned->getErrorType()),
                            module ? module->getModuleName() : QStringLiteral("(none)"),
                            owned->getMessage()));
}

bool ZELApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QCoreApplication::notify(receiver, event);
    } catch (ZELException *exception) {
        dispose(exception);
        return true;
    }
}
