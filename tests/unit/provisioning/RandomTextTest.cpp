#include "provisioning/Random.h"
#include "provisioning/RecordCheck.h"
#include "support/TestProgram.h"

using provisioning::parseText;

namespace {

const QStringList &pieces()
{
    static const QStringList all{
        QStringLiteral("\\"),      QStringLiteral("\\\\"),     QStringLiteral(","),
        QStringLiteral("#"),       QStringLiteral("\\,"),      QStringLiteral("\\#"),
        QStringLiteral("esc"),     QStringLiteral("Com"),      QStringLiteral("a"),
        QStringLiteral("Shar"),    QStringLiteral("p"),        QStringLiteral("e"),
        QStringLiteral("escComa"), QStringLiteral("escSharp"), QStringLiteral("x"),
        QStringLiteral("7"),       QStringLiteral(" "),        QStringLiteral("\n"),
        QString(QChar(0)),         QString(QChar(0xd83d)),     QString(QChar(0xde42)),
        QStringLiteral("ü"),       QString(QChar(0x0301)),     QStringLiteral("電"),
    };
    return all;
}

/// The difference between the records of both parsers, or an empty text if there is none.
QByteArray faultIn(const QString &text)
{
    const QString fault = unit::faultIn(parseText(text), text);
    return fault.isEmpty() ? QByteArray() : (fault + QStringLiteral(" in ") + text).toUtf8();
}

} // namespace

/// The parser returns the same records as the simple parser for any text.
class RandomTextTest : public QObject
{
    Q_OBJECT

private slots:
    void aRandomTextHasTheSameRecordsInBothParsers_data() { unit::addSeeds(); }
    void aRandomTextHasTheSameRecordsInBothParsers()
    {
        QFETCH(unsigned, seed);
        unit::Random random(seed);
        constexpr int texts = 20000;
        for (int count = 0; count < texts; ++count)
            QCOMPARE(faultIn(random.join(pieces(), random.below(40))), QByteArray());
    }

    void eachShortTextOfSpecialCharactersHasTheSameRecordsInBothParsers()
    {
        const QString letters = QStringLiteral("\\,#x");
        constexpr int longest = 7;
        for (int length = 0; length <= longest; ++length) {
            for (int number = 0; number < 1 << (2 * length); ++number) {
                QString text;
                for (int index = 0; index < length; ++index)
                    text.append(letters.at(number >> (2 * index) & 3));
                QCOMPARE(faultIn(text), QByteArray());
            }
        }
    }

    void aTextOf20000RecordsIsReadCompletely()
    {
        const QString text = QStringLiteral("D\\,1,3,call\\#,,501,Reception,Rec#").repeated(20000);
        QCOMPARE(parseText(text).size(), 20001);
        QCOMPARE(faultIn(text), QByteArray());
    }
};

PROGKEYS_TEST(RandomTextTest)
#include "RandomTextTest.moc"
