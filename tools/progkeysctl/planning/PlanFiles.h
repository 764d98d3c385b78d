#pragma once

#include "planning/Plan.h"
#include "planning/PlanWarnings.h"

#include <QStringList>

#include <functional>

namespace defaults {

const QString ActionsSetting = QStringLiteral("DefaultActions");
const QString KeysSetting = QStringLiteral("DefaultKeys");
const QString LimitSetting = QStringLiteral("ProgKeysMax");

/// Where the settings of a plan come from. What no file is given for is in the directory or, if
/// there is none, on the phone.
struct PlanSources
{
    QStringList files; ///< whose names tell what they are
    std::optional<QString> actions;
    std::optional<QString> keys;
    std::optional<QString> directory;
    std::optional<int> limit;
};

/// A setting of the phone; nothing if it cannot be read.
using PhoneSetting = std::function<std::optional<QString>(const QString &name)>;

/// The settings with what there is to say of their reading. As for the service, one that is not
/// there counts as empty, and no limit as none.
struct PlanReading
{
    PlannedSettings settings;
    QList<PlanWarning> warnings;
};

/// Throws a Failure: of status Usage if the kind of a file is not known or given twice, of status
/// InvalidText if a file cannot be delivered, of status Failed if it cannot be read.
PlanReading readSettings(const PlanSources &sources, const PhoneSetting &phone);

} // namespace defaults
