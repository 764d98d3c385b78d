#pragma once

#include "completion/HalfTyped.h"
#include "completion/PhoneRows.h"

#include <string>
#include <vector>

namespace completion {

/// What may stand where the cursor is.
struct Answer
{
    enum Kind {
        Words,
        Files,       ///< of the file system, which the shell knows better
        Directories, ///< the same
        Commands,    ///< programs, the same
    };
    Kind kind = Words;
    std::vector<std::string> words;
    bool isOpen = false; ///< a word goes on where it ends, so that no blank follows
};

/// Candidates for the argument that is wanted, by what its type name says; whether they begin with
/// what is typed already is not looked at.
Answer valuesOf(const CLI::Option &option, const HalfTyped &line, const PhoneRows &phone);

} // namespace completion
