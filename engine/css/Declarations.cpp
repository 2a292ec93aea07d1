// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Declarations.h"

#include "base/Error.h"
#include "engine/css/Color.h"

#include <algorithm>

namespace css {

namespace {

bool contains(const std::vector<PropertyId> &list, PropertyId id)
{
    return std::find(list.begin(), list.end(), id) != list.end();
}

bool covers(const std::vector<PropertyId> &list, const Declaration &declaration)
{
    if (declaration.values.empty()) return false;
    return std::all_of(declaration.values.begin(), declaration.values.end(),
                       [&list](const PropertyValue &value) { return contains(list, value.id); });
}

bool touches(const std::vector<PropertyId> &list, const Declaration &declaration)
{
    return std::any_of(declaration.values.begin(), declaration.values.end(),
                       [&list](const PropertyValue &value) { return contains(list, value.id); });
}

std::vector<PropertyId> targetsOf(const QString &name)
{
    const PropertyId id = propertyId(name);
    if (id != PropertyId::Unknown && id != PropertyId::Custom) return {id};
    return longhandsOf(shorthandId(name));
}

bool sameUnknown(const QString &a, const QString &b)
{
    return QString(a).remove(u'-').compare(QString(b).remove(u'-'), Qt::CaseInsensitive) == 0;
}

/// The value with pixels behind each number that stands without a unit, outside of functions.
QString withPixels(const QString &value)
{
    const Tokens tokens = tokenize(value);
    QString result;
    size_t end = tokens.size() - 1;
    for (size_t i = 0; i < end;) {
        const size_t next = skipComponent(tokens, i, end);
        result += QStringView(value).mid(tokens[i].start, tokens[next - 1].end - tokens[i].start);
        if (tokens[i].is(TokenType::Number)) result += QLatin1String("px");
        i = next;
    }
    return result;
}

/// "rect(1px 2px 3px 4)" and numbers in other functions: only `clip` wants them.
QString withPixelsInside(const QString &value)
{
    const Tokens tokens = tokenize(value);
    QString result;
    for (const Token &token : tokens) {
        result += QStringView(value).mid(token.start, token.end - token.start);
        if (token.is(TokenType::Number)) result += QLatin1String("px");
    }
    return result;
}

bool isColor(const QString &name)
{
    const PropertyId id = propertyId(name);
    if (id == PropertyId::Unknown || id == PropertyId::Custom) return name == QLatin1String("border-color");
    return propertyInfo(id).grammar == Grammar::Color;
}

std::optional<Declaration> readScriptValue(const QString &name, const QString &value)
{
    const auto attempt = [&name](const QString &text) -> std::optional<Declaration> {
        auto values = parseDeclaration(name, text, ValueMode::Strict);
        if (!values) return {};
        return Declaration{name, name, text, false, std::move(*values)};
    };
    const QString text = value.simplified() == value.trimmed() ? value.trimmed() : value.simplified();
    if (isColor(name)) {
        bool isNumber = false;
        const uint number = text.toUInt(&isNumber);
        if (isNumber) return attempt(colorText(0xff000000u | (number & 0xffffffu)));
    }
    if (auto strict = attempt(text)) return strict;
    if (auto pixels = attempt(withPixels(text))) return pixels;
    return name == QLatin1String("clip") ? attempt(withPixelsInside(text)) : std::nullopt;
}

struct TextDecorationFlag
{
    const char *name;
    int flag;
};

const TextDecorationFlag decorationFlags[] = {{"textdecorationnone", 0},
                                              {"textdecorationunderline", 1},
                                              {"textdecorationoverline", 2},
                                              {"textdecorationlinethrough", 4},
                                              {"textdecorationblink", 8}};

const TextDecorationFlag *decorationFlag(const QString &name)
{
    QString plain = name.trimmed().toLower();
    plain.remove(u'-');
    for (const TextDecorationFlag &flag : decorationFlags)
        if (plain == QLatin1String(flag.name)) return &flag;
    return nullptr;
}

bool isTrue(const QString &value)
{
    const QString text = value.trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1") || text == QLatin1String("-1")) return true;
    if (text == QLatin1String("false") || text == QLatin1String("0") || text.isEmpty()) return false;
    throw base::Error(base::errors::invalidValue, QStringLiteral("\"%1\" is neither true nor false.").arg(value));
}

/// The flags of `text-decoration` in force, or -1 where it is unset.
int decorationOf(const DeclarationBlock &block)
{
    const QString text = block.value(QStringLiteral("text-decoration-line"));
    if (text.isNull()) return -1;
    int flags = 0;
    for (const QString &word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (word.compare(QLatin1String("underline"), Qt::CaseInsensitive) == 0) flags |= 1;
        if (word.compare(QLatin1String("overline"), Qt::CaseInsensitive) == 0) flags |= 2;
        if (word.compare(QLatin1String("line-through"), Qt::CaseInsensitive) == 0) flags |= 4;
        if (word.compare(QLatin1String("blink"), Qt::CaseInsensitive) == 0) flags |= 8;
    }
    return flags;
}

QString decorationText(int flags)
{
    return valueText(PropertyId::TextDecorationLine, Value::ofWord(flags));
}

} // namespace

QString nameInSheet(const QString &written)
{
    if (written.startsWith(QLatin1String("--"))) return written;
    const QString lower = written.toLower();
    if (isKnownProperty(lower)) return lower;
    if (const QString physical = physicalName(lower); physical != lower) return physical;
    // Other spellings that CSS itself has: prefixes and older names. The forms of scripts aren't CSS.
    if (lower.startsWith(u'-') || lower == QLatin1String("word-wrap") || lower == QLatin1String("grid-gap") ||
        lower == QLatin1String("grid-row-gap") || lower == QLatin1String("grid-column-gap") ||
        lower.startsWith(QLatin1String("break-"))) {
        const QString name = canonicalName(lower);
        if (isKnownProperty(name)) return name;
    }
    return written;
}

base::Ref<DeclarationBlock> DeclarationBlock::parse(const QString &text, ValueMode mode)
{
    const Tokens tokens = tokenize(text);
    return parse(tokens, 0, tokens.size() - 1, text, mode);
}

base::Ref<DeclarationBlock> DeclarationBlock::parse(const Tokens &tokens, size_t from, size_t to, const QString &text,
                                                    ValueMode mode)
{
    auto block = base::make<DeclarationBlock>();
    size_t at = from;
    while (at < to) {
        if (tokens[at].is(TokenType::Whitespace) || tokens[at].is(TokenType::Semicolon)) {
            ++at;
            continue;
        }
        size_t end = at;
        while (end < to && !tokens[end].is(TokenType::Semicolon))
            end = skipComponent(tokens, end, to);
        const size_t start = at;
        at = end;
        if (!tokens[start].is(TokenType::Ident)) continue;
        size_t colon = start + 1;
        while (colon < end && tokens[colon].is(TokenType::Whitespace))
            ++colon;
        if (colon >= end || !tokens[colon].is(TokenType::Colon)) continue;
        Declaration declaration;
        declaration.written = text.mid(tokens[start].start, tokens[start].end - tokens[start].start);
        declaration.name = nameInSheet(tokens[start].text);
        const bool known = isKnownProperty(declaration.name);
        if (known && !declaration.name.startsWith(QLatin1String("--")))
            declaration.written = declaration.written.toLower();
        const auto trim = [&] {
            while (end > colon + 1 && (tokens[end - 1].is(TokenType::Whitespace) || tokens[end - 1].is(TokenType::Cdc)))
                --end;
        };
        trim();
        if (end > colon + 2 && tokens[end - 1].isIdent("important")) {
            size_t mark = end - 2;
            while (mark > colon && tokens[mark].is(TokenType::Whitespace))
                --mark;
            if (tokens[mark].isDelim('!')) {
                declaration.important = true;
                end = mark;
                trim();
            }
        }
        declaration.text = sourceOf(tokens, colon + 1, end, text);
        if (auto values =
                known ? parseDeclaration(declaration.name, tokens, colon + 1, end, text, mode) : std::nullopt) {
            declaration.values = std::move(*values);
            if (declaration.name.startsWith(QLatin1String("--")))
                declaration.values[0].value.items = {Value::ofText(Value::Kind::String, declaration.name)};
        }
        block->mDeclarations.push_back(std::move(declaration));
    }
    return block;
}

base::Ref<DeclarationBlock> DeclarationBlock::copy() const
{
    auto copy = base::make<DeclarationBlock>();
    copy->mDeclarations = mDeclarations;
    copy->mBaseURL = mBaseURL;
    return copy;
}

QString DeclarationBlock::text() const
{
    QString result;
    for (const Declaration &declaration : mDeclarations) {
        if (!result.isEmpty()) result += QLatin1String("; ");
        result += declaration.written + QLatin1String(": ") + declaration.text;
        if (declaration.important) result += QLatin1String(" !important");
    }
    return result;
}

const Declaration *DeclarationBlock::effective(PropertyId id, const Value **value) const
{
    const Declaration *found = nullptr;
    for (const Declaration &declaration : mDeclarations) {
        if (found && found->important && !declaration.important) continue;
        for (const PropertyValue &entry : declaration.values) {
            if (entry.id != id) continue;
            found = &declaration;
            *value = &entry.value;
        }
    }
    return found;
}

QString DeclarationBlock::longhandText(PropertyId id) const
{
    const Value *value = nullptr;
    const Declaration *declaration = effective(id, &value);
    if (!declaration) return {};
    const QString text = propertyId(declaration->name) == id ? declaration->text : valueText(id, *value);
    return text.isNull() ? QStringLiteral("") : text;
}

QString DeclarationBlock::shorthandText(Shorthand shorthand) const
{
    const std::vector<PropertyId> &ids = longhandsOf(shorthand);
    const Declaration *common = nullptr;
    bool oneDeclaration = true;
    QStringList texts;
    for (const PropertyId id : ids) {
        const Value *value = nullptr;
        const Declaration *declaration = effective(id, &value);
        if (!declaration) return {};
        if (!common) common = declaration;
        oneDeclaration = oneDeclaration && common == declaration;
        texts << longhandText(id);
    }
    if (oneDeclaration && common && shorthandId(common->name) == shorthand) return common->text;
    const auto four = [](const QStringList &t) {
        if (t[1] != t[3]) return t.join(u' ');
        if (t[0] != t[2]) return QStringList{t[0], t[1], t[2]}.join(u' ');
        return t[0] == t[1] ? t[0] : t[0] + u' ' + t[1];
    };
    switch (shorthand) {
    case Shorthand::Margin:
    case Shorthand::Padding:
    case Shorthand::Inset:
    case Shorthand::BorderWidth:
    case Shorthand::BorderStyle:
    case Shorthand::BorderColor:
    case Shorthand::BorderRadius:
        return four(texts);
    case Shorthand::Border: {
        QStringList aspects;
        for (qsizetype i = 0; i < 12; i += 4) {
            // Edges that differ have no common text.
            if (texts.mid(i, 4).count(texts[i]) != 4) return QStringLiteral("");
            aspects << texts[i];
        }
        return aspects.join(u' ');
    }
    case Shorthand::Overflow:
    case Shorthand::Gap:
    case Shorthand::MarginInline:
    case Shorthand::MarginBlock:
    case Shorthand::PaddingInline:
    case Shorthand::PaddingBlock:
    case Shorthand::InsetInline:
    case Shorthand::InsetBlock:
    case Shorthand::PlaceContent:
    case Shorthand::PlaceItems:
    case Shorthand::PlaceSelf:
        return texts[0] == texts[1] ? texts[0] : texts.join(u' ');
    case Shorthand::BackgroundPosition:
    case Shorthand::BorderTop:
    case Shorthand::BorderRight:
    case Shorthand::BorderBottom:
    case Shorthand::BorderLeft:
    case Shorthand::Outline:
    case Shorthand::FlexFlow:
        return texts.join(u' ');
    case Shorthand::GridRow:
    case Shorthand::GridColumn:
    case Shorthand::GridArea:
        while (texts.size() > 1 && texts.last() == QLatin1String("auto"))
            texts.removeLast();
        return texts.join(QStringLiteral(" / "));
    case Shorthand::GridTemplate:
        return texts[2] == QLatin1String("none") ? texts[0] + QStringLiteral(" / ") + texts[1] : QStringLiteral("");
    case Shorthand::Grid:
        return QStringLiteral(""); // longhands written one by one
    default:
        break;
    }
    // What isn't left at its initial value.
    QStringList parts;
    for (qsizetype i = 0; i < texts.size(); ++i)
        if (texts[i] != valueText(ids[size_t(i)], Value::of(Value::Kind::Initial))) parts << texts[i];
    return parts.isEmpty() ? texts.value(0) : parts.join(u' ');
}

QString DeclarationBlock::value(const QString &name) const
{
    if (const TextDecorationFlag *flag = decorationFlag(name)) {
        const int flags = decorationOf(*this);
        const bool on = flag->flag == 0 ? flags == 0 : flags > 0 && (flags & flag->flag);
        return on ? QStringLiteral("true") : QStringLiteral("false");
    }
    const QString canonical = canonicalName(name);
    const PropertyId id = propertyId(canonical);
    if (id != PropertyId::Unknown && id != PropertyId::Custom) return longhandText(id);
    if (const Shorthand shorthand = shorthandId(canonical); shorthand != Shorthand::None)
        return shorthandText(shorthand);
    for (auto at = mDeclarations.rbegin(); at != mDeclarations.rend(); ++at)
        if (id == PropertyId::Custom ? at->name == canonical : sameUnknown(at->written, canonical))
            return at->text.isNull() ? QStringLiteral("") : at->text;
    return {};
}

void DeclarationBlock::put(Declaration declaration)
{
    const std::vector<PropertyId> targets = targetsOf(declaration.name);
    // In place, unless something behind it would take away from it again.
    size_t place = mDeclarations.size();
    for (size_t i = mDeclarations.size(); i-- > 0;) {
        if (mDeclarations[i].name == declaration.name) {
            place = i;
            break;
        }
        if (touches(targets, mDeclarations[i]) && !covers(targets, mDeclarations[i])) break;
    }
    if (place < mDeclarations.size()) {
        declaration.written = mDeclarations[place].written;
        mDeclarations[place] = std::move(declaration);
    } else {
        mDeclarations.push_back(std::move(declaration));
    }
    const QString name = mDeclarations[place].name;
    for (size_t i = mDeclarations.size(); i-- > 0;) {
        if (i == place) continue;
        if (mDeclarations[i].name != name && !covers(targets, mDeclarations[i])) continue;
        mDeclarations.erase(mDeclarations.begin() + long(i));
        if (i < place) --place;
    }
    // An important declaration elsewhere would still win over what was just written.
    for (Declaration &other : mDeclarations)
        if (&other != &mDeclarations[place] && other.important && touches(targets, other))
            mDeclarations[place].important = true;
}

void DeclarationBlock::setValue(const QString &name, const QString &value)
{
    if (const TextDecorationFlag *flag = decorationFlag(name)) {
        const bool on = isTrue(value);
        const int flags = decorationOf(*this);
        int now = std::max(flags, 0);
        if (flag->flag == 0) {
            if (!on && flags != 0) return;
            if (!on) remove(QStringLiteral("text-decoration"));
            now = on ? 0 : -1;
        } else {
            now = on ? now | flag->flag : now & ~flag->flag;
            if (now == 0 && flags <= 0) return;
            if (now == 0) remove(QStringLiteral("text-decoration"));
            if (now == 0) now = -1;
        }
        if (now >= 0) setValue(QStringLiteral("text-decoration"), decorationText(now));
        return;
    }
    if (value.trimmed().isEmpty()) {
        remove(name);
        return;
    }
    const QString canonical = canonicalName(name);
    if (isKnownProperty(canonical) && !canonical.startsWith(QLatin1String("--"))) {
        auto declaration = readScriptValue(canonical, value);
        if (!declaration)
            throw base::Error(base::errors::invalidValue,
                              QStringLiteral("\"%1\" is no value for %2.").arg(value, canonical));
        put(std::move(*declaration));
        return;
    }
    // What we don't know is text; it must stay one declaration.
    const QString written = name.trimmed();
    const auto probe = parse(written + QLatin1String(": ") + value, ValueMode::Strict);
    if (probe->mDeclarations.size() != 1 || probe->mDeclarations[0].text.isEmpty())
        throw base::Error(base::errors::invalidValue, QStringLiteral("\"%1\" is no value for %2.").arg(value, written));
    for (auto at = mDeclarations.rbegin(); at != mDeclarations.rend(); ++at)
        if (sameUnknown(at->written, written)) {
            at->text = probe->mDeclarations[0].text;
            at->values = probe->mDeclarations[0].values;
            return;
        }
    mDeclarations.push_back(probe->mDeclarations[0]);
}

void DeclarationBlock::breakUp(size_t index, const std::vector<PropertyId> &without)
{
    const Declaration whole = mDeclarations[index];
    mDeclarations.erase(mDeclarations.begin() + long(index));
    for (const PropertyValue &value : whole.values) {
        if (contains(without, value.id)) continue;
        const QString text = valueText(value.id, value.value);
        if (text.isEmpty()) continue;
        const QString &name = propertyInfo(value.id).name;
        mDeclarations.insert(mDeclarations.begin() + long(index++),
                             Declaration{name, name, text, whole.important, {value}});
    }
}

bool DeclarationBlock::remove(const QString &name)
{
    const size_t before = mDeclarations.size();
    if (const TextDecorationFlag *flag = decorationFlag(name)) {
        const int flags = decorationOf(*this);
        if (flag->flag == 0 ? flags != 0 : flags <= 0 || !(flags & flag->flag)) return false;
        setValue(name, QStringLiteral("false"));
        return true;
    }
    const QString canonical = canonicalName(name);
    const std::vector<PropertyId> targets = targetsOf(canonical);
    if (targets.empty()) {
        std::erase_if(mDeclarations, [&](const Declaration &d) {
            return canonical.startsWith(QLatin1String("--")) ? d.name == canonical : sameUnknown(d.written, canonical);
        });
        return mDeclarations.size() != before;
    }
    std::erase_if(mDeclarations, [&](const Declaration &d) { return d.name == canonical || covers(targets, d); });
    bool changed = mDeclarations.size() != before;
    // An edge of a border gives way to the shorthand; elsewhere the shorthand is taken apart, so that what was cleared
    // is cleared.
    const bool edge = targets.size() == 1 && canonical.startsWith(QLatin1String("border-")) &&
                      !canonical.endsWith(QLatin1String("radius")) && targets[0] >= PropertyId::BorderTopWidth &&
                      targets[0] <= PropertyId::BorderLeftColor;
    for (size_t i = mDeclarations.size(); i-- > 0;) {
        if (!touches(targets, mDeclarations[i])) continue;
        const Shorthand shorthand = shorthandId(mDeclarations[i].name);
        if (edge && (shorthand == Shorthand::Border || shorthand == Shorthand::BorderWidth ||
                     shorthand == Shorthand::BorderStyle || shorthand == Shorthand::BorderColor))
            continue;
        breakUp(i, targets);
        changed = true;
    }
    return changed;
}

} // namespace css
