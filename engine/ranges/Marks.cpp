// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Marks.h"

#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"
#include "engine/html/Parser.h"
#include "engine/html/Serializer.h"
#include "engine/ranges/Rendering.h"

#include <QRegularExpression>

namespace ranges {

using namespace dom;

namespace {

// Stand in for the marks while the text is parsed; no page has them.
constexpr QChar anchorSign(0xF7F0); // of the private area: the parser passes noncharacters on as replacement ones
constexpr QChar focusSign(0xF7F1);
constexpr auto selectedName = "data-selected";

/// Splits a text into tags, comments and what lies between.
class Pieces
{
public:
    explicit Pieces(const QString &text) : mText(text) {}
    bool next()
    {
        mFrom = mTo;
        if (mFrom >= mText.size()) return false;
        mTag = false;
        if (!mRawEnd.isEmpty()) {
            const auto end = mText.indexOf(mRawEnd, mFrom, Qt::CaseInsensitive);
            mTo = end < 0 ? mText.size() : end;
            mRawEnd.clear();
            mTag = true; // nothing in it is a mark
            return mTo > mFrom || next();
        }
        if (mText[mFrom] == u'<') {
            if (readMarkup()) return true;
            mTo = mFrom + 1;
            return true;
        }
        const auto end = mText.indexOf(u'<', mFrom);
        mTo = end < 0 ? mText.size() : end;
        return true;
    }
    bool isTag() const { return mTag; }
    QString piece() const { return mText.mid(mFrom, mTo - mFrom); }

private:
    bool readMarkup()
    {
        const auto rest = QStringView(mText).mid(mFrom);
        if (rest.startsWith(u"<!--")) {
            const auto end = mText.indexOf(u"-->", mFrom + 4);
            mTo = end < 0 ? mText.size() : end + 3;
            mTag = true;
            return true;
        }
        if (rest.size() < 2 || !(rest[1].isLetter() || rest[1] == u'/' || rest[1] == u'!' || rest[1] == u'?'))
            return false;
        QChar quote;
        for (mTo = mFrom + 1; mTo < mText.size(); ++mTo) {
            const QChar c = mText[mTo];
            if (!quote.isNull()) {
                if (c == quote) quote = QChar();
            } else if ((c == u'"' || c == u'\'') && mText[mTo - 1] == u'=') {
                quote = c;
            } else if (c == u'>') {
                ++mTo;
                break;
            }
        }
        mTag = true;
        for (const char *name : {"script", "style"})
            if (rest.mid(1).startsWith(QLatin1String(name), Qt::CaseInsensitive))
                mRawEnd = QStringLiteral("</") + QLatin1String(name);
        return true;
    }
    const QString &mText;
    QString mRawEnd;
    qsizetype mFrom = 0;
    qsizetype mTo = 0;
    bool mTag = false;
};

std::vector<uint32_t> pathTo(const Node &node, const Node &top)
{
    std::vector<uint32_t> path;
    for (const Node *at = &node; at != &top && at->parentNode(); at = at->parentNode())
        path.push_back(at->index());
    std::reverse(path.begin(), path.end());
    return path;
}

/// Takes a node out, and makes one text of the two that meet.
void takeOut(Node &node, Position &meeting)
{
    Node *previous = node.previousSibling(), *next = node.nextSibling();
    meeting = Position::before(node);
    RawTree::remove(node);
    if (!previous || !next || !previous->isText() || !next->isText()) {
        if (previous && previous->isText()) meeting = Position::endOf(*previous);
        if (!(previous && previous->isText()) && next && next->isText()) meeting = Position::startOf(*next);
        return;
    }
    auto &first = static_cast<Text &>(*previous);
    meeting = {&first, first.length()};
    RawTree::replaceText(first, first.length(), 0, static_cast<Text *>(next)->data());
    RawTree::remove(*next);
}

} // namespace

QString Marks::wrapped(const QString &bodyContent)
{
    return QStringLiteral("<HTML><HEAD></HEAD><BODY>") + bodyContent + QStringLiteral("</BODY></HTML>");
}

Marks::Marks(const QString &marked)
{
    static const QRegularExpression selected(QStringLiteral(R"(\s+data-selected(\s*=\s*("[^"]*"|'[^']*'|[^\s>]*))?)"),
                                             QRegularExpression::CaseInsensitiveOption);
    QString signs; // the same text with signs for marks
    for (Pieces pieces(marked); pieces.next();) {
        QString piece = pieces.piece();
        if (!pieces.isTag()) {
            signs += QString(piece).replace(u'^', anchorSign).replace(u'|', focusSign);
            mHtml += piece.remove(u'^').remove(u'|');
        } else if (piece == u"<!--^-->" || piece == u"<!--|-->") {
            signs += QStringLiteral("<!--") + (piece[4] == u'^' ? anchorSign : focusSign) + QStringLiteral("-->");
        } else {
            signs += piece;
            if (piece.contains(QLatin1String(selectedName), Qt::CaseInsensitive)) piece.remove(selected);
            mHtml += piece;
        }
    }
    locate(signs);
}

void Marks::locate(const QString &withSigns)
{
    Ref<Document> scratch = html::parseDocument(wrapped(withSigns));
    Element *body = scratch->body();
    RangeKeeper keeper(*scratch);
    LivePosition anchor(keeper, {}), focus(keeper, {});
    for (Node *node = body; node;) {
        Node *following = node->next(body);
        if (Element *element = node->asElement(); element && element->hasAttribute(selectedName)) {
            mSelected.push_back({pathTo(*element, *body), 0});
        } else if (node->isText() || node->isComment()) {
            auto &data = static_cast<CharacterData &>(*node);
            for (const QChar sign : {anchorSign, focusSign}) {
                const auto at = data.data().indexOf(sign);
                if (at < 0) continue;
                LivePosition &end = sign == anchorSign ? anchor : focus;
                if (node->isComment() || data.length() == 1) {
                    // It goes altogether; the text that follows may come to this one, so the walk goes on from there.
                    Position meeting;
                    takeOut(*node, meeting);
                    end = meeting;
                    following = meeting.inText() ? meeting.node.get() : meeting.childAfter();
                    if (!following && meeting.node) following = meeting.node->nextSkippingChildren(body);
                    break;
                }
                RawTree::replaceText(data, uint32_t(at), 1, {});
                end = Position(node, uint32_t(at));
            }
        }
        node = following;
    }
    const auto place = [&](const Position &p) {
        return p ? std::optional<Place>({pathTo(*p.node, *body), p.offset}) : std::nullopt;
    };
    mAnchor = place(anchor);
    mFocus = place(focus);
    // The paths of elements are counted once the marks have gone.
    mSelected.clear();
    for (Node *node = body; node; node = node->next(body))
        if (Element *element = node->asElement(); element && element->hasAttribute(selectedName))
            mSelected.push_back({pathTo(*element, *body), 0});
}

Position Marks::find(const Document &document, const Place &place)
{
    Node *at = document.body();
    for (const uint32_t index : place.path) {
        if (!at || index >= at->childCount()) return {};
        at = at->childAt(index);
    }
    if (!at || place.offset > Position::lengthOf(*at)) return {};
    return {at, place.offset};
}

std::vector<Ref<Element>> Marks::selected(const Document &document) const
{
    std::vector<Ref<Element>> elements;
    for (const Place &place : mSelected) {
        const Position p = find(document, place);
        if (p && p.node->isElement()) elements.emplace_back(p.node->asElement());
    }
    return elements;
}

bool Marks::apply(SelectionObject &selection) const
{
    const Document &document = selection.document();
    if (!mSelected.empty()) {
        std::vector<Ref<Element>> elements = selected(document);
        if (elements.size() != mSelected.size()) return false;
        std::erase_if(elements, [](const Ref<Element> &e) { return isSelectedBesideText(*e); });
        if (!elements.empty()) {
            selection.setControl(std::move(elements));
            return true;
        }
    }
    if (!mFocus) {
        selection.clear();
        return !mAnchor;
    }
    const Position focus = find(document, *mFocus);
    const Position anchor = mAnchor ? find(document, *mAnchor) : focus;
    if (!focus || !anchor) return false;
    selection.set(anchor, focus);
    return true;
}

namespace {

class Printer
{
public:
    Printer(const SelectionObject &selection, const std::vector<Ref<Element>> &besideText)
        : mSelection(selection), mSelected(selection.elements())
    {
        mSelected.insert(mSelected.end(), besideText.begin(), besideText.end());
    }

    QString print(const Element &body)
    {
        // Without recursion: a tree may be deep.
        const Node *parent = &body;
        const Node *node = body.firstChild();
        marksAt(body, 0);
        uint32_t index = 0;
        std::vector<uint32_t> indexes;
        for (;;) {
            if (!node) {
                if (parent == &body) return html::Serializer::withCrLf(mOut);
                html::Serializer::writeEndTag(*parent->asElement(), mOut);
                node = parent->nextSibling();
                parent = parent->parentNode();
                index = indexes.back() + 1;
                indexes.pop_back();
                marksAt(*parent, index);
                continue;
            }
            if (const Element *element = node->asElement()) {
                startTag(*element);
                if (!element->isVoid()) {
                    open(*element);
                    parent = node;
                    node = element->firstChild();
                    indexes.push_back(index);
                    index = 0;
                    continue;
                }
            } else {
                leaf(*node);
            }
            node = node->nextSibling();
            marksAt(*parent, ++index);
        }
    }

private:
    QString mark(const Node &node, uint32_t offset) const
    {
        if (mSelection.type() != SelectionObject::Type::Text) return {};
        const Position p(const_cast<Node *>(&node), offset);
        QString marks;
        if (!mSelection.isCaret() && mSelection.anchor() == p) marks += u'^';
        if (mSelection.focus() == p) marks += u'|';
        return marks;
    }
    void marksAt(const Node &parent, uint32_t offset)
    {
        const QString marks = mark(parent, offset);
        if (marks.isEmpty()) return;
        const Element *element = parent.asElement();
        if (element && (isTableStructure(*element) || isList(*element) || element->is(names::dl)))
            mOut += QStringLiteral("<!--") + marks + QStringLiteral("-->");
        else
            mOut += marks;
    }
    void startTag(const Element &element)
    {
        html::Serializer::writeStartTag(element, mOut);
        if (std::find(mSelected.begin(), mSelected.end(), &element) == mSelected.end()) return;
        mOut.insert(mOut.size() - 1, QStringLiteral(" data-selected=\"\""));
    }
    void open(const Element &element)
    {
        const Node *first = element.firstChild();
        if (first && first->isText() && first->nodeValue().startsWith(u'\n') &&
            (element.is(names::pre) || element.is(names::textarea) || element.is(names::listing)))
            mOut += u'\n'; // the parser takes one away
        marksAt(element, 0);
        if (element.isHeldOpen() && !first) mOut += QStringLiteral("&nbsp;");
    }
    void leaf(const Node &node)
    {
        if (!node.isText() || html::Serializer::isRawText(*node.parentElement())) {
            html::Serializer::write(node, mOut);
            return;
        }
        const QString &data = static_cast<const Text &>(node).data();
        std::vector<uint32_t> places;
        if (mSelection.anchor().node == &node) places.push_back(mSelection.anchor().offset);
        if (mSelection.focus().node == &node) places.push_back(mSelection.focus().offset);
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
        uint32_t from = 0;
        for (const uint32_t place : places) {
            write(QStringView(data).mid(from, place - from));
            mOut += mark(node, place);
            from = place;
        }
        write(QStringView(data).mid(from));
    }
    void write(QStringView text)
    {
        QString escaped;
        html::Serializer::writeText(text, escaped);
        mOut += escaped.replace(u'^', QLatin1String("&#94;")).replace(u'|', QLatin1String("&#124;"));
    }
    const SelectionObject &mSelection;
    std::vector<Ref<Element>> mSelected;
    QString mOut;
};

} // namespace

bool Marks::isSelectedBesideText(const Element &element)
{
    return element.is(names::td) || element.is(names::th) || element.is(names::area);
}

QString Marks::print(const SelectionObject &selection, const std::vector<Ref<Element>> &besideText)
{
    const Element *body = selection.document().body();
    return body ? Printer(selection, besideText).print(*body) : QString();
}

} // namespace ranges
