#include "logging.h"

#include "support/LogCapture.h"
#include "support/TestProgram.h"

#include <functional>
#include <limits>

using Line = std::function<void(const std::function<QString()> &)>;
Q_DECLARE_METATYPE(Line)

/// The log levels at which lines are built and written.
class LoggingTest : public QObject
{
    Q_OBJECT

private slots:
    void aLineIsBuiltOnlyIfItIsWritten_data()
    {
        QTest::addColumn<Line>("line");
        QTest::addColumn<int>("lowest");
        QTest::newRow("an error from level 3")
            << Line([](const auto &value) { logging::error("line %1", value); }) << 3;
        QTest::newRow("a warning from level 4")
            << Line([](const auto &value) { logging::warning("line %1", value); }) << 4;
        QTest::newRow("an info from level 6")
            << Line([](const auto &value) { logging::info("line %1", value); }) << 6;
        QTest::newRow("a debug line from level 7")
            << Line([](const auto &value) { logging::debug("line %1", value); }) << 7;
    }

    void aLineIsBuiltOnlyIfItIsWritten()
    {
        QFETCH(Line, line);
        QFETCH(int, lowest);
        for (int level = 0; level <= 7; ++level) {
            unit::LogCapture log(level);
            int found = 0;
            line([&found] {
                ++found;
                return QStringLiteral("value");
            });
            const int expected = level >= lowest ? 1 : 0;
            QCOMPARE(found, expected);
            QCOMPARE(log.take().filter(QStringLiteral("line value")).size(), expected);
        }
    }

    void numbersAndTextsReplaceThePlaceholders()
    {
        unit::LogCapture log(7);
        logging::debug("%1 of %2", std::numeric_limits<qlonglong>::min(), QStringLiteral("many"));
        QCOMPARE(log.take(), QStringList{QStringLiteral("debug: -9223372036854775808 of many")});
    }

    void aPlaceholderInAValueIsNotReplaced()
    {
        unit::LogCapture log(7);
        logging::error("%1 and %2", QStringLiteral("%2"), QStringLiteral("%1"));
        QCOMPARE(log.take(), QStringList{QStringLiteral("error: %2 and %1")});
    }
};

PROGKEYS_TEST(LoggingTest)
#include "LoggingTest.moc"
