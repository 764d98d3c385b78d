#pragma once

/// Names on the bus.
#define SERVICE "com.velmora.Tessaro.ZelProgrammableKeys"
#define SERVICE_PATH "/com/velmora/Tessaro/ZelProgrammableKeys"
#define SETTINGS "com.velmora.Tessaro.SettingsManager"
#define SETTINGS_PATH "/com/velmora/Tessaro/SettingsManager"
#define OPERATIONS "com.velmora.Tessaro.ZELInterface"
#define EVENTS "com.velmora.Tessaro.ZELEvents"
#define EVENT "event"
