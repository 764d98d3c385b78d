#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

/// What `Key::type` says, as far as this service looks at it. Other values are stored as they come.
namespace KeyType {
constexpr int Set = 0;         ///< a key of the set itself; only these count against the limit
constexpr int AddOnModule = 1; ///< a key on an add-on module
} // namespace KeyType

/// One programmable key, `(xsxsisiii)` on the bus: idKey, dmId, idAction, container, position,
/// icon, type, aom_type, aom_addr. Mind that idAction and container travel in the other order than
/// they are declared in.
struct Key
{
    qlonglong idKey = -1;    ///< assigned by the database, from 1 upward
    QString dmId;            ///< provisioned entry it comes from; empty: made by a user
    QString container;       ///< the container of the user interface that holds it
    qlonglong idAction = -1; ///< the action it triggers
    int position = -1;       ///< within the container; on an add-on module the key's number
    QString icon;
    int type = -1;     ///< see KeyType
    int aom_type = -1; ///< kind of add-on module
    int aom_addr = -1; ///< address of the add-on module
};

/// `a(xsxsisiii)` on the bus.
using ListKey = QList<Key>;

Q_DECLARE_METATYPE(Key)
Q_DECLARE_METATYPE(ListKey)

bool operator==(const Key &left, const Key &right);
QDBusArgument &operator<<(QDBusArgument &argument, const Key &key);
const QDBusArgument &operator>>(const QDBusArgument &argument, Key &key);

/// Makes `Key` and `ListKey` known by name to the meta-type system and to the bus. To be called
/// before any call or event carries them; calling it again changes nothing.
void registerDBusKey();
