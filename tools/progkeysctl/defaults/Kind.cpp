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
    static const QList<FieldName> keys{
        text("dmId", "identifier"),          text("container", "container"),
        number("position", "position"),      text("icon", "icon"),
        number("type", "key type"),          number("aom_type", "module type"),
        number("aom_addr", "module address")};
    static const QList<FieldName> none;
    return kind == Kind::Actions ? actions : kind == Kind::Keys ? keys : none;
}

QString nameOf(Kind kind)
{
    return kind == Kind::Actions ? QStringLiteral("actions")
           : kind == Kind::Keys  ? QStringLiteral("keys")
                                 : QStringLiteral("limit");
}

QString settingName(Kind kind)
{
    return kind == Kind::Actions ? QStringLiteral("DefaultActions")
           : kind == Kind::Keys  ? QStringLiteral("DefaultKeys")
                                 : QStringLiteral("ProgKeysMax");
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
    if (name == settingName(Kind::Limit))
        return Kind::Limit;
    const bool isActions = name.contains(QLatin1String("actions"), Qt::CaseInsensitive);
    const bool isKeys = name.contains(QLatin1String("keys"), Qt::CaseInsensitive);
    if (isActions == isKeys)
        return std::nullopt;
    return isActions ? Kind::Actions : Kind::Keys;
}

Failure unknownKind(const QString &file, const QString &advice)
{
    return {ExitStatus::Usage,
            QStringLiteral("Cannot tell from the name of %1 whether it contains actions or keys")
                .arg(file),
            advice};
}

QString describeField(Kind kind, int number)
{
    const QString text = QStringLiteral("field %1").arg(number);
    const QList<FieldName> &names = fieldNames(kind);
    return number > names.size() ? text : text + QStringLiteral(", ") + names.at(number - 1).title;
}

} // namespace defaults
