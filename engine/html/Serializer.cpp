// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/Serializer.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"

#include <QSet>
#include <array>
#include <unordered_map>

namespace html {

using namespace dom;

namespace {

/// What a name says about the element, kept by name: asked for twice an element of a saved document.
struct NameTraits
{
    QString tag;
    bool isVoid = false;
    bool isRaw = false;
    bool dropsFirstLineFeed = false;
};

bool isRawName(Atom name)
{
    static const QSet<Atom> raw = {names::script,  names::style,    names::xmp,      names::iframe,
                                   names::noembed, names::noframes, names::plaintext};
    return raw.contains(name);
}

NameTraits traitsOfHtml(const Element &element)
{
    const Atom name = element.name();
    const bool drops = name == names::pre || name == names::textarea || name == names::listing;
    return {element.isPrefixed() ? name.text() : name.text().toUpper(), element.isVoid(), isRawName(name), drops};
}

const NameTraits &traitsOf(const Element &element)
{
    // A page uses some dozens of names: a slot for each of the latest saves the hash's work.
    struct Slot
    {
        Atom name;
        const NameTraits *traits = nullptr;
    };
    static thread_local std::unordered_map<Atom, NameTraits> html, foreign;
    static thread_local std::array<Slot, 128> slots;
    const Atom name = element.name();
    if (element.space() != Namespace::Html) {
        const auto [at, isNew] = foreign.try_emplace(name);
        if (isNew) at->second = {name.text(), element.isVoid()};
        return at->second;
    }
    Slot &slot = slots[name.hash() % slots.size()];
    if (slot.traits && slot.name == name) return *slot.traits;
    auto at = html.find(name);
    if (at == html.end()) at = html.emplace(name, traitsOfHtml(element)).first;
    slot = {name, &at->second};
    return at->second;
}

enum class LineEnds : uint8_t { Lf, CrLf };
enum class Place : uint8_t { Text, Value, Raw };

/// Writes behind a string, whose length is only made right at the end: a document is some hundred thousand small pieces.
class Writer
{
public:
    Writer(QString &out, LineEnds lineEnds) : mOut(out), mLength(out.size()), mCrLf(lineEnds == LineEnds::CrLf) {}
    ~Writer() { mOut.truncate(mLength); }
    /// The string, with its length made right.
    QString take()
    {
        mOut.truncate(mLength);
        return std::move(mOut);
    }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    void put(char16_t c) { *room(1) = c, ++mLength; }
    void put(QStringView text)
    {
        std::copy_n(text.utf16(), text.size(), room(text.size()));
        mLength += text.size();
    }
    template <size_t N> void put(const char16_t (&text)[N]) { put(QStringView(text, qsizetype(N - 1))); }
    void put(QStringView text, Place place);

private:
    char16_t *room(qsizetype more)
    {
        if (mLength + more > mOut.size()) mOut.resize(std::max<qsizetype>(256, 2 * (mLength + more)));
        return reinterpret_cast<char16_t *>(mOut.data()) + mLength;
    }
    void putSpecial(char16_t c);

