#pragma once

#include "client/Phone.h"
#include "exchange/Document.h"
#include "outcome/Failure.h"
#include "output/Listing.h"

#include <optional>

namespace exchange {

enum class StepKind { Add, Change, Skip };

/// What an import does with one action or key of the document.
struct Step
{
    StepKind kind = StepKind::Add;
    std::optional<Action> action;    ///< nothing for a key
    Key key;                         ///< if it is a key
    qlonglong here = 0;              ///< id of the row here that is equal, changed or added
    std::optional<qlonglong> target; ///< action of a key here; nothing if it will be added
    QString outcome = QStringLiteral("planned");
    QString reason = {}; ///< why it is skipped
};

/// What importing the document does to a phone with these rows: actions, then keys.
///
/// A user row with the same content is left as it is, and stands for one row of the document only.
/// A key whose place a user key occupies changes that key. A key whose place only provisioned keys
/// occupy is skipped. Everything else is added. Provisioned rows do not change.
QList<Step> planImport(const Document &document, ListAction actions, ListKey keys);

/// Carries the steps out and sets their outcomes and new ids. Stops at the first one that fails,
/// and when SIGINT, SIGTERM or SIGHUP arrives, unless it is ignored. Returns why it stopped early.
std::optional<Failure> carryOut(QList<Step> &steps, const client::Phone &phone);

/// The steps as rows, and how many there are of each kind.
output::Listing listingOf(const QList<Step> &steps);

} // namespace exchange
