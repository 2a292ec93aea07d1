// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/Parser.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/LineEnds.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"
#include "engine/html/InputGuard.h"
#include "engine/html/Markup.h"

#include <gumbo.h>

#include <QRegularExpression>

namespace html {

using namespace dom;

namespace {

/// NUL can't pass the tree builder, and a lone surrogate isn't text: both become the replacement character.
QByteArray encoded(const QString &text)
{
    QString clean = text;
    clean.replace(QChar(0), QChar(0xFFFD));
    return clean.toUtf8();
}

QString decoded(const char *text, qsizetype length = -1)
{
    return QString::fromUtf8(text, length);
}

class Gumbo
{
public:
    explicit Gumbo(const QByteArray &text, GumboTag context = GUMBO_TAG_LAST) : mText(text)
    {
        GumboOptions options = kGumboDefaultOptions;
        options.stop_on_first_error = false;
        options.max_errors = 0;
        if (context != GUMBO_TAG_LAST) options.fragment_context = context;
        mOptions = options;
        mOutput = gumbo_parse_with_options(&mOptions, mText.constData(), size_t(mText.size()));
    }
    ~Gumbo() { gumbo_destroy_output(&mOptions, mOutput); }
    Gumbo(const Gumbo &) = delete;
    Gumbo &operator=(const Gumbo &) = delete;
    const GumboOutput &output() const { return *mOutput; }

private:
    QByteArray mText;
    GumboOptions mOptions;
    GumboOutput *mOutput;
};

/// Makes our nodes from the tree builder's, in document order and without recursion.
class Builder
{
public:
    Builder(Document &document, const GuardedInput &input) : mDocument(document), mInput(input) {}

    /// Appends what `vector` holds, with all below, to `into`.
    void build(const GumboVector &vector, ParentNode &into)
    {
        struct Level {
            const GumboVector *nodes;
            unsigned next;
            ParentNode *parent;
        };
        std::vector<Level> levels{{&vector, 0, &into}};
        while (!levels.empty()) {
            Level &level = levels.back();
            if (level.next == level.nodes->length) {
                levels.pop_back();
                continue;
            }
            const auto *source = static_cast<const GumboNode *>(level.nodes->data[level.next++]);
            ParentNode *parent = level.parent;
            if (source->type == GUMBO_NODE_ELEMENT || source->type == GUMBO_NODE_TEMPLATE) {
                Ref<Element> element = makeElement(source->v.element);
                RawTree::append(*parent, *element);
                levels.push_back({&source->v.element.children, 0, element.get()});
            } else {
                appendLeaf(*source, *parent);
            }
        }
    }

private:
    static QString writtenName(const GumboElement &source)
    {
        GumboStringPiece piece = source.original_tag;
        if (!piece.data || piece.length == 0) return {};
        gumbo_tag_from_original_text(&piece);
        return decoded(piece.data, qsizetype(piece.length));
    }

    Ref<Element> makeElement(const GumboElement &source)
    {
        Namespace space = Namespace::Html;
        if (source.tag_namespace == GUMBO_NAMESPACE_SVG) space = Namespace::Svg;
        if (source.tag_namespace == GUMBO_NAMESPACE_MATHML) space = Namespace::MathMl;
        QString name;
        if (space == Namespace::Svg) {
            GumboStringPiece piece = source.original_tag;
            gumbo_tag_from_original_text(&piece);
            if (const char *normal = piece.data ? gumbo_normalize_svg_tagname(&piece) : nullptr) name = decoded(normal);
        }
        if (name.isEmpty() && source.tag != GUMBO_TAG_UNKNOWN && space == Namespace::Html)
            name = decoded(gumbo_normalized_tagname(source.tag));
        if (name.isEmpty()) {
            name = writtenName(source).remove(QString::fromUtf8(nameMark));
            if (space == Namespace::Html && !name.contains(u':')) name = name.toLower();
        }
        if (name.isEmpty()) name = decoded(gumbo_normalized_tagname(source.tag));
        auto element = base::make<Element>(mDocument, Atom(name), space);
        takeAttributes(source.attributes, *element);
        return element;
    }

