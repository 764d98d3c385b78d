#pragma once

#include <QList>
#include <QString>

#include <random>

namespace unit {

/// Random numbers that depend only on the seed.
class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    int below(int end) { return static_cast<int>(m_engine() % static_cast<unsigned>(end)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    /// True in one of `count` cases.
    bool once(int count) { return below(count) == 0; }

    template <typename Value>
    Value pick(const QList<Value> &values)
    {
        return values.at(below(static_cast<int>(values.size())));
    }

    /// Joins `count` random pieces.
    QString join(const QStringList &pieces, int count);

private:
    std::mt19937 m_engine;
};

/// Adds two rows with a column `seed`: a fixed seed, and PROGKEYS_TEST_SEED or a random seed, which
/// is printed.
void addSeeds();

} // namespace unit
