#pragma once

#include "SettingsDirectory.h"

#include <zelcore/ZELModule.h>

/// A replacement for the phone's SettingsManager that serves the settings in a directory.
class SettingsManager : public ZELModule
{
    Q_OBJECT

public:
    explicit SettingsManager(const QString &directory);

    bool start() override;

private:
    SettingsDirectory m_directory;
};
