#include "SubjectProcess.h"
#include "support/LockedFile.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>

#include <memory>

/// Data that failed its check is copied aside before it is deployed over, and set aside if that did
/// not help.
class DataAsideTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void dataIsCopiedBeforeDeployAndTheLogSaysWhere();
    void eachCopyHasANameOfItsOwnAndNoneIsRemoved();
    void dataThatIsOnlyLinkedIsCopiedToo_data();
    void dataThatIsOnlyLinkedIsCopiedToo();
    void nothingIsCopied_data();
    void nothingIsCopied();
    void dataThatCannotBeCopiedIsNotDeployedOver();
    void dataThatAnotherProcessKeepsLockedIsLeftAsItIs();
    void dataThatDeployDoesNotMendIsSetAsideAndTheNextStartBeginsAfresh();
    void aDirectoryWithoutDataIsNotCheckedAgainAndNotSetAside();
    void aDirectoryThatIsGoneAfterDeployIsNotSetAside();

private:
    QString root() const { return m_root->path(); }
    QString path(const QString &name) const { return root() + QLatin1Char('/') + name; }
    void put(const QString &name, const QByteArray &text) const;
    QByteArray textOf(const QString &name) const;
    QStringList entries() const;
    std::unique_ptr<SubjectProcess> start(const QStringList &words) const;

    std::unique_ptr<QTemporaryDir> m_root;
};

void DataAsideTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
}

void DataAsideTest::put(const QString &name, const QByteArray &text) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), qint64{text.size()});
}

QByteArray DataAsideTest::textOf(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

QStringList DataAsideTest::entries() const
{
    return QDir(root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
}

std::unique_ptr<SubjectProcess> DataAsideTest::start(const QStringList &words) const
{
    return std::make_unique<SubjectProcess>(words,
                                            QStringList{QStringLiteral("ZEL_DATA_ROOT=") + root()});
}

void DataAsideTest::dataIsCopiedBeforeDeployAndTheLogSaysWhere()
{
    put(QStringLiteral("Subject/data"), "the keys");
    put(QStringLiteral("Subject/sub/more"), "the rest");
    const auto subject = start({QStringLiteral("check=no"), QStringLiteral("deploy=wipe")});
    QVERIFY(subject->waitUntilReady());
    QCOMPARE(entries(), QStringList{QStringLiteral("Subject.before-deploy")});
    QCOMPARE(textOf(QStringLiteral("Subject.before-deploy/data")), QByteArray("the keys"));
    QCOMPARE(textOf(QStringLiteral("Subject.before-deploy/sub/more")), QByteArray("the rest"));
    const QStringList lines = subject->log();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QStringLiteral("warning: ")));
    QVERIFY2(lines.first().contains(path(QStringLiteral("Subject.before-deploy"))),
             qUtf8Printable(lines.first()));
}

void DataAsideTest::eachCopyHasANameOfItsOwnAndNoneIsRemoved()
{
    for (const char *text : {"first", "second", "third"}) {
        put(QStringLiteral("Subject/data"), text);
        const auto subject = start({QStringLiteral("check=no")});
        QVERIFY(subject->waitUntilReady());
    }
    QCOMPARE(textOf(QStringLiteral("Subject.before-deploy/data")), QByteArray("first"));
    QCOMPARE(textOf(QStringLiteral("Subject.before-deploy.1/data")), QByteArray("second"));
    QCOMPARE(textOf(QStringLiteral("Subject.before-deploy.2/data")), QByteArray("third"));
    QCOMPARE(entries().size(), 4);
}

void DataAsideTest::dataThatIsOnlyLinkedIsCopiedToo_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("target");
    QTest::newRow("the directory is a link") << QStringLiteral("Subject") << QStringLiteral("Far");
    QTest::newRow("the file is a link")
        << QStringLiteral("Subject/data") << QStringLiteral("Far/data");
}

void DataAsideTest::dataThatIsOnlyLinkedIsCopiedToo()
{
    QFETCH(QString, link);
    QFETCH(QString, target);
    put(QStringLiteral("Far/data"), "the keys");
    if (link.contains(QLatin1Char('/')))
        QVERIFY(QDir().mkpath(path(QStringLiteral("Subject"))));
    QVERIFY(QFile::link(path(target), path(link)));
    const auto subject = start({QStringLiteral("check=no")});
    QVERIFY(subject->waitUntilReady());
    put(QStringLiteral("Far/data"), "overwritten");
    QCOMPARE(textOf(QStringLiteral("Subject.before-deploy/data")), QByteArray("the keys"));
}

