// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/HtmlScan.h"

#include <QStringList>

namespace platform {

namespace {

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}

bool isLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

/// Reads an attribute at `position`, which then stands behind it.
HtmlAttribute scanAttribute(const QString &html, qsizetype &position)
{
    HtmlAttribute attribute;
    const qsizetype size = html.size();
    const qsizetype start = position;
    // A "=" in front belongs to the name.
    if (position < size) ++position;
    while (position < size && !isBlank(html[position]) && html[position] != u'=' && html[position] != u'>' &&
           html[position] != u'/')
        ++position;
    attribute.name = html.mid(start, position - start).toLower();
    attribute.position = position;
    qsizetype next = position;
    while (next < size && isBlank(html[next]))
        ++next;
    if (next >= size || html[next] != u'=') return attribute;
    ++next;
    while (next < size && isBlank(html[next]))
        ++next;
    if (next < size && (html[next] == u'"' || html[next] == u'\'')) {
        qsizetype end = html.indexOf(html[next], next + 1);
        if (end < 0) end = size;
        attribute.position = next + 1;
        attribute.length = end - attribute.position;
        position = std::min(end + 1, size);
        return attribute;
    }
    attribute.position = next;
    while (next < size && !isBlank(html[next]) && html[next] != u'>')
        ++next;
    attribute.length = next - attribute.position;
    position = next;
    return attribute;
}

/// Names of elements whose content is taken as it stands.
bool holdsRawText(const QString &name)
{
    static const QStringList names = {QStringLiteral("script"),   QStringLiteral("style"),   QStringLiteral("xmp"),
                                      QStringLiteral("iframe"),   QStringLiteral("noembed"), QStringLiteral("noframes"),
                                      QStringLiteral("plaintext")};
    return names.contains(name);
}

/// Where the raw text of an element ends: at its end tag.
qsizetype rawTextEnd(const QString &html, const QString &name, qsizetype from)
{
    if (name == QLatin1String("plaintext")) return html.size();
    const QString endTag = QLatin1String("</") + name;
    for (qsizetype end = from;; end += endTag.size()) {
        end = html.indexOf(endTag, end, Qt::CaseInsensitive);
        if (end < 0) return html.size();
        const qsizetype behind = end + endTag.size();
        if (behind >= html.size() || isBlank(html[behind]) || html[behind] == u'>' || html[behind] == u'/') return end;
    }
}

qsizetype endOf(const QString &html, const QString &what, qsizetype from)
{
    const qsizetype found = html.indexOf(what, from);
    return found < 0 ? html.size() : found + what.size();
}

} // namespace

bool isTagStart(const QString &html, qsizetype position)
{
    if (position + 1 >= html.size()) return false;
    if (html[position + 1] == u'/') return position + 2 < html.size() && isLetter(html[position + 2]);
    return isLetter(html[position + 1]);
}

HtmlTag scanTag(const QString &html, qsizetype position)
{
    HtmlTag tag;
    const qsizetype size = html.size();
    qsizetype at = position + 1;
    if (at < size && html[at] == u'/') ++at;
    while (at < size && !isBlank(html[at]) && html[at] != u'>' && html[at] != u'/')
        ++at;
    tag.name = html.mid(position + 1, at - position - 1).toLower();
    for (;;) {
        while (at < size && (isBlank(html[at]) || html[at] == u'/'))
            ++at;
        if (at >= size || html[at] == u'>') break;
        tag.attributes.push_back(scanAttribute(html, at));
    }
    tag.end = std::min(at + 1, size);
    return tag;
}

std::vector<TextRange> rangesWithoutReferences(const QString &html)
{
    std::vector<TextRange> ranges;
    for (qsizetype at = html.indexOf(QLatin1Char('<')); at >= 0; at = html.indexOf(QLatin1Char('<'), at)) {
        if (html.mid(at, 4) == QLatin1String("<!--")) {
            // The hyphens of "<!-->" close it too.
            const qsizetype end = endOf(html, QStringLiteral("-->"), at + 2);
            ranges.push_back({at, end});
            at = end;
        } else if (isTagStart(html, at)) {
            const HtmlTag tag = scanTag(html, at);
            for (const HtmlAttribute &attribute : tag.attributes) {
                ranges.push_back({at, attribute.position});
                at = attribute.position + attribute.length;
            }
            ranges.push_back({at, tag.end});
            at = tag.end;
            if (!holdsRawText(tag.name)) continue;
            const qsizetype end = rawTextEnd(html, tag.name, at);
            ranges.push_back({at, end});
            at = end;
        } else if (at + 1 < html.size() && (html[at + 1] == u'!' || html[at + 1] == u'?' || html[at + 1] == u'/')) {
            const qsizetype end = endOf(html, QStringLiteral(">"), at);
            ranges.push_back({at, end});
            at = end;
        } else {
            ++at;
        }
    }
    return ranges;
}

} // namespace platform
