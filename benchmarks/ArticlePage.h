// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// A page like an article of that many bytes: headings, paragraphs with bold words and links, lists and small tables.
inline QString articlePage(qsizetype bytes)
{
    static const char *const words[] = {"the",   "page",  "layout", "of",    "a",     "long",  "text",     "keeps", "its",
                                        "lines", "while", "people", "write", "mail",  "and",   "document", "what",  "they",
                                        "know",  "in",    "many",   "small", "steps", "every", "morning"};
    QString page = QStringLiteral("<!DOCTYPE html><html><head><title>Article</title><style>body{font-family:serif}"
                                  "td{border:1px solid gray}</style></head><body>");
    quint32 seed = 12345;
    const auto next = [&seed](quint32 n) {
        seed = seed * 1664525u + 1013904223u;
        return (seed >> 8) % n;
    };
    const auto text = [&](int count) {
        QString out;
        for (int i = 0; i < count; ++i) {
            const QString word = QLatin1String(words[next(25)]);
            const quint32 kind = next(30);
            out += kind == 0   ? QStringLiteral("<b>") + word + QStringLiteral("</b> ")
                   : kind == 1 ? QStringLiteral("<a href=\"#x\">") + word + QStringLiteral("</a> ")
                               : word + u' ';
        }
        return out;
    };
    for (int n = 0; page.size() < bytes; ++n) {
        if (n % 8 == 0) page += QStringLiteral("<h2>") + text(5) + QStringLiteral("</h2>\n");
        page += QStringLiteral("<p>") + text(80) + QStringLiteral("</p>\n");
        if (n % 8 == 3)
            page += QStringLiteral("<ul><li>") + text(10) + QStringLiteral("</li><li>") + text(12) +
                    QStringLiteral("</li></ul>\n");
        if (n % 8 == 6)
            page += QStringLiteral("<table><tr><td>") + text(4) + QStringLiteral("</td><td>") + text(6) +
                    QStringLiteral("</td></tr><tr><td>") + text(3) + QStringLiteral("</td><td>") + text(8) +
                    QStringLiteral("</td></tr></table>\n");
    }
    return page + QStringLiteral("</body></html>");
}
