#pragma once

#include "records/Fields.h"

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

/// The values of `Key::type` that this service checks. It stores other values unchanged.
namespace KeyType {
constexpr int Set = 0;         ///< a key on the set; only these count towards the limit
constexpr int AddOnModule = 1; ///< a key on an add-on module
} // namespace KeyType

/// A programmable key, `(xsxsisiii)` on the bus.
struct Key
{
    qlonglong idKey = -1;    ///< assigned by the database, starting at 1
    QString dmId;            ///< the provisioned entry; empty if a user created the key
    QString container;       ///< the container of the user interface with this key
    qlonglong idAction = -1; ///< the action that the key triggers
    int position = -1;       ///< within the container; on an add-on module, the number of the key
    QString icon;
    int type = -1;     ///< see KeyType
    int aom_type = -1; ///< the type of the add-on module
    int aom_addr = -1; ///< the address of the add-on module

    /// In the order of the bus signature, in which idAction precedes container.
    static constexpr auto fields()
    {
        return std::make_tuple(
            Field{"idKey", &Key::idKey}, Field{"dmId", &Key::dmId},
            Field{"idAction", &Key::idAction}, Field{"container", &Key::container},
            Field{"position", &Key::position}, Field{"icon", &Key::icon}, Field{"type", &Key::type},
            Field{"aom_type", &Key::aom_type}, Field{"aom_addr", &Key::aom_addr});
    }
};

/// `a(xsxsisiii)` on the bus.
using ListKey = QList<Key>;

Q_DECLARE_METATYPE(Key)
Q_DECLARE_METATYPE(ListKey)

bool operator==(const Key &left, const Key &right);
QDBusArgument &operator<<(QDBusArgument &argument, const Key &key);
const QDBusArgument &operator>>(const QDBusArgument &argument, Key &key);

/// Registers `Key` and `ListKey` by name with the meta-type system and the bus library. Call this
/// before a call or an event uses these types. Further calls have no effect.
void registerDBusKey();
