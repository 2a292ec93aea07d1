// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/InputGuard.h"

#include "engine/html/OpenElements.h"

#include <QHash>

namespace html {

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// A tag's extent in the input, read as HTML's tokeniser reads it.
struct Tag {
    qsizetype end = -1; ///< behind ">"; -1 where the input ends inside
    QByteArray name;    ///< lower case
    int id = 0;
    bool selfClosing = false;
    int attributes = 0;
    QList<qsizetype> surplus; ///< where each further part of its attributes begins that the limit leaves out
    qsizetype surplusEnd = 0;
};

class Guard
{
public:
    Guard(const QByteArray &input, const InputLimits &limits) : in(input), limits(limits) {}

    GuardedInput run()
    {
        out.text.reserve(in.size() + in.size() / 64);
        while (at < in.size()) {
            const qsizetype open = in.indexOf('<', at);
            copyTo(open < 0 ? in.size() : open);
            if (open < 0) break;
            markup();
        }
        return std::move(out);
    }

private:
    void copyTo(qsizetype end)
    {
        out.text.append(in.constData() + at, end - at);
        at = end;
    }
    char peek(qsizetype offset) const { return at + offset < in.size() ? in[at + offset] : '\0'; }
    void copyThrough(const char *closer)
    {
        const qsizetype found = in.indexOf(closer, at);
        copyTo(found < 0 ? in.size() : found + qsizetype(qstrlen(closer)));
    }

    void markup()
    {
        const char next = peek(1);
        if (next == '!') return declaration();
        if (next == '?') return copyThrough(">");
        if (isLetter(next) || (next == '/' && isLetter(peek(2)))) return tag(next == '/');
        if (next == '/' && peek(2) != '\0') return copyThrough(">");
        copyTo(at + 1); // a plain "<"
    }

    void declaration()
    {
        if (in.mid(at, 4) == "<!--") {
            const qsizetype start = at;
            qsizetype end = in.indexOf("-->", at + 2); // "<!-->" is a whole comment
            const qsizetype bang = in.indexOf("--!>", at + 4);
            qsizetype length = 3;
            if (bang >= 0 && (end < 0 || bang < end)) {
                end = bang;
                length = 4;
            }
            copyTo(end < 0 ? in.size() : std::max(end + length, start + 5));
            return;
        }
        if (in.mid(at, 9) == "<![CDATA[" && open.inForeign()) return copyThrough("]]>");
        const qsizetype start = at;
        copyThrough(">");
        if (!out.doctype.isEmpty() || in.mid(start + 2, 7).toLower() != "doctype") return;
        out.doctype = in.mid(start + 2, at - start - 3);
        qsizetype space = at;
        while (space < in.size() && isSpace(in[space])) ++space;
        out.doctypeSpace = in.mid(at, space - at);
    }

    Tag readTag(bool closing) const
    {
        Tag tag;
        qsizetype i = at + (closing ? 2 : 1);
        const qsizetype nameStart = i;
        while (i < in.size() && !isSpace(in[i]) && in[i] != '/' && in[i] != '>') ++i;
        tag.name = in.mid(nameStart, i - nameStart).toLower();
        while (i < in.size()) {
            if (isSpace(in[i])) {
                ++i;
            } else if (in[i] == '>') {
                tag.end = i + 1;
                return tag;
            } else if (in[i] == '/') {
                tag.selfClosing = i + 1 < in.size() && in[i + 1] == '>';
                ++i;
            } else {
                if (tag.attributes > 0 && tag.attributes % limits.attributes == 0) tag.surplus.append(i);
                ++tag.attributes;
                tag.surplusEnd = i = afterAttribute(i);
            }
        }
        return tag;
    }

    qsizetype afterAttribute(qsizetype i) const
    {
        ++i; // a "=" in front belongs to the name
        while (i < in.size() && !isSpace(in[i]) && in[i] != '/' && in[i] != '>' && in[i] != '=') ++i;
        qsizetype value = i;
        while (value < in.size() && isSpace(in[value])) ++value;
        if (value >= in.size() || in[value] != '=') return i;
        ++value;
        while (value < in.size() && isSpace(in[value])) ++value;
        if (value >= in.size()) return value;
        if (in[value] == '"' || in[value] == '\'') {
            const qsizetype close = in.indexOf(in[value], value + 1);
            return close < 0 ? in.size() : close + 1;
        }
        while (value < in.size() && !isSpace(in[value]) && in[value] != '>') ++value;
        return value;
    }