void DataAsideTest::nothingIsCopied_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("word");
    QTest::newRow("when there was no directory")
        << QString() << QByteArray() << QStringLiteral("check=no");
    QTest::newRow("when there was nothing but an empty file")
        << QStringLiteral("Subject/data") << QByteArray() << QStringLiteral("check=no");
    QTest::newRow("when the data passed its check")
        << QStringLiteral("Subject/data") << QByteArray("x") << QStringLiteral("check=yes");
    QTest::newRow("when the data is another module's")
        << QStringLiteral("Other/data") << QByteArray("x") << QStringLiteral("check=no");
}

void DataAsideTest::nothingIsCopied()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, text);
    QFETCH(QString, word);
    if (!file.isEmpty())
        put(file, text);
    const QStringList before = entries();
    const auto subject = start({word});
    QVERIFY(subject->waitUntilReady());
    QCOMPARE(entries(), before);
    QCOMPARE(subject->log(), QStringList());
}

void DataAsideTest::dataThatCannotBeCopiedIsNotDeployedOver()
{
    put(QStringLiteral("Subject/data"), "the keys");
    QVERIFY(QFile::link(path(QStringLiteral("nowhere")), path(QStringLiteral("Subject/link"))));
    const auto subject = start({QStringLiteral("check=no"), QStringLiteral("deploy=wipe")});
    QCOMPARE(subject->waitForExit(), 1);
    QCOMPARE(subject->notes(), QStringList{QStringLiteral("check")});
    QCOMPARE(textOf(QStringLiteral("Subject/data")), QByteArray("the keys"));
    QCOMPARE(entries(), QStringList{QStringLiteral("Subject")});
    const QStringList errors = subject->log().filter(QStringLiteral("error: "));
    QVERIFY2(errors.last().contains(QStringLiteral("could not be copied aside")),
             qUtf8Printable(errors.last()));
}

void DataAsideTest::dataThatAnotherProcessKeepsLockedIsLeftAsItIs()
{
    put(QStringLiteral("Subject/data"), "the keys");
    {
        const unit::LockedFile locked(path(QStringLiteral("Subject/data")), F_WRLCK);
        const auto subject = start({QStringLiteral("check=no"), QStringLiteral("deploy=wipe")});
        QCOMPARE(subject->waitForExit(), 1);
        QCOMPARE(subject->notes(), QStringList{QStringLiteral("check")});
        const QStringList lines = subject->log();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().contains(QString::number(QCoreApplication::applicationPid())),
                 qUtf8Printable(lines.first()));
    }
    QCOMPARE(entries(), QStringList{QStringLiteral("Subject")});
    QCOMPARE(textOf(QStringLiteral("Subject/data")), QByteArray("the keys"));
}

void DataAsideTest::dataThatDeployDoesNotMendIsSetAsideAndTheNextStartBeginsAfresh()
{
    for (const char *suffix : {"", ".1", ".2"}) {
        put(QStringLiteral("Subject/data"), suffix);
        put(QStringLiteral("Subject/sub/more"), "the rest");
        const auto subject = start({QStringLiteral("check=never")});
        QCOMPARE(subject->waitForExit(), 1);
        QCOMPARE(subject->notes().join(QLatin1Char(' ')), QStringLiteral("check deploy check"));
        const QString aside = QStringLiteral("Subject.unusable") + QLatin1String(suffix);
        QCOMPARE(textOf(aside + QStringLiteral("/data")), QByteArray(suffix));
        QCOMPARE(textOf(aside + QStringLiteral("/sub/more")), QByteArray("the rest"));
        const QStringList errors = subject->log().filter(QStringLiteral("error: "));
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.first().endsWith(path(aside)), qUtf8Printable(errors.first()));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Subject"))));
    }
    const auto next = start({QStringLiteral("check=no")});
    QVERIFY(next->waitUntilReady());
}

void DataAsideTest::aDirectoryWithoutDataIsNotCheckedAgainAndNotSetAside()
{
    put(QStringLiteral("Subject/data"), "");
    const auto subject = start({QStringLiteral("check=never")});
    QVERIFY(subject->waitUntilReady());
    QCOMPARE(subject->notes().join(QLatin1Char(' ')), QStringLiteral("check deploy init start"));
    QCOMPARE(entries(), QStringList{QStringLiteral("Subject")});
}

void DataAsideTest::aDirectoryThatIsGoneAfterDeployIsNotSetAside()
{
    put(QStringLiteral("Subject/data"), "the keys");
    const auto subject = start({QStringLiteral("check=never"), QStringLiteral("deploy=wipe")});
    QCOMPARE(subject->waitForExit(), 1);
    QCOMPARE(entries(), QStringList{QStringLiteral("Subject.before-deploy")});
    const QStringList errors = subject->log().filter(QStringLiteral("error: "));
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors.first().contains(QStringLiteral("cannot be written")),
             qUtf8Printable(errors.first()));
}

PROGKEYS_TEST_MAIN(DataAsideTest)
#include "DataAsideTest.moc"
