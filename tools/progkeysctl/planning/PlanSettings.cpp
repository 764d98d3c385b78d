#include "planning/PlanSettings.h"

#include "output/Output.h"

namespace defaults {
namespace {

void requireDeliverable(const Rollout &rollout)
{
    for (const auto &[kind, setting] : rollout.settings) {
        if (!setting.problems.isEmpty())
            throw Failure{
                ExitStatus::InvalidText,
                QStringLiteral("%1 cannot be delivered to a phone: %2")
                    .arg(setting.file, setting.problems.first().message),
                QStringLiteral("\"progkeysctl defaults check %1\" shows where.").arg(setting.file)};
    }
}

std::optional<QString> read(Kind kind, const Rollout &rollout, const PhoneSetting &phone)
{
    const QString name = settingName(kind);
    const QString consequence = kind == Kind::Limit
                                    ? QStringLiteral("the number of keys is not limited")
                                    : QStringLiteral("it is treated as empty");
    if (const Setting *setting = rollout.find(kind))
        return setting->text;
    const bool isOfPhone = rollout.directory.isEmpty();
    std::optional<QString> text = isOfPhone ? phone(name) : std::nullopt;
    if (!text)
        output::warn(QStringLiteral("%1 has no setting %2: %3")
                         .arg(isOfPhone ? QStringLiteral("the phone") : rollout.directory, name,
                              consequence));
    return text;
}

} // namespace

PlannedSettings settingsOf(const Rollout &rollout, std::optional<int> limit,
                           const PhoneSetting &phone)
{
    requireDeliverable(rollout);
    PlannedSettings settings;
    settings.actions = read(Kind::Actions, rollout, phone).value_or(QString());
    settings.keys = read(Kind::Keys, rollout, phone).value_or(QString());
    settings.limit = limit;
    if (!limit) {
        const std::optional<QString> text = read(Kind::Limit, rollout, phone);
        if (text)
            settings.limit = text->toInt();
    }
    return settings;
}

} // namespace defaults
