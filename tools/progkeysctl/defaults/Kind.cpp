#include "defaults/Kind.h"

#include <QFileInfo>

namespace defaults {
namespace {

FieldName text(const char *name, const char *title)
{
    return {QString::fromLatin1(name), QString::fromLatin1(title), false};
}

FieldName number(const char *name, const char *title)
{
    return {QString::fromLatin1(name), QString::fromLatin1(title), true};
}

} // namespace

const QList<FieldName> &fieldNames(Kind kind)
{
    static const QList<FieldName> actions{
        text("dmId", "identifier"),       number("type", "type"),
        text("action", "action"),         text("webAppName", "web application"),
        text("arguments", "arguments"),   text("label", "label"),
        text("shortLabel", "short label")};
    static const QList<FieldName> keys{text("dmId", "identifier"),
                                       text("container", "container"),
                                       number("position", "position"),
                                       text("icon", "icon"),
                                       number("type", "key type"),
                                       number("aom_type", "kind of add-on module"),
                                       number("aom_addr", "address of the add-on module")};
    return kind == Kind::Actions ? actions : keys;
}

QString nameOf(Kind kind)
{
    return kind == Kind::Actions ? QStringLiteral("actions") : QStringLiteral("keys");
}

std::optional<Kind> kindNamed(const QString &name)
{
    for (const Kind kind : {Kind::Actions, Kind::Keys}) {
        if (name == nameOf(kind))
            return kind;
    }
    return std::nullopt;
}

std::optional<Kind> kindOfFile(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const bool isActions = name.contains(QLatin1String("actions"), Qt::CaseInsensitive);
    const bool isKeys = name.contains(QLatin1String("keys"), Qt::CaseInsensitive);
    if (isActions == isKeys)
        return std::nullopt;
    return isActions ? Kind::Actions : Kind::Keys;
}

Failure unknownKind(const QString &file, const QString &advice)
{
    return {ExitStatus::Usage,
            QStringLiteral("%1 does not tell whether it is of actions or of keys").arg(file),
            advice};
}

QString describeField(Kind kind, int number)
{
    const QString text = QStringLiteral("field %1").arg(number);
    const QList<FieldName> &names = fieldNames(kind);
    return number > names.size() ? text : text + QStringLiteral(", ") + names.at(number - 1).title;
}

} // namespace defaults
