#pragma once

/// `Capability`, `MapQStringCapability` and `QMapIntInt` belong to the module framework.
#include <zelcore/ZELTypes.h>
