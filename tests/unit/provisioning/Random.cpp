#include "provisioning/Random.h"

#include <QtTest>

namespace unit {
namespace {

constexpr unsigned FixedSeed = 20240229;
constexpr const char *SeedVariable = "PROGKEYS_TEST_SEED";

unsigned newSeed()
{
    const unsigned seed = qEnvironmentVariableIsEmpty(SeedVariable)
                              ? std::random_device()()
                              : qEnvironmentVariable(SeedVariable).toUInt();
    qInfo("To repeat this run: %s=%u", SeedVariable, seed);
    return seed;
}

} // namespace

QString Random::join(const QStringList &pieces, int count)
{
    QString text;
    while (count-- > 0)
        text += pick<QString>(pieces);
    return text;
}

void addSeeds()
{
    static const unsigned seed = newSeed();
    QTest::addColumn<unsigned>("seed");
    QTest::newRow("with a fixed seed") << FixedSeed;
    QTest::newRow("with a random seed") << seed;
}

} // namespace unit
