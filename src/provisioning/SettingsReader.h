#pragma once

#include <QString>

class ZELModule;

/// Reads settings from the peer module SettingsManager, with one remote call for each read, without
/// a cache, retries or default values.
class SettingsReader
{
public:
    /// The single instance. The first call creates it, and it calls the peer through the module of
    /// this call. Later calls ignore the module.
    static SettingsReader &instance(ZELModule &module);

    /// The text of a setting. Blocks until the peer replies or the call times out. The text is
    /// empty if the setting is empty or if the read fails. `ok` is set to false only if the read
    /// fails.
    QString getSettingValue(const QString &key, bool *ok = nullptr);

private:
    explicit SettingsReader(ZELModule &module) : m_module(module) {}

    ZELModule &m_module;
};
