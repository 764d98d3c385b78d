#pragma once

/// The module framework defines `Capability`, `MapQStringCapability` and `QMapIntInt`.
#include <zelcore/ZELTypes.h>
