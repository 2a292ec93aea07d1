// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/modMainText.h"

#include "core/modMainDump.h"

#include <optional>

namespace modMain {

using support::given;
using support::trap;

namespace {

/// The inside of the body, 0-based and up to `end`.
struct BodyPlace
{
    qsizetype begin = 0, end = 0;
};

std::optional<BodyPlace> findBody(const QString &document)
{
    const QString plainTag = QStringLiteral("<BODY>");
    BodyPlace place;
    const qsizetype plain = document.indexOf(plainTag, 0, Qt::CaseInsensitive);
    if (plain >= 0) {
        place.begin = plain + plainTag.size();
    } else {
        const qsizetype tag = document.indexOf(QLatin1String("<BODY "), 0, Qt::CaseInsensitive);
        const qsizetype close = tag < 0 ? -1 : document.indexOf(QLatin1Char('>'), tag + plainTag.size());
        if (close < 0) return {};
        place.begin = close + 1;
    }
    place.end = document.lastIndexOf(QLatin1String("</BODY>"), -1, Qt::CaseInsensitive);
    // An end tag in front of the body ends nothing.
    if (place.end < place.begin) return {};
    return place;
}

int hexDigit(QChar c)
{
    if (c >= u'0' && c <= u'9') return c.unicode() - u'0';
    if (c >= u'a' && c <= u'f') return c.unicode() - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c.unicode() - u'A' + 10;
    return -1;
}

} // namespace

qsizetype InStrEx(qsizetype Start, const QString &Text, const QString &SearchFor, enum Compare Compare)
{
    const auto parameters = given(module, "Start", Start, "Text", Text, "SearchFor", SearchFor, "Compare", Compare);
    qsizetype from = 0, counted = 0; // up to where quotes have been counted
    bool inQuotes = false;
    return trap("modMain", "InStrEx", parameters.locals("From", from, "Counted", counted, "InQuotes", inQuotes),
                [&]() -> qsizetype {
                    const auto sensitivity = Compare == Compare::Text ? Qt::CaseInsensitive : Qt::CaseSensitive;
                    from = std::max<qsizetype>(Start, 1) - 1;
                    if (from >= Text.size()) return 0;
                    for (;;) {
                        const qsizetype hit = Text.indexOf(SearchFor, from, sensitivity);
                        if (hit < 0) return 0;
                        for (; counted < hit; ++counted)
                            if (Text[counted] == u'"') inQuotes = !inQuotes;
                        if (!inQuotes) return hit + 1;
                        const qsizetype closing = Text.indexOf(QLatin1Char('"'), hit + 1);
                        if (closing < 0) return 0;
                        from = closing + 1;
                    }
                });
}

QString ParseURL(const QString &URL, const QString &BaseURL)
{
    QString base, name;
    const auto parameters = given(module, "URL", URL, "BaseURL", BaseURL);
    return trap("modMain", "ParseURL", parameters.locals("Base", base, "Name", name), [&] {
        if (!IsFileURL(URL)) return URL;
        base = IsFileURL(BaseURL) ? FileURLToFileName(BaseURL) : BaseURL;
        name = FileURLToFileName(URL);
        return name.startsWith(base, Qt::CaseInsensitive) ? name.mid(base.size()) : name;
    });
}

bool IsFileURL(const QString &URL)
{
    return trap("modMain", "IsFileURL", given(module, "URL", URL), [&] {
        return URL.startsWith(QLatin1String("file://"), Qt::CaseInsensitive) || !URL.contains(QLatin1Char(':'));
    });
}

QString FileURLToFileName(const QString &URL)
{
    QString name;
    return trap("modMain", "FileURLToFileName", given(module, "URL", URL).locals("Name", name), [&] {
        name = URL;
        for (const auto *start : {"file:///", "file://"}) {
            if (!name.startsWith(QLatin1String(start), Qt::CaseInsensitive)) continue;
            name.remove(0, QLatin1String(start).size());
            break;
        }
        return RemoveEntities(name.replace(QLatin1Char('/'), QLatin1Char('\\')));
    });
}

QString RemoveEntities(const QString &Text)
{
    QString result;
    qsizetype i = 0;
    return trap("modMain", "RemoveEntities", given(module, "Text", Text).locals("Result", result, "i", i), [&] {
        result.reserve(Text.size());
        for (; i < Text.size(); ++i) {
            QChar c = Text[i];
            // What comes out may be a "%" again, and begin the next escape.
            while (c == u'%' && i + 2 < Text.size()) {
                const int high = hexDigit(Text[i + 1]), low = hexDigit(Text[i + 2]);
                if (high < 0 || low < 0) break;
                c = QChar(ushort(high * 16 + low));
                i += 2;
            }
            result += c;
        }
        return result;
    });
}

QString GetHrefFromOuterHTML(const QString &Text)
{
    QString href;
    return trap("modMain", "GetHrefFromOuterHTML", given(module, "Text", Text).locals("Href", href), [&]() -> QString {
        const qsizetype start = Text.indexOf(QLatin1String("href="), 0, Qt::CaseInsensitive);
        if (start < 0) return {};
        href = Text.mid(start + 6);
        const qsizetype quote = href.indexOf(QLatin1Char('"'), 1);
        return quote < 0 ? href : href.left(quote);
    });
}

QString ReturnBody(const QString &CompleteDocument)
{
    QString Result = CompleteDocument; // what a failure leaves: no text is lost by it
    std::optional<BodyPlace> place;
    const auto variables = given(module, "CompleteDocument", CompleteDocument).locals("Place", place);
    trap("modMain", "ReturnBody", variables, [&] {
        if ((place = findBody(Result))) Result = Result.mid(place->begin, place->end - place->begin);
        Result = RemoveLeadingAndTrailingLineFeeds(Result);
    });
    return Result;
}

QString ReturnNonBody(const QString &CompleteDocument, const QString &NewBody)
{
    QString Result = CompleteDocument;
    std::optional<BodyPlace> place;
    const auto parameters = given(module, "CompleteDocument", CompleteDocument, "NewBody", NewBody);
    trap("modMain", "ReturnNonBody", parameters.locals("Place", place), [&] {
        if ((place = findBody(Result))) Result = Result.left(place->begin) + NewBody + Result.mid(place->end);
        Result = RemoveLeadingAndTrailingLineFeeds(Result);
    });
    return Result;
}

QString RemoveLeadingAndTrailingLineFeeds(const QString &Text)
{
    QString Result = Text;
    qsizetype begin = 0, end = Text.size();
    const auto variables = given(module, "Text", Text).locals("Begin", begin, "End", end);
    trap("modMain", "RemoveLeadingAndTrailingLineFeeds", variables, [&] {
        const auto isPair = [&Text](qsizetype at) { return Text[at] == u'\r' && Text[at + 1] == u'\n'; };
        while (end - 2 >= 0 && isPair(end - 2))
            end -= 2;
        while (begin + 2 <= end && isPair(begin))
            begin += 2;
        Result = Text.mid(begin, end - begin);
    });
    return Result;
}

} // namespace modMain
