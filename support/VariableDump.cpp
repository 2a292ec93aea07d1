// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/VariableDump.h"

#include "base/Error.h"

#include <cstdlib>
#include <cxxabi.h>

namespace support {

namespace {

constexpr int maximalDimensions = 3;
constexpr int collectionDepth = 3;

QString element(const QString &name, const QString &attributes, const QString &text)
{
    return QLatin1Char('<') + name + attributes + QLatin1Char('>') + text + QLatin1String("</") + name +
           QLatin1String(">\r\n");
}

QString formatText(const QString &name, const DumpValue &value, int depth);

QString formatNested(const QString &name, const QString &attributes, const DumpValue &value, int depth)
{
    QString text;
    try {
        text = formatText(name, value, depth);
    } catch (const std::exception &error) {
        text = QStringLiteral("{Error %1 formatting for output}").arg(QString::fromUtf8(error.what()));
    }
    return element(name, attributes, text);
}

QString formatCollection(const DumpValue &value, int depth)
{
    QString text;
    int index = 0;
    for (const DumpValue &item : value.items())
        text += formatNested(QStringLiteral("[%1]").arg(++index), {}, item, std::min(depth - 1, collectionDepth));
    return text;
}

/// Does the dimension exist? Asking its lower bound is the only way to know.
bool hasDimension(const DumpValue &value, int dimension)
{
    try {
        value.lowerBound(dimension);
        return true;
    } catch (const base::Error &error) {
        if (error.number() == base::errors::subscriptOutOfRange) return false;
        throw;
    }
}

QString formatArray(const QString &name, const DumpValue &value, int depth)
{
    const int dimensions = value.dimensions();
    if (dimensions > maximalDimensions)
        return QStringLiteral("{Dump truncated at %1 dimensions}").arg(maximalDimensions);
    for (int dimension = 1; dimension <= dimensions; ++dimension) {
        if (hasDimension(value, dimension)) continue;
        return dimension == 1 ? QStringLiteral("{UnInitialised Array}")
                              : QStringLiteral("{UnInitialised Array Dimension %1}").arg(dimension);
    }
    QString text;
    std::vector<int> index;
    for (int dimension = 1; dimension <= dimensions; ++dimension)
        index.push_back(value.lowerBound(dimension));
    for (const DumpValue &item : value.items()) {
        QStringList numbers;
        for (int number : index)
            numbers << QString::number(number);
        text +=
            formatNested(name, QStringLiteral(" Index=\"%1\"").arg(numbers.join(QLatin1Char(','))), item, depth - 1);
        for (int dimension = dimensions; dimension >= 1; --dimension) {
            if (++index[std::size_t(dimension - 1)] <= value.upperBound(dimension)) break;
            index[std::size_t(dimension - 1)] = value.lowerBound(dimension);
        }
    }
    return text;
}

QString formatText(const QString &name, const DumpValue &value, int depth)
{
    const QString &text = value.textOrType();
    switch (value.kind()) {
    case DumpValue::Kind::Empty:
        return QStringLiteral("{Empty}");
    case DumpValue::Kind::Null:
        return QStringLiteral("{Null}");
    case DumpValue::Kind::Nothing:
        return QStringLiteral("{Nothing}");
    case DumpValue::Kind::DataObject:
        return QStringLiteral("{DataObject}");
    case DumpValue::Kind::Record:
        return QStringLiteral("{UDT - %1}").arg(text);
    case DumpValue::Kind::String:
        return QString(text).replace(QChar(u'\0'), QLatin1String("{Null}"));
    case DumpValue::Kind::Text:
        return text;
    case DumpValue::Kind::Collection:
        return depth > 0 ? formatCollection(value, depth) : QLatin1Char('{') + text + QLatin1Char('}');
    case DumpValue::Kind::Object:
        return QLatin1Char('{') + text + QLatin1Char('}');
    case DumpValue::Kind::Array:
        return depth > 0 ? formatArray(name, value, depth) : QStringLiteral("{Array}");
    case DumpValue::Kind::External:
        return value.isNothing() ? QStringLiteral("{Nothing}") : QLatin1Char('{') + text + QLatin1Char('}');
    case DumpValue::Kind::Failure:
        return QStringLiteral("{Error %1 formatting for output}").arg(text);
    }
    return {};
}

/// The document model's classes under the names that hosts know them by.
QString interfaceName(const QString &typeName)
{
    static const QHash<QString, QString> names = {
        {QStringLiteral("AttributeNode"), QStringLiteral("IHTMLDOMAttribute")},
        {QStringLiteral("ControlRange"), QStringLiteral("IHTMLControlRange")},
        {QStringLiteral("Document"), QStringLiteral("IHTMLDocument2")},
        {QStringLiteral("Element"), QStringLiteral("IHTMLElement")},
        {QStringLiteral("ElementCollection"), QStringLiteral("IHTMLElementCollection")},
        {QStringLiteral("EventObject"), QStringLiteral("IHTMLEventObj")},
        {QStringLiteral("Node"), QStringLiteral("IHTMLDOMNode")},
        {QStringLiteral("SelectionObject"), QStringLiteral("IHTMLSelectionObject")},
        {QStringLiteral("StyleSheetObject"), QStringLiteral("IHTMLStyleSheet")},
        {QStringLiteral("TextRange"), QStringLiteral("IHTMLTxtRange")},
    };
    return names.value(typeName, typeName);
}

QString demangled(const std::type_info &type)
{
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                     &std::free);
    return QString::fromLatin1(status == 0 && name ? name.get() : type.name());
}

} // namespace

