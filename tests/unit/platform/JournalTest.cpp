#include <zelcore/ZELLogger.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// As systemd names the stream that this process's error output is.
QByteArray streamName()
{
    struct stat status = {};
    if (fstat(STDERR_FILENO, &status) != 0)
        qFatal("No error output");
    return QByteArray::number(qulonglong{status.st_dev}) + ':' +
           QByteArray::number(qulonglong{status.st_ino});
}

} // namespace

/// The error output is the journal; a process finds that out once, and so this is one test.
class JournalTest : public QObject
{
    Q_OBJECT

private slots:
    void linesBeginWithTheirLevelAlone();
};

void JournalTest::linesBeginWithTheirLevelAlone()
{
    unit::LogCapture log(7);
    qputenv("JOURNAL_STREAM", streamName());
    logger().error(QStringLiteral("e"));
    logger().warning(QStringLiteral("w"));
    logger().info(QStringLiteral("i"));
    logger().debug(QStringLiteral(" <7>d"));
    QCOMPARE(log.takeRaw(), (QStringList{QStringLiteral("<3>e"), QStringLiteral("<4>w"),
                                         QStringLiteral("<6>i"), QStringLiteral("<7> <7>d")}));
}

PROGKEYS_TEST_MAIN(JournalTest)
#include "JournalTest.moc"