    QString &mOut;
    qsizetype mLength;
    bool mCrLf;
};

/// Characters that aren't written as they stand, a bit a place.
constexpr std::array<uint8_t, 256> specials = [] {
    std::array<uint8_t, 256> table{};
    constexpr uint8_t text = 1 << int(Place::Text), value = 1 << int(Place::Value), raw = 1 << int(Place::Raw);
    table[u'&'] = table[0xA0] = text | value;
    table[u'"'] = value;
    table[u'<'] = table[u'>'] = text;
    table[u'\n'] = text | value | raw;
    return table;
}();

void Writer::put(QStringView text, Place place)
{
    const uint8_t bit = uint8_t(1 << int(place));
    const char16_t *from = text.utf16();
    const char16_t *const end = from + text.size();
    for (const char16_t *at = from; at != end; ++at) {
        if (*at > 0xff || !(specials[*at] & bit)) continue;
        put(QStringView(from, at));
        putSpecial(*at);
        from = at + 1;
    }
    put(QStringView(from, end));
}

void Writer::putSpecial(char16_t c)
{
    switch (c) {
    case u'&': return put(u"&amp;");
    case u'"': return put(u"&quot;");
    case u'<': return put(u"&lt;");
    case u'>': return put(u"&gt;");
    case u'\n':
        if (mCrLf) put(u'\r');
        return put(u'\n');
    default: return put(u"&nbsp;");
    }
}

void putLeaf(const Node &node, Writer &out)
{
    switch (node.type()) {
    case NodeType::Text: {
        const Element *parent = node.parentElement();
        out.put(static_cast<const Text &>(node).data(), parent && traitsOf(*parent).isRaw ? Place::Raw : Place::Text);
        break;
    }
    case NodeType::Comment: {
        const auto &comment = static_cast<const Comment &>(node);
        const bool declares = comment.form() == Comment::Form::Declaration;
        declares ? out.put(u"<") : out.put(u"<!--");
        out.put(comment.data(), Place::Raw);
        declares ? out.put(u">") : out.put(u"-->");
        break;
    }
    case NodeType::DocumentType: {
        const auto &doctype = static_cast<const DocumentType &>(node);
        out.put(u"<!");
        out.put(doctype.source(), Place::Raw);
        out.put(u'>');
        out.put(doctype.spaceBehind(), Place::Raw);
        break;
    }
    default: break;
    }
}

void putStartTag(const Element &element, const NameTraits &traits, Writer &out)
{
    out.put(u'<');
    out.put(traits.tag);
    for (const Attribute &attribute : element.attributeList()) {
        out.put(u' ');
        out.put(attribute.name.text());
        out.put(u"=\"");
        out.put(attribute.value, Place::Value);
        out.put(u'"');
    }
    out.put(u'>');
}

void putEndTag(const NameTraits &traits, Writer &out)
{
    if (traits.isVoid) return;
    out.put(u"</");
    out.put(traits.tag);
    out.put(u'>');
}

/// The parser takes one line feed away behind the tag, so one that belongs to the text needs a second one.
void putFirstLineFeed(const Element &element, const NameTraits &traits, Writer &out)
{
    const Node *first = element.firstChild();
    if (traits.dropsFirstLineFeed && first && first->isText() &&
        static_cast<const Text *>(first)->data().startsWith(u'\n'))
        out.put(u"\n", Place::Raw);
}

void openElement(const Element &element, const NameTraits &traits, Writer &out, bool showLine)
{
    putStartTag(element, traits, out);
    if (element.isHeldOpen() && showLine && !element.hasChildNodes()) out.put(u"&nbsp;");
    putFirstLineFeed(element, traits, out);
}

void putTree(const Node &top, Writer &out, bool showOwnLine)
{
    const Node *node = &top;
    for (;;) {
        if (const Element *element = node->asElement()) {
            const NameTraits &traits = traitsOf(*element);
            openElement(*element, traits, out, node != &top || showOwnLine);
            if (!node->firstChild()) putEndTag(traits, out);
        } else {
            putLeaf(*node, out);
        }
        if (node->firstChild()) {
            node = node->firstChild();
            continue;
        }
        while (node != &top && !node->nextSibling()) {
            node = node->parentNode();
            if (const Element *parent = node->asElement()) putEndTag(traitsOf(*parent), out);
        }
        if (node == &top) return;
        node = node->nextSibling();
    }
}

} // namespace

bool Serializer::isRawText(const Element &element)
{
    return traitsOf(element).isRaw;
}

void Serializer::writeStartTag(const Element &element, QString &out)
{
    Writer writer(out, LineEnds::Lf);
    putStartTag(element, traitsOf(element), writer);
}

void Serializer::writeEndTag(const Element &element, QString &out)
{
    Writer writer(out, LineEnds::Lf);
    putEndTag(traitsOf(element), writer);
}

void Serializer::writeText(QStringView text, QString &out)
{
    Writer(out, LineEnds::Lf).put(text, Place::Text);
}

void Serializer::write(const Node &top, QString &out, bool showOwnLine)
{
    Writer writer(out, LineEnds::Lf);
    putTree(top, writer, showOwnLine);
}

QString Serializer::withCrLf(const QString &text)
{
    if (!text.contains(u'\n')) return text;
    QString out;
    Writer(out, LineEnds::CrLf).put(text, Place::Raw);
    return out;
}

QString Serializer::outer(const Node &node)
{
    QString out;
    Writer writer(out, LineEnds::CrLf);
    const Node *parent = node.parentNode();
    if (node.isElement() && parent && parent->type() == NodeType::Document)
        for (const Node *child = parent->firstChild(); child; child = child->nextSibling()) putTree(*child, writer, false);
    else
        putTree(node, writer, false);
    return writer.take();
}

QString Serializer::inner(const Node &node)
{
    QString out;
    Writer writer(out, LineEnds::CrLf);
    if (const Element *element = node.asElement()) putFirstLineFeed(*element, traitsOf(*element), writer);
    for (const Node *child = node.firstChild(); child; child = child->nextSibling()) putTree(*child, writer, true);
    return writer.take();
}

} // namespace html