    void takeAttributes(const GumboVector &attributes, Element &element, bool isSurplus = false)
    {
        for (unsigned i = 0; i < attributes.length; ++i) {
            const auto *attribute = static_cast<const GumboAttribute *>(attributes.data[i]);
            const GumboStringPiece &written = attribute->original_name;
            if (!isSurplus && QByteArrayView(written.data, qsizetype(written.length)) == surplusMark) {
                const qsizetype index = QByteArray(attribute->value).toLongLong();
                if (index < mInput.surplus.size()) { // else a page's own
                    takeSurplus(index, element);
                    continue;
                }
            }
            const Atom name(attributeName(*attribute));
            if (element.hasAttribute(name)) continue; // the first one counts (HTML standard, 13.2.5.33)
            const QString value = dom::withLf(decoded(attribute->value));
            RawTree::setAttribute(element, name, &value);
        }
    }

    void takeSurplus(qsizetype index, Element &element)
    {
        for (const QByteArray &part : mInput.surplus.value(index)) {
            const QByteArray open = element.space() == Namespace::Svg ? "<svg " : "<div ";
            const Gumbo gumbo(open + part + " >", GUMBO_TAG_BODY);
            const GumboVector &children = gumbo.output().root->v.element.children;
            if (children.length > 0)
                takeAttributes(static_cast<const GumboNode *>(children.data[0])->v.element.attributes, element, true);
        }
    }

    static QString attributeName(const GumboAttribute &attribute)
    {
        const QString name = decoded(attribute.name);
        switch (attribute.attr_namespace) { // the builder takes the prefix off on foreign elements
        case GUMBO_ATTR_NAMESPACE_XLINK: return QStringLiteral("xlink:") + name;
        case GUMBO_ATTR_NAMESPACE_XML: return QStringLiteral("xml:") + name;
        case GUMBO_ATTR_NAMESPACE_XMLNS:
            return name == QLatin1String("xmlns") ? name : QStringLiteral("xmlns:") + name;
        default: return name;
        }
    }

    void appendLeaf(const GumboNode &source, ParentNode &parent)
    {
        if (source.type == GUMBO_NODE_COMMENT) {
            const GumboStringPiece &original = source.v.text.original_text;
            if (QByteArrayView(original.data, qsizetype(original.length)) == textBoundary) return;
            RawTree::append(parent, *makeComment(source.v.text));
            return;
        }
        const QString data = dom::withLf(decoded(source.v.text.text));
        Node *last = parent.lastChild();
        if (last && last->isText()) {
            auto &text = static_cast<Text &>(*last);
            RawTree::replaceText(text, text.length(), 0, data);
        } else {
            RawTree::append(parent, *base::make<Text>(mDocument, data));
        }
    }

    Ref<Comment> makeComment(const GumboText &source)
    {
        const GumboStringPiece &original = source.original_text;
        const QByteArray written = QByteArray::fromRawData(original.data, qsizetype(original.length));
        const bool plain = written.startsWith("<!--") || !written.startsWith('<') || !written.endsWith('>');
        if (plain) return base::make<Comment>(mDocument, dom::withLf(decoded(source.text)));
        const QString data = dom::withLf(decoded(written.constData() + 1, written.size() - 2));
        declarePrefix(data);
        return base::make<Comment>(mDocument, data, Comment::Form::Declaration);
    }

    void declarePrefix(const QString &data)
    {
        if (!data.startsWith(QLatin1String("?xml:namespace"), Qt::CaseInsensitive)) return;
        static const QRegularExpression prefix(QStringLiteral("\\bprefix\\s*=\\s*\"?([\\w.-]+)"),
                                               QRegularExpression::CaseInsensitiveOption);
        const auto match = prefix.match(data);
        if (match.hasMatch()) mDocument.declarePrefix(match.captured(1));
    }

