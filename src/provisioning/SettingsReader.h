#pragma once

#include <QString>

/// Reads settings from the peer module SettingsManager, one remote call each. It caches nothing,
/// tries nothing twice and knows no defaults: a caller that needs one applies it itself.
class SettingsReader
{
public:
    static SettingsReader &instance();

    /// The setting's text; blocks until the peer has answered or the platform gives up. An empty
    /// text is both an empty setting and a failed read; `ok`, if given, tells them apart.
    QString getSettingValue(const QString &key, bool *ok = nullptr);

private:
    SettingsReader() = default;
};
