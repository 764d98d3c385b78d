#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <QByteArray>
#include <QString>

/// What users made, to be kept in a file and brought to a phone again.
namespace exchange {

/// A user's key. One that triggers a provisioned action names it by its dmId, because its number is
/// another one on another phone.
struct ExportedKey
{
    Key key;
    QString actionDmId; ///< empty: `key.idAction` is one of the document's actions, or the reserved
};

/// User keys and actions, with the ids that they had.
struct Document
{
    ListAction actions;
    QList<ExportedKey> keys;
};

/// The document as JSON, with its schema and version.
QByteArray toJson(const Document &document, bool isPretty);

/// The document that a file holds. Throws a Failure of status InvalidText if it is none: no JSON,
/// another schema or version, a wrong field, an id that stands twice, or a row that claims to be
/// provisioned. `name` is the file's, for the messages.
Document fromJson(const QByteArray &text, const QString &name);

} // namespace exchange