    Document &mDocument;
    const GuardedInput &mInput;
};

/// Public identifiers whose pages were written for browsers before the standards, by their beginnings. (HTML standard,
/// 13.2.6.4.1 "The "initial" insertion mode".)
constexpr const char *quirkyIds[] = {
    "+//silmaril//dtd html pro v0r11 19970101//", "-//as//dtd html 3.0 aswedit + extensions//",
    "-//advasoft ltd//dtd html 3.0 aswedit + extensions//", "-//ietf//dtd html 2.0 level 1//",
    "-//ietf//dtd html 2.0 level 2//", "-//ietf//dtd html 2.0 strict level 1//", "-//ietf//dtd html 2.0 strict level 2//",
    "-//ietf//dtd html 2.0 strict//", "-//ietf//dtd html 2.0//", "-//ietf//dtd html 2.1e//", "-//ietf//dtd html 3.0//",
    "-//ietf//dtd html 3.2 final//", "-//ietf//dtd html 3.2//", "-//ietf//dtd html 3//", "-//ietf//dtd html level 0//",
    "-//ietf//dtd html level 1//", "-//ietf//dtd html level 2//", "-//ietf//dtd html level 3//",
    "-//ietf//dtd html strict level 0//", "-//ietf//dtd html strict level 1//", "-//ietf//dtd html strict level 2//",
    "-//ietf//dtd html strict level 3//", "-//ietf//dtd html strict//", "-//ietf//dtd html//",
    "-//metrius//dtd metrius presentational//", "-//microsoft//dtd internet explorer 2.0 html strict//",
    "-//microsoft//dtd internet explorer 2.0 html//", "-//microsoft//dtd internet explorer 2.0 tables//",
    "-//microsoft//dtd internet explorer 3.0 html strict//", "-//microsoft//dtd internet explorer 3.0 html//",
    "-//microsoft//dtd internet explorer 3.0 tables//", "-//netscape comm. corp.//dtd html//",
    "-//netscape comm. corp.//dtd strict html//", "-//o'reilly and associates//dtd html 2.0//",
    "-//o'reilly and associates//dtd html extended 1.0//", "-//o'reilly and associates//dtd html extended relaxed 1.0//",
    "-//sq//dtd html 2.0 hotmetal + extensions//",
    "-//softquad software//dtd hotmetal pro 6.0::19990601::extensions to html 4.0//",
    "-//softquad//dtd hotmetal pro 4.0::19971010::extensions to html 4.0//", "-//spyglass//dtd html 2.0 extended//",
    "-//sun microsystems corp.//dtd hotjava html//", "-//sun microsystems corp.//dtd hotjava strict html//",
    "-//w3c//dtd html 3 1995-03-24//", "-//w3c//dtd html 3.2 draft//", "-//w3c//dtd html 3.2 final//",
    "-//w3c//dtd html 3.2//", "-//w3c//dtd html 3.2s draft//", "-//w3c//dtd html 4.0 frameset//",
    "-//w3c//dtd html 4.0 transitional//", "-//w3c//dtd html experimental 19960712//",
    "-//w3c//dtd html experimental 970421//", "-//w3c//dtd w3 html//", "-//w3o//dtd w3 html 3.0//",
    "-//webtechs//dtd mozilla html 2.0//", "-//webtechs//dtd mozilla html//"};
constexpr const char *quirkyWhole[] = {"-//w3o//dtd w3 html strict 3.0//en//", "-/w3c/dtd html 4.0 transitional/en", "html"};

/// The tree builder overlooks most of these, so they are looked up here.
DocumentMode modeOf(const GumboDocument &document)
{
    if (document.doc_type_quirks_mode == GUMBO_DOCTYPE_QUIRKS) return DocumentMode::Quirks;
    const QString publicId = decoded(document.public_identifier).toLower();
    const QString systemId = decoded(document.system_identifier).toLower();
    const auto begins = [&publicId](const char *with) { return publicId.startsWith(QLatin1String(with)); };
    for (const char *id : quirkyIds)
        if (begins(id)) return DocumentMode::Quirks;
    for (const char *id : quirkyWhole)
        if (publicId == QLatin1String(id)) return DocumentMode::Quirks;
    if (systemId == QLatin1String("http://www.ibm.com/data/dtd/v11/ibmxhtml1-transitional.dtd")) return DocumentMode::Quirks;
    const bool transitional = begins("-//w3c//dtd html 4.01 frameset//") || begins("-//w3c//dtd html 4.01 transitional//");
    if (transitional) return systemId.isEmpty() ? DocumentMode::Quirks : DocumentMode::LimitedQuirks;
    if (begins("-//w3c//dtd xhtml 1.0 frameset//") || begins("-//w3c//dtd xhtml 1.0 transitional//"))
        return DocumentMode::LimitedQuirks;
    return DocumentMode::Standards;
}

/// The same page for a tree builder that takes it for a standard one although it isn't: without its document type.
QByteArray withoutDoctype(const GuardedInput &input)
{
    const qsizetype at = input.text.indexOf("<!" + input.doctype + ">");
    QByteArray text = input.text;
    return at < 0 ? text : text.remove(at, input.doctype.size() + 3);
}

const GumboNode *findContext(const GumboNode *root, GumboTag tag)
{
    // The context stands at the end of the first branch of the skeleton.
    const GumboNode *found = nullptr;
    for (const GumboNode *at = root; at && at->type == GUMBO_NODE_ELEMENT;) {
        if (at->v.element.tag == tag) found = at;
        const GumboNode *into = nullptr;
        for (unsigned i = 0; i < at->v.element.children.length; ++i) {
            const auto *child = static_cast<const GumboNode *>(at->v.element.children.data[i]);
            if (child->type == GUMBO_NODE_ELEMENT && child->v.element.tag != GUMBO_TAG_HEAD && !into) into = child;
        }
        if (found) break;
        at = into;
    }
    return found;
}

/// The tree builder reads a fragment without quirks, and then a table ends a paragraph. A fragment of a quirks document
/// that holds a table is read as the content of a whole one.
bool parseInQuirks(Document &document, GumboTag context, const GuardedInput &input, DocumentFragment &into)
{
    QByteArray open = "<body>";
    const QByteArray name(gumbo_normalized_tagname(context));
    if (context == GUMBO_TAG_TD || context == GUMBO_TAG_TH)
        open += "<table><tbody><tr><" + name + ">";
    else if (context != GUMBO_TAG_BODY)
        open += "<" + name + ">";
    const Gumbo gumbo(open + input.text);
    const GumboNode *place = findContext(gumbo.output().root, context);
    if (!place) return false;
    if (const GumboNode *parent = place->parent; context != GUMBO_TAG_BODY && parent) {
        const GumboVector &siblings = parent->v.element.children;
        if (siblings.data[siblings.length - 1] != place) return false; // it was closed by its own content
    }
    Builder(document, input).build(place->v.element.children, into);
    return true;
}

} // namespace

Ref<Document> parseDocument(const QString &text)
{
    const GuardedInput input = guardInput(encoded(text));
    auto gumbo = std::make_unique<Gumbo>(input.text);
    const GumboDocument *source = &gumbo->output().document->v.document;
    const DocumentMode mode = modeOf(*source);
    const bool hasDoctype = source->has_doctype && !input.doctype.isEmpty();
    if (mode == DocumentMode::Quirks && source->doc_type_quirks_mode != GUMBO_DOCTYPE_QUIRKS) {
        gumbo = std::make_unique<Gumbo>(withoutDoctype(input)); // a table may stand in a paragraph there
        source = &gumbo->output().document->v.document;
    }
    Ref<Document> document = Document::create();
    document->markup = &Markup::instance();
    document->setMode(mode);
    if (hasDoctype)
        RawTree::append(*document, *base::make<DocumentType>(*document, dom::withLf(QString::fromUtf8(input.doctype)),
                                                             dom::withLf(QString::fromUtf8(input.doctypeSpace))));
    Builder(*document, input).build(source->children, *document);
    return document;
}

Ref<DocumentFragment> parseFragment(Document &document, const Element &context, const QString &text)
{
    auto fragment = base::make<DocumentFragment>(document);
    if (text.isEmpty()) return fragment;
    if (context.is(names::script) || context.is(names::style) || context.is(names::xmp)) {
        RawTree::append(*fragment, *document.createTextNode(text));
        return fragment;
    }
    const GuardedInput input = guardInput(encoded(text));
    GumboTag tag = context.space() == Namespace::Html ? gumbo_tag_enum(context.name().text().toUtf8().constData())
                                                      : GUMBO_TAG_DIV;
    if (tag == GUMBO_TAG_UNKNOWN) tag = GUMBO_TAG_DIV;
    if (document.isQuirks() && input.text.toLower().contains("<table") &&
        parseInQuirks(document, tag, input, *fragment))
        return fragment;
    const Gumbo gumbo(input.text, tag);
    Builder(document, input).build(gumbo.output().root->v.element.children, *fragment);
    return fragment;
}

} // namespace html
