#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <QByteArray>
#include <QString>

/// The keys and actions that users made, in a file.
namespace exchange {

/// A user's key. A provisioned action is identified by its dmId, because its id differs from phone
/// to phone.
struct ExportedKey
{
    Key key;
    QString actionDmId; ///< empty if `key.idAction` is an action of the document, or reserved
};

/// User keys and actions, with the ids that they had.
struct Document
{
    ListAction actions;
    QList<ExportedKey> keys;
};

/// The document as JSON.
QByteArray toJson(const Document &document, bool isPretty);

/// The document in a file. Throws a Failure of status InvalidText for invalid JSON, another schema
/// or version, an invalid field, a repeated id of an action, a provisioned row, or a key whose
/// action is missing.
Document fromJson(const QByteArray &text, const QString &file);

} // namespace exchange
