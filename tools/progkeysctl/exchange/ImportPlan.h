#pragma once

#include "exchange/Document.h"

#include <optional>

namespace exchange {

enum class StepKind { Add, Change, Skip };

/// What an import does with one action or key of the document.
struct Step
{
    StepKind kind = StepKind::Add;
    std::optional<Action> action;    ///< nothing for a key
    Key key;                         ///< if it is a key
    qlonglong here = 0;              ///< id of the row here that is equal, or that is changed
    std::optional<qlonglong> target; ///< action of a key here; nothing if it will be added
    QString reason;                  ///< why it is skipped

    /// Whether it adds a key of the set, which needs room.
    bool addsKeyOfSet() const;
};

/// What importing the document does to a phone with these rows: actions, then keys.
///
/// A user row with the same content is left as it is, and stands for one row of the document only.
/// A key whose place a user key occupies changes that key. A key whose place only provisioned keys
/// occupy is skipped. Everything else is added. Provisioned rows do not change.
QList<Step> planImport(const Document &document, const ListAction &actions, const ListKey &keys);

} // namespace exchange
