#include "defaults/Kind.h"

#include "text/Format.h"

#include <QFileInfo>

namespace defaults {
namespace {

// The texts have the fields in the order of the bus, without the ids.
template <typename Record>
QList<fields::Field> fieldsWithoutIds()
{
    QList<fields::Field> fields;
    for (const fields::Field &field : fields::of<Record>()) {
        if (field.name != "idKey"_s && field.name != "idAction"_s)
            fields.append(field);
    }
    return fields;
}

} // namespace

const QList<fields::Field> &fieldsOf(Kind kind)
{
    static const QList<fields::Field> actions = fieldsWithoutIds<Action>();
    static const QList<fields::Field> keys = fieldsWithoutIds<Key>();
    static const QList<fields::Field> none;
    return kind == Kind::Actions ? actions : kind == Kind::Keys ? keys : none;
}

QStringList fieldNames(Kind kind)
{
    return fields::namesOf(fieldsOf(kind));
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
