// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/InputGuard.h"

#include <QHash>
#include <QSet>
#include <vector>

namespace html {

namespace {

const QSet<QByteArray> &setOf(const char *words)
{
    static QHash<const char *, QSet<QByteArray>> sets;
    auto found = sets.find(words);
    if (found == sets.end()) {
        const QList<QByteArray> list = QByteArray(words).split(' ');
        found = sets.insert(words, QSet<QByteArray>(list.begin(), list.end()));
    }
    return *found;
}

constexpr char voids[] = "area base basefont bgsound br col embed frame hr img input keygen link meta param source track wbr";
constexpr char rawTexts[] = "script style xmp iframe noembed noframes textarea title";
constexpr char formattings[] = "a b big code em font i nobr s small strike strong tt u";
constexpr char closesParagraph[] =
    "address article aside blockquote center details dialog dir div dl fieldset figcaption figure footer form h1 h2 h3 h4 "
    "h5 h6 header hgroup hr main menu nav ol p pre listing section summary table ul plaintext xmp li dd dt";
constexpr char scopeEnds[] = "applet caption html table td th marquee object template button";
constexpr char passThrough[] = "address div p"; // what a new list item looks through for the one to close
constexpr char sections[] = "tbody thead tfoot";
constexpr char inlineish[] = "a b big code em font i nobr s small strike strong tt u span label ins del sub sup q abbr cite "
                             "dfn kbd samp var";

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
    bool selfClosing = false;
    int attributes = 0;
    qsizetype surplus = -1; ///< where the attributes beyond the limit begin
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
        if (in.mid(at, 9) == "<![CDATA[" && foreignDepth > 0) return copyThrough("]]>");
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
                if (++tag.attributes == limits.attributes + 1) tag.surplus = i;
                i = afterAttribute(i);
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
        const Tag tag = readTag(closing);
        if (tag.end < 0) { // cut off by the end: text that nobody may lose
            out.text.append("&lt;");
            ++at;
            copyTo(in.size());
            return;
        }
        if (closing ? !keepEndTag(tag.name) : !keepStartTag(tag)) {
            at = tag.end;
            return;
        }
        if (tag.surplus >= 0) {
            copyTo(tag.surplus);
            out.text.append(tag.selfClosing ? "/>" : ">");
            at = tag.end;
        } else {
            copyTo(tag.end);
        }
        if (closing) return;
        if (tag.selfClosing && tag.name.contains(':') && foreignDepth == 0) {
            out.text.append("</" + tag.name + ">");
            popTo(tag.name);
        } else if (tag.name == "plaintext") {
            copyTo(in.size());
        } else if (foreignDepth == 0 && setOf(rawTexts).contains(tag.name)) {
            rawText(tag.name);
        }
    }

    void rawText(const QByteArray &name)
    {
        const QByteArray closer = "</" + name;
        for (qsizetype i = at;; ++i) {
            i = in.indexOf("</", i);
            if (i < 0) return copyTo(in.size());
            const qsizetype behind = i + closer.size();
            if (qstrnicmp(in.constData() + i, closer.constData(), size_t(closer.size())) != 0) continue;
            if (behind < in.size() && !isSpace(in[behind]) && in[behind] != '/' && in[behind] != '>') continue;
            copyTo(i);
            return;
        }
    }

    // The stack of open elements, near enough to the tree builder's to know the depth.

    /// At the most: formatting elements that a closed block took along are counted as if they were open again already.
    int depth() const { return int(open.size()) + int(formatting.size()); }

    void popFrom(size_t index)
    {
        for (size_t i = index; i < open.size(); ++i)
            if (open[i] == "svg" || open[i] == "math") --foreignDepth;
        open.resize(index);
    }

    void popTo(const QByteArray &name)
    {
        for (size_t i = open.size(); i-- > 0;)
            if (open[i] == name) return popFrom(i);
    }

