#pragma once

#include <QString>

class ZELModule;

/// Reads settings from the peer module SettingsManager, with one remote call for each read. It does
/// not cache or retry, and has no defaults: a caller that needs a default applies it itself.
class SettingsReader
{
public:
    /// The single instance. The first call creates it; it calls the peer through that module.
    /// Later calls ignore the module.
    static SettingsReader &instance(ZELModule &module);

    /// The text of a setting. Blocks until the peer answers or the platform gives up. The text is
    /// empty if the setting is empty or if the read fails; `ok`, if given, tells these apart.
    QString getSettingValue(const QString &key, bool *ok = nullptr);

private:
    explicit SettingsReader(ZELModule &module) : m_module(module) {}

    ZELModule &m_module;
};
