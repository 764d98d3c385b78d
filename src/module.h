#pragma once

class ZELModule;

/// The process's one module, created under the name "ZelProgrammableKeys" by whoever needs it
/// first. Defined in app/; declared here so that what only needs a module does not depend on it.
ZELModule &theModule();
