#include "defaults/Kind.h"

#include "fields/Fields.h"
#include "text/Format.h"

#include <QFileInfo>

namespace defaults {
namespace {

// The texts have the fields in the order of the bus, without the ids.
template <typename Record>
QList<output::Column> fieldsWithoutIds()
{
    QList<output::Column> fields;
    for (const output::Column &column : fields::columns<Record>()) {
        if (column.name != "idKey"_s && column.name != "idAction"_s)
            fields.append(column);
    }
    return fields;
}

} // namespace

const QList<output::Column> &fieldsOf(Kind kind)
{
    static const QList<output::Column> actions = fieldsWithoutIds<Action>();
    static const QList<output::Column> keys = fieldsWithoutIds<Key>();
    static const QList<output::Column> none;
    return kind == Kind::Actions ? actions : kind == Kind::Keys ? keys : none;
}

QStringList fieldNames(Kind kind)
{
    QStringList names;
    for (const output::Column &field : fieldsOf(kind))
        names.append(field.name);
    return names;
}

QString nameOf(Kind kind)
{
    return kind == Kind::Actions ? "actions"_s : "keys"_s;
}

std::optional<Kind> kindNamed(const QString &name)
{
    if (name == nameOf(Kind::Actions))
        return Kind::Actions;
    return name == nameOf(Kind::Keys) ? std::optional(Kind::Keys) : std::nullopt;
}

QString settingName(Kind kind)
{
    return kind == Kind::Actions ? "DefaultActions"_s
           : kind == Kind::Keys  ? "DefaultKeys"_s
                                 : "ProgKeysMax"_s;
}

std::optional<Kind> kindOfFile(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    if (name == settingName(Kind::Limit))
        return Kind::Limit;
    const bool isActions = name.contains("actions"_s, Qt::CaseInsensitive);
    const bool isKeys = name.contains("keys"_s, Qt::CaseInsensitive);
    if (isActions == isKeys)
        return std::nullopt;
    return isActions ? Kind::Actions : Kind::Keys;
}

Failure unknownKind(const QString &file, const QString &advice)
{
    return {ExitStatus::Usage,
            format("Cannot tell from the name of %1 whether it contains actions or keys", file),
            advice};
}

} // namespace defaults