    void closeImplied(const QByteArray &name)
    {
        if (setOf(closesParagraph).contains(name))
            for (size_t i = open.size(); i-- > 0 && !setOf(scopeEnds).contains(open[i]);)
                if (open[i] == "p") {
                    popFrom(i);
                    break;
                }
        const bool item = name == "li", term = name == "dt" || name == "dd";
        if (item || term)
            for (size_t i = open.size(); i-- > 0;) {
                if (item ? open[i] == "li" : open[i] == "dt" || open[i] == "dd") {
                    popFrom(i);
                    break;
                }
                if (!setOf(passThrough).contains(open[i]) && !setOf(inlineish).contains(open[i])) break;
            }
        if (name == "option" && !open.empty() && open.back() == "option") popFrom(open.size() - 1);
        if (name == "td" || name == "th") popBelow({"tr", "tbody", "thead", "tfoot", "table"});
        if (name == "tr") popBelow({"tbody", "thead", "tfoot", "table"});
        if (setOf(sections).contains(name) || name == "caption" || name == "colgroup") popBelow({"table"});
        if (name.size() == 2 && name[0] == 'h' && name[1] >= '1' && name[1] <= '6' && !open.empty() &&
            open.back().size() == 2 && open.back()[0] == 'h' && open.back()[1] >= '1' && open.back()[1] <= '6')
            popFrom(open.size() - 1);
    }

    void popBelow(std::initializer_list<const char *> names)
    {
        for (size_t i = open.size(); i-- > 0;)
            for (const char *name : names)
                if (open[i] == name) return popFrom(i + 1);
    }

    bool keepStartTag(const Tag &tag)
    {
        const QByteArray &name = tag.name;
        if (name == "html" || name == "head" || name == "body" || setOf(voids).contains(name)) return true;
        if (foreignDepth > 0 && tag.selfClosing) return true;
        closeImplied(name);
        if (foreignDepth == 0 && setOf(formattings).contains(name)) return keepFormatting(tag);
        if (depth() >= limits.depth) {
            ++dropped[name];
            return false;
        }
        if (name == "svg" || name == "math") ++foreignDepth;
        if (name == "td" || name == "th" || name == "caption" || name == "object" || name == "applet")
            formatting.clear(); // they don't reach into these; what stood outside comes back, in the tree builder
        open.push_back(name);
        return true;
    }

    bool keepFormatting(const Tag &tag)
    {
        // Three of the same are kept open at the most, by the rules of HTML's tree construction.
        const QByteArray whole = in.mid(at, tag.end - at);
        int same = 0;
        size_t first = 0;
        for (size_t i = formatting.size(); i-- > 0;)
            if (formatting[i].second == whole) {
                ++same;
                first = i;
            }
        if (same >= 3) formatting.erase(formatting.begin() + long(first));
        if (int(formatting.size()) >= limits.formatting || depth() >= limits.depth) {
            ++dropped[tag.name];
            return false;
        }
        formatting.emplace_back(tag.name, whole);
        open.push_back(tag.name);
        return true;
    }

    bool keepEndTag(const QByteArray &name)
    {
        auto found = dropped.find(name);
        if (found != dropped.end() && *found > 0) {
            --*found;
            return false;
        }
        if (setOf(formattings).contains(name)) {
            for (size_t i = formatting.size(); i-- > 0;)
                if (formatting[i].first == name) {
                    formatting.erase(formatting.begin() + long(i));
                    break;
                }
            for (size_t i = open.size(); i-- > 0;) // what it crosses stays open
                if (open[i] == name) {
                    open.erase(open.begin() + long(i));
                    break;
                }
            return true;
        }
        popTo(name);
        return true;
    }

    const QByteArray &in;
    const InputLimits &limits;
    GuardedInput out;
    qsizetype at = 0;
    int foreignDepth = 0;
    std::vector<QByteArray> open;
    std::vector<std::pair<QByteArray, QByteArray>> formatting; // name, whole tag
    QHash<QByteArray, int> dropped;
};

} // namespace

GuardedInput guardInput(const QByteArray &utf8, const InputLimits &limits)
{
    return Guard(utf8, limits).run();
}

} // namespace html
