#pragma once

#include "SettingsDirectory.h"

#include <zelcore/ZELModule.h>

/// The phone's SettingsManager, for everything but the phone: serves the settings of a directory.
class SettingsManager : public ZELModule
{
    Q_OBJECT

public:
    explicit SettingsManager(const QString &directory);

    bool start() override;

private:
    SettingsDirectory m_directory;
};