    void tag(bool closing)
    {
        Tag tag = readTag(closing);
        if (tag.end < 0) { // cut off by the end: text that nobody may lose
            out.text.append("&lt;");
            ++at;
            copyTo(in.size());
            return;
        }
        tag.id = open.idOf(tag.name);
        const bool raw = !open.inForeign() && open.is(tag.id, IsRawText);
        const bool plaintext = tag.id == plainText && !open.inForeign();
        const bool endsParagraph = plaintext && !closing && open.hasParagraph();
        if (closing ? !keepEndTag(tag.id) : !keepStartTag(tag)) {
            at = tag.end;
            return;
        }
        if (closing && tag.id == form) out.text.append(textBoundary);
        if (endsParagraph) out.text.append("</p>");
        if (plaintext || tag.id == isIndex) hideName(tag, closing);
        if (!tag.surplus.isEmpty()) setAside(tag);
        copyTo(tag.end);
        if (closing) return;
        if (tag.selfClosing && tag.name.contains(':') && !open.inForeign()) {
            out.text.append("</" + tag.name + ">");
            open.close(tag.id);
        } else if (plaintext) {
            plainContent();
        } else if (raw) {
            rawText(tag.name);
        }
    }

    void setAside(const Tag &tag)
    {
        copyTo(tag.surplus.first());
        out.text.append(surplusMark + ("=\"" + QByteArray::number(out.surplus.size()) + "\""));
        QList<QByteArray> parts;
        for (qsizetype i = 0; i < tag.surplus.size(); ++i) {
            const qsizetype end = i + 1 < tag.surplus.size() ? tag.surplus[i + 1] : tag.surplusEnd;
            parts.append(in.mid(tag.surplus[i], end - tag.surplus[i]));
        }
        out.surplus.append(parts);
        at = tag.surplusEnd;
    }

    void rawText(const QByteArray &name) { copyTo(endOfRawText(name)); }

    qsizetype endOfRawText(const QByteArray &name) const
    {
        const QByteArray closer = "</" + name;
        for (qsizetype i = at;; ++i) {
            i = in.indexOf("</", i);
            if (i < 0) return in.size();
            const qsizetype behind = i + closer.size();
            if (qstrnicmp(in.constData() + i, closer.constData(), size_t(closer.size())) != 0) continue;
            if (behind < in.size() && !isSpace(in[behind]) && in[behind] != '/' && in[behind] != '>') continue;
            return i;
        }
    }

    /// Copies the tag's name so that the tree builder doesn't know it.
    void hideName(const Tag &tag, bool closing)
    {
        copyTo(at + (closing ? 2 : 1) + tag.name.size());
        out.text.append(nameMark);
    }

    /// To the tree builder everything behind PLAINTEXT is text, the page's own end too, which would grow each time that
    /// the page is saved. Here it goes as far as its end tag.
    void plainContent()
    {
        const qsizetype end = endOfRawText("plaintext");
        QByteArray content = in.mid(at, end - at);
        out.text.append(content.replace('&', "&amp;").replace('<', "&lt;"));
        at = end;
    }

    bool keepStartTag(const Tag &tag)
    {
        const int id = tag.id;
        if (tag.name == "html" || tag.name == "head" || tag.name == "body") return true;
        const bool foreign = open.inForeign() && !open.is(id, BreaksOut);
        if (foreign && tag.selfClosing) return true;
        open.closeFor(id);
        if (open.is(id, IsVoid) && !foreign) return open.depthFor(id) <= limits.depth;
        const bool formats = open.is(id, IsFormatting) && !foreign;
        const int most = open.is(id, IsRawText) ? limits.depth : limits.depth - 1; // nothing stands in raw text
        if (open.depthFor(id) > most || (formats && open.formatting() >= limits.formatting)) {
            ++dropped[id];
            return false;
        }
        if (formats)
            open.openFormatting(id, in.mid(at, tag.end - at));
        else
            open.open(id);
        return true;
    }

    bool keepEndTag(int id)
    {
        auto found = dropped.find(id);
        if (found != dropped.end() && *found > 0) {
            --*found;
            return false;
        }
        if (id == paragraph && !open.hasParagraph()) return open.depth() < limits.depth; // it makes an empty one
        open.close(id);
        return true;
    }

    const QByteArray &in;
    const InputLimits &limits;
    GuardedInput out;
    qsizetype at = 0;
    OpenElements open;
    const int paragraph = open.idOf("p");
    const int form = open.idOf("form");
    const int plainText = open.idOf("plaintext");
    const int isIndex = open.idOf("isindex");
    QHash<int, int> dropped; // start tags left out whose end tags are to be
};

} // namespace

GuardedInput guardInput(const QByteArray &utf8, const InputLimits &limits)
{
    return Guard(utf8, limits).run();
}

} // namespace html