DumpValue DumpValue::collection(const QString &typeName, std::vector<DumpValue> items)
{
    DumpValue value(Kind::Collection, typeName);
    value.mItems = std::move(items);
    return value;
}

DumpValue DumpValue::array(int dimensions, std::vector<Bounds> bounds, std::vector<DumpValue> elements)
{
    DumpValue value(Kind::Array);
    value.mDimensions = dimensions;
    value.mBounds = std::move(bounds);
    value.mItems = std::move(elements);
    return value;
}

DumpValue DumpValue::external(const QString &typeName, bool isNothing)
{
    DumpValue value(Kind::External, interfaceName(typeName));
    value.mIsNothing = isNothing;
    return value;
}

int DumpValue::lowerBound(int dimension) const
{
    if (dimension < 1 || std::size_t(dimension) > mBounds.size())
        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("Subscript out of range"));
    return mBounds[std::size_t(dimension - 1)].lower;
}

int DumpValue::upperBound(int dimension) const
{
    if (dimension < 1 || std::size_t(dimension) > mBounds.size())
        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("Subscript out of range"));
    return mBounds[std::size_t(dimension - 1)].upper;
}

QString FormatVariable(const QString &Name, const DumpValue &Value, int Depth)
{
    return formatNested(Name, {}, Value, Depth);
}

namespace detail {

QString shortTypeName(const std::type_info &type)
{
    QString name = demangled(type);
    const qsizetype arguments = name.indexOf(QLatin1Char('<'));
    if (arguments >= 0) name.truncate(arguments);
    name.remove(QLatin1Char('*')).remove(QLatin1String(" const"));
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1).trimmed();
}

QString className(const QMetaObject &type)
{
    const QString name = QString::fromLatin1(type.className());
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

bool isEngineType(const std::type_info &type)
{
    static const char *const namespaces[] = {
        "dom::", "html::", "css::", "changes::", "layout::", "ranges::", "paint::", "editing::", "surface::"};
    const QString name = demangled(type);
    return std::any_of(std::begin(namespaces), std::end(namespaces),
                       [&name](const char *prefix) { return name.startsWith(QLatin1String(prefix)); });
}

DumpValue pointerValue(const std::type_info &pointerType, bool isNothing)
{
    return isNothing ? DumpValue::nothing() : DumpValue::object(shortTypeName(pointerType));
}

QString numberText(double value)
{
    return QString::number(value, 'g', 15);
}

DumpValue variantValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return DumpValue::empty();
    case QMetaType::Nullptr:
        return DumpValue::null();
    case QMetaType::Bool:
        return dumpValue(value.toBool());
    case QMetaType::Double:
    case QMetaType::Float:
        return DumpValue::text(numberText(value.toDouble()));
    case QMetaType::QString:
        return DumpValue::string(value.toString());
    case QMetaType::QDateTime:
        // A date that was never set shows as such; any other in one form on every machine.
        return value.toDateTime().isValid()
                   ? DumpValue::text(value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")))
                   : DumpValue::empty();
    case QMetaType::QVariantList:
        return sequenceValue(value.toList());
    case QMetaType::QStringList:
        return sequenceValue(value.toStringList());
    default:
        break;
    }
    if (value.metaType().flags() & QMetaType::PointerToQObject) return pointerTo(value.value<QObject *>());
    if (value.canConvert<QString>()) return DumpValue::text(value.toString());
    // A collection's items may be elements, counted references in the shape of a variant.
    static const QLatin1String reference("base::Ref<");
    const QString type = QString::fromLatin1(value.typeName());
    if (type.startsWith(reference))
        return DumpValue::external(type.mid(type.lastIndexOf(QLatin1Char(':')) + 1).chopped(1), false);
    return DumpValue::record(QString::fromLatin1(value.typeName()));
}

} // namespace detail

VariableDump &VariableDump::addExternal(const char *name)
{
    mText += FormatVariable(QLatin1String(name), DumpValue::text(QStringLiteral("{Cannot dump external UDTs}")));
    return *this;
}

void VariableDump::addGuarded(const QString &name, const std::function<DumpValue()> &getter)
{
    const auto failure = [](const QString &description) { return DumpValue::failure(description); };
    DumpValue value = DumpValue::empty();
    try {
        value = getter();
        if (value.kind() == DumpValue::Kind::External && mRole == VariableRole::Member)
            value = DumpValue::text(QStringLiteral("{Cannot dump external UDTs}"));
        else if (value.kind() == DumpValue::Kind::External && mRole == VariableRole::Parameter)
            value = DumpValue::text(QStringLiteral("{Can't dump UDT parameters}"));
    } catch (const base::Error &error) {
        value = failure(error.description());
    } catch (const std::exception &error) {
        value = failure(QString::fromUtf8(error.what()));
    } catch (...) {
        value = failure(QStringLiteral("Unknown failure"));
    }
    mText += FormatVariable(name, value);
}

} // namespace support
