#pragma once

/// `Capability`, `MapQStringCapability` and `QMapIntInt` belong to the module framework. This
/// header completes the records in one folder.
#include <zelcore/ZELTypes.h>
