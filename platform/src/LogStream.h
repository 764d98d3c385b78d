#pragma once

namespace zel {

/// Is the error output the journal's own stream? Found out at the first call.
bool isStderrTheJournal();

} // namespace zel
