#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "support/MetaObject.h"
#include "support/TestMain.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <vector>

namespace {

struct Argument
{
    const char *type;
    const char *value;
    const char *name = nullptr;   ///< in-arguments only
    const char *format = nullptr; ///< "list" or "map"
    const char *mapkey = nullptr;
    const char *annotation = nullptr; ///< the Qt type name of a custom type
};

struct Method
{
    const char *description;
    const char *name;
    std::vector<Argument> in;
    Argument out;
};

const Argument Id{"x", "qlonglong"};
const Argument Code{"i", "int"};
const Argument Keys{"a(xsxsisiii)", "Key", nullptr, "list", nullptr, "ListKey"};
const Argument Actions{"a(xsisssss)", "Action", nullptr, "list", nullptr, "ListAction"};
const Argument KeyIn{"(xsxsisiii)", "Key", "k", nullptr, nullptr, "Key"};
const Argument ActionIn{"(xsisssss)", "Action", "action", nullptr, nullptr, "Action"};
const Argument Positions{"a{ii}", "int", "mapId", "map", "int", "QMapIntInt"};
const Argument IdKey{"x", "qlonglong", "idKey"};
const Argument IdAction{"x", "qlonglong", "idAction"};
const Argument ListId{"i", "int", "listId"};
const Argument Name{"s", "QString", "name"};
const Argument Capabilities{"a{s(si)}", "Capability", nullptr,
                            "map",      "QString",    "MapQStringCapability"};
const Argument OneCapability{"(si)", "Capability", nullptr, nullptr, nullptr, "Capability"};

const std::vector<Method> Methods = {
    {"all keys", "getAllProgrammableKeys", {}, Keys},
    {"the keys of a container",
     "getProgrammableKeysByContainer",
     {{"s", "QString", "container"}},
     Keys},
    {"creating a key", "createProgrammableKey", {KeyIn}, Id},
    {"modifying a key", "modifyProgrammableKey", {KeyIn}, Code},
    {"moving keys", "changeProgrammableKeysPosition", {Positions}, {"b", "bool"}},
    {"deleting a key", "deleteProgrammableKey", {IdKey}, Code},
    {"one key", "getProgrammableKey", {IdKey}, Keys},
    {"all actions", "getAllActions", {}, Actions},
    {"adding an action", "addAction", {ActionIn}, Id},
    {"modifying an action", "modifyAction", {ActionIn}, Code},
    {"deleting an action", "deleteAction", {IdAction}, Code},
    {"one action", "getAction", {IdAction}, Actions},
    {"setting an icon",
     "setIconStateForKey",
     {IdKey, {"i", "int", "icon_x"}, {"i", "int", "icon_y"}},
     Code},
    {"setting a label", "setLabelStateForKey", {IdKey, {"i", "int", "state"}}, Code},
    {"all capabilities", "getCapabilities", {}, Capabilities},
    {"the capabilities of a list", "getCapabilities", {ListId}, Capabilities},
    {"one capability", "getCapability", {Name}, OneCapability},
    {"one capability of a list", "getCapability", {ListId, Name}, OneCapability},
};

QString attribute(const char *name, const char *value)
{
    return value ? QStringLiteral(" %1=\"%2\"").arg(QLatin1String(name), QLatin1String(value))
                 : QString();
}

QStringList linesOf(const Argument &argument, const char *direction, const char *annotated)
{
    QStringList lines{QStringLiteral("      <arg") + attribute("direction", direction) +
                      attribute("type", argument.type) + attribute("value", argument.value) +
                      attribute("name", argument.name) + attribute("format", argument.format) +
                      attribute("mapkey", argument.mapkey) + QStringLiteral(" />")};
    if (argument.annotation)
        lines.append(QStringLiteral("      <annotation") + attribute("value", argument.annotation) +
                     QStringLiteral(" name=\"com.trolltech.QtDBus.QtTypeName.%1\" />")
                         .arg(QLatin1String(annotated)));
    return lines;
}

QStringList linesOf(const Method &method)
{
    QStringList lines{QStringLiteral("    <method name=\"%1\" >").arg(QLatin1String(method.name))};
    for (const Argument &argument : method.in)
        lines += linesOf(argument, "in", "In0");
    lines += linesOf(method.out, "out", "Out0");
    lines.append(QStringLiteral("    </method>"));
    return lines;
}

QString text()
{
    return unit::classInfo(ZelProgrammableKeysAdaptor::staticMetaObject, "D-Bus Introspection");
}

/// The text by lines; a newline at its end begins no further line.
QStringList lines()
{
    QString whole = text();
    if (whole.endsWith(QLatin1Char('\n')))
        whole.chop(1);
    return whole.split(QLatin1Char('\n'));
}

/// The lines of each method, first to last.
QList<QStringList> methodBlocks()
{
    QList<QStringList> blocks;
    const QStringList inside = lines().mid(1, lines().size() - 2);
    for (const QString &line : inside) {
        if (line.startsWith(QStringLiteral("    <method ")))
            blocks.append(QStringList());
        if (!blocks.isEmpty())
            blocks.last().append(line);
    }
    return blocks;
}

} // namespace

/// The introspection text that the adaptor publishes, to the letter.
class IntrospectionTest : public QObject
{
    Q_OBJECT

private slots:
    void theTextIsOneInterfaceElement();
    void eachMethodIsLaidOutAsTheTableSays_data();
    void eachMethodIsLaidOutAsTheTableSays();
    void thereAreNoFurtherMethods();
    void theTextIsWellFormed();
    void eachElementStandsAtItsIndentOnALineOfItsOwn();
};

void IntrospectionTest::theTextIsOneInterfaceElement()
{
    QCOMPARE(lines().first(),
             QStringLiteral("  <interface name=\"com.velmora.Tessaro.ZELInterface\" >"));
    QCOMPARE(lines().last(), QStringLiteral("  </interface>"));
}

void IntrospectionTest::eachMethodIsLaidOutAsTheTableSays_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Method &method : Methods)
        QTest::newRow(method.description) << index++;
}

void IntrospectionTest::eachMethodIsLaidOutAsTheTableSays()
{
    QFETCH(int, index);
    QCOMPARE(methodBlocks().value(index), linesOf(Methods.at(static_cast<size_t>(index))));
}

void IntrospectionTest::thereAreNoFurtherMethods()
{
    QCOMPARE(methodBlocks().size(), static_cast<int>(Methods.size()));
}

void IntrospectionTest::theTextIsWellFormed()
{
    QXmlStreamReader reader(text());
    QStringList names;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement &&
            reader.name() == QLatin1String("method"))
            names.append(reader.attributes().value(QLatin1String("name")).toString());
    }
    QVERIFY2(!reader.hasError(), qUtf8Printable(reader.errorString()));
    QStringList expected;
    for (const Method &method : Methods)
        expected.append(QLatin1String(method.name));
    QCOMPARE(names, expected);
}

void IntrospectionTest::eachElementStandsAtItsIndentOnALineOfItsOwn()
{
    static const QRegularExpression form(
        QStringLiteral("^(  <interface( \\w+=\"[^\"]*\")+ >|  </interface>|"
                       "    <method( \\w+=\"[^\"]*\")+ >|    </method>|"
                       "      <(arg|annotation)( \\w+=\"[^\"]*\")+ />)$"));
    const QStringList all = lines();
    for (const QString &line : all)
        QVERIFY2(form.match(line).hasMatch(), qUtf8Printable(line));
}

PROGKEYS_TEST_MAIN(IntrospectionTest)
#include "IntrospectionTest.moc"
