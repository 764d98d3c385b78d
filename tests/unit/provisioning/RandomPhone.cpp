#include "provisioning/RandomPhone.h"

#include "provisioning/ProvisioningText.h"

namespace unit {
namespace {

using provisioning::FieldCount;

QString randomText(Random &random)
{
    static const QStringList pieces{
        QStringLiteral("a"),   QStringLiteral("B"),       QStringLiteral(" "),
        QStringLiteral("ü"),   QStringLiteral("\\,"),     QStringLiteral("\\#"),
        QStringLiteral("\\x"), QStringLiteral("escComa"), QStringLiteral("%1"),
        QStringLiteral("7"),
    };
    return random.join(pieces, random.below(4));
}

QString randomNumber(Random &random)
{
    static const QStringList others{QString(), QStringLiteral("x"), QStringLiteral("-1"),
                                    QStringLiteral(" 1 "), QStringLiteral("1\\,0")};
    return random.once(6) ? random.pick<QString>(others) : QString::number(random.below(3));
}

QString escaped(QString text)
{
    return text.replace(QLatin1String(","), QLatin1String("\\,"));
}

// Any field can be a number or a text, for both kinds of records.
QString randomRecord(Random &random)
{
    QStringList fields{escaped(randomDmId(random))};
    while (fields.size() < FieldCount)
        fields.append(random.once(2) ? randomText(random) : randomNumber(random));
    if (random.once(8))
        fields.removeLast();
    else if (random.once(8))
        fields.append(randomText(random));
    return random.once(15) ? QString() : fields.join(QLatin1Char(','));
}

QString randomSetting(Random &random, int most)
{
    QStringList records;
    for (int count = random.between(0, most); count > 0; --count)
        records.append(randomRecord(random));
    return records.join(QLatin1Char('#'));
}

Action randomAction(Random &random)
{
    Action action;
    action.dmId = randomDmId(random);
    action.type = random.below(3);
    action.label = randomText(random);
    action.shortLabel = randomText(random);
    return action;
}

Key randomKey(Random &random, const ListAction &actions)
{
    Key key;
    key.dmId = random.once(2) ? QString() : randomDmId(random);
    key.idAction = actions.isEmpty() || random.once(10) ? random.below(20)
                                                        : random.pick<Action>(actions).idAction;
    key.container = randomText(random);
    key.position = random.below(5);
    key.type = random.below(3);
    return key;
}

} // namespace

QString randomDmId(Random &random)
{
    static const QStringList dmIds{
        QString(),
        QStringLiteral("D1"),
        QStringLiteral("D2"),
        QStringLiteral("D3"),
        QStringLiteral("D4"),
        QStringLiteral("d1"),
        QStringLiteral("D1 "),
        QStringLiteral("D,1"),
    };
    return random.pick<QString>(dmIds);
}

void fill(MemoryPhone &phone, Random &random, int most)
{
    if (!random.once(10)) {
        Action reserved;
        reserved.type = -1;
        phone.put(reserved);
    }
    qlonglong id = 0;
    for (int count = random.between(0, most); count > 0; --count) {
        Action action = randomAction(random);
        action.idAction = id += random.between(1, 3);
        phone.put(action);
    }
    id = 0;
    for (int count = random.between(0, most); count > 0; --count) {
        Key key = randomKey(random, phone.actions());
        key.idKey = id += random.between(1, 3);
        phone.put(key);
    }
    if (random.once(3))
        phone.keyLimit = random.below(most + 1);
    if (random.once(3))
        phone.labelThatCannotBeStored = QString::number(random.below(3));
}

Rollout randomRollout(Random &random, int most)
{
    Rollout rollout;
    rollout.actions = randomSetting(random, most);
    rollout.keys = randomSetting(random, most);
    return rollout;
}

} // namespace unit
