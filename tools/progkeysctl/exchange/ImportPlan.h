#pragma once

#include "exchange/Document.h"

#include <QMap>

#include <optional>

namespace exchange {

enum class StepKind { Add, Change, Skip };

/// What is to become of one action of the document. `here` is the equal one that is here already.
struct ActionStep
{
    StepKind kind = StepKind::Add;
    Action action;
    qlonglong here = 0;
    QString reason; ///< why it is skipped
};

/// What is to become of one key of the document. `here` is the key that is equal, or that it
/// changes. Its action is known by the number that it has in the document until that one is added.
struct KeyStep
{
    StepKind kind = StepKind::Add;
    ExportedKey exported;
    qlonglong here = 0;
    std::optional<qlonglong> idAction; ///< nothing: that of a document's action yet to be added
    QString reason;
};

struct ImportPlan
{
    QList<ActionStep> actions;
    QList<KeyStep> keys;
    int setKeysAfterwards = 0; ///< how many keys of the set there would be

    bool addsSetKeys() const;
};

/// What importing the document does to a phone with these rows.
///
/// A user row with the same content is left as it is, and each of them stands for one row of the
/// document only. A key whose place a user's key has is changed to what the document says; one
/// whose place only provisioned keys have is skipped. Everything else is added. No provisioned row
/// is touched.
ImportPlan planImport(const Document &document, const ListAction &actions, const ListKey &keys);

} // namespace exchange
