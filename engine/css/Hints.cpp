// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Hints.h"

#include "engine/css/Color.h"
#include "engine/css/Tokenizer.h"
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"

#include <QSet>
#include <cmath>

namespace css {

using dom::Element;
namespace names = dom::names;

namespace {

const dom::Atom frameAttribute("frame"), faceAttribute("face"), nowrapAttribute("nowrap"), wrapAttribute("wrap"),
    leftmargin("leftmargin"), topmargin("topmargin"), rightmargin("rightmargin"), bottommargin("bottommargin"),
    marginwidth("marginwidth"), marginheight("marginheight"), frameborder("frameborder"), bgproperties("bgproperties"),
    bordercolorlight("bordercolorlight"), bordercolordark("bordercolordark");

/// Writes the declarations of one element.
class Hints
{
public:
    explicit Hints(const Element &element) : e(element) {}

    QString run()
    {
        if (e.space() != dom::Namespace::Html) return {};
        const dom::Atom name = e.name();
        if (name == names::td || name == names::th) {
            cell();
        } else if (e.attributeList().empty() && name != names::a && !isTablePart()) {
            return {};
        } else if (name == names::table) {
            table();
        } else if (isTablePart()) {
            tablePart();
        } else if (name == names::font || name == names::basefont) {
            font();
        } else if (name == names::body || name == names::html) {
            body();
        } else if (name == names::a || name == names::area) {
            link();
        } else if (name == names::hr) {
            rule();
        } else if (isReplaced()) {
            replaced();
        } else if (name == names::ul || name == names::ol || name == names::li || name == names::menu ||
                   name == names::dir) {
            list();
        } else {
            block();
        }
        return mText;
    }

private:
    bool isTablePart() const
    {
        return e.is(names::tr) || e.is(names::tbody) || e.is(names::thead) || e.is(names::tfoot) || e.is(names::col) ||
               e.is(names::colgroup);
    }
    bool isReplaced() const
    {
        return e.is(names::img) || e.is(names::object) || e.is(names::embed) || e.is(names::iframe) ||
               e.is(names::applet) || e.is(names::video) || e.is(names::canvas) || e.is(names::input) ||
               e.is(names::marquee);
    }

    void put(const char *name, const QString &value)
    {
        mText += QLatin1String(name) + QLatin1String(": ") + value + u';';
    }
    void put(const char *name, const char *value) { put(name, QString::fromLatin1(value)); }
    const QString *attribute(dom::Atom name) const { return e.attribute(name); }
    static bool equals(const QString *value, const char *word)
    {
        return value && value->trimmed().compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
    }

    /// "12", "12px" and "12.5" are pixels, "50%" per cent; nothing for what doesn't start with a number.
    static QString dimension(const QString *value, bool zero = true)
    {
        if (!value) return {};
        const QString text = value->trimmed();
        qsizetype end = text.startsWith(u'+') ? 1 : 0;
        const qsizetype start = end;
        while (end < text.size() && text[end] >= u'0' && text[end] <= u'9')
            ++end;
        if (end < text.size() && text[end] == u'.') {
            ++end;
            while (end < text.size() && text[end] >= u'0' && text[end] <= u'9')
                ++end;
        }
        bool ok = false;
        const double number = text.mid(start, end - start).toDouble(&ok);
        if (!ok || !std::isfinite(number) || (!zero && number == 0)) return {};
        const bool percent = end < text.size() && text[end] == u'%';
        return QString::number(std::min(number, 1e7), 'g', 10) + QLatin1String(percent ? "%" : "px");
    }
    void length(const char *property, dom::Atom name, bool zero = true)
    {
        const QString text = dimension(attribute(name), zero);
        if (!text.isEmpty()) put(property, text);
    }
    static int integer(const QString *value, int otherwise)
    {
        if (!value) return otherwise;
        const QString text = dimension(value);
        return text.isEmpty() ? otherwise : int(std::min(text.chopped(text.endsWith(u'%') ? 1 : 2).toDouble(), 1e6));
    }
    void color(const char *property, const QString *value)
    {
        if (!value) return;
        if (const auto rgb = legacyColor(*value)) put(property, colorText(*rgb));
    }
    void backgroundImage()
    {
        const QString *value = attribute(names::background);
        if (value && !value->trimmed().isEmpty())
            put("background-image", QStringLiteral("url(%1)").arg(quoteString(value->trimmed())));
    }
    void alignText(bool webkit)
    {
        const QString *align = attribute(names::align);
        if (!align) return;
        const bool center = equals(align, "center") || equals(align, "middle");
        if (center) put("text-align", webkit ? "-webkit-center" : "center");
        if (equals(align, "left")) put("text-align", webkit ? "-webkit-left" : "left");
        if (equals(align, "right")) put("text-align", webkit ? "-webkit-right" : "right");
        if (equals(align, "justify")) put("text-align", "justify");
    }
    void alignDown()
    {
        const QString *value = attribute(names::valign);
        for (const char *word : {"top", "middle", "bottom", "baseline"})
            if (equals(value, word)) put("vertical-align", word);
        if (equals(value, "center")) put("vertical-align", "middle");
    }

    void block()
    {
        const dom::Atom name = e.name();
        if (name == names::div || name == names::p || name == names::center || name == names::h1 || name == names::h2 ||
            name == names::h3 || name == names::h4 || name == names::h5 || name == names::h6)
            alignText(name == names::div || name == names::p || isHeading());
        if (name == names::br) {
            const QString *clear = attribute(names::clear);
            for (const char *word : {"left", "right"})
                if (equals(clear, word)) put("clear", word);
            if (equals(clear, "all") || equals(clear, "both")) put("clear", "both");
        }
        if (name == names::caption) {
            if (equals(attribute(names::align), "bottom"))
                put("caption-side", "bottom");
            else
                alignText(true);
            if (equals(attribute(names::valign), "bottom")) put("caption-side", "bottom");
        }
        if (name == names::legend) {
            const QString *align = attribute(names::align);
            if (equals(align, "center") || equals(align, "right")) put("margin-left", "auto");
            if (equals(align, "center")) put("margin-right", "auto");
        }
        if (name == names::pre) length("width", names::width, false);
        if (name == names::textarea && equals(attribute(wrapAttribute), "off")) put("white-space", "pre");
    }
    bool isHeading() const
    {
        const QString &name = e.name().text();
        return name.size() == 2 && name[0] == u'h' && name[1] >= u'1' && name[1] <= u'6';
    }

    void body()
    {
        color("background-color", attribute(names::bgcolor));
        backgroundImage();
        if (equals(attribute(bgproperties), "fixed")) put("background-attachment", "fixed");
        if (!e.is(names::body)) return;
        color("color", attribute(names::text));
        const auto margin = [this](const char *property, dom::Atom first, dom::Atom second) {
            QString text = dimension(attribute(first));
            if (text.isEmpty()) text = dimension(attribute(second));
            if (!text.isEmpty()) put(property, text);
        };
        margin("margin-top", marginheight, topmargin);
        margin("margin-bottom", marginheight, bottommargin);
        margin("margin-left", marginwidth, leftmargin);
        margin("margin-right", marginwidth, rightmargin);
    }

    void link()
    {
        if (!e.hasAttribute(names::href)) return;
        const Element *body = e.document().body();
        if (body) color("color", body->attribute(names::link));
    }

    void font()
    {
        if (e.is(names::basefont)) return;
        color("color", attribute(names::color));
        if (const QString *face = attribute(faceAttribute); face && !face->trimmed().isEmpty())
            put("font-family", *face);
        const QString *size = attribute(names::size);
        if (!size) return;
        QString text = size->trimmed();
        const bool more = text.startsWith(u'+'), less = text.startsWith(u'-');
        if (more || less) text = text.mid(1);
        const int number = integer(&text, -1);
        if (number < 0 || (number == 0 && !more && !less && text.isEmpty())) return;
        const int base = baseSize();
        const int value = std::clamp(more ? base + number : less ? base - number : number, 1, 7);
        static const char *const words[] = {"x-small", "small", "medium", "large", "x-large", "xx-large", "xxx-large"};
        put("font-size", words[value - 1]);
    }
    int baseSize() const
    {
        if (!e.isConnected()) return 3;
        for (const Element *base : e.document().elementsNamed(names::basefont))
            if (base->compareOrder(e) < 0) return std::clamp(integer(base->attribute(names::size), 3), 1, 7);
        return 3;
    }

    void rule()
    {
        const QString *align = attribute(names::align);
        if (equals(align, "left")) put("margin", "0.5em auto 0.5em 0");
        if (equals(align, "right")) put("margin", "0.5em 0 0.5em auto");
        length("width", names::width);
        const bool shaded = !e.hasAttribute(names::noshade) && !e.hasAttribute(names::color);
        const int size = integer(attribute(names::size), -1);
        if (!shaded) put("border-style", "solid");
        if (size == 1 || size == 0) {
            put("border-bottom-width", "0");
        } else if (size > 1) {
            put("height", QStringLiteral("%1px").arg(size - 2));
        }
        if (const QString *value = attribute(names::color)) {
            color("color", value);
            color("border-color", value);
            color("background-color", value);
        } else if (!shaded) {
            put("border-color", "gray");
            if (size > 1) put("background-color", "gray");
        }
    }

    void replaced()
    {
        const bool input = e.is(names::input);
        if (input && !equals(attribute(names::type), "image")) return;
        length("width", names::width);
        length("height", names::height);
        for (const char *side : {"margin-left", "margin-right"})
            length(side, names::hspace);
        for (const char *side : {"margin-top", "margin-bottom"})
            length(side, names::vspace);
        if (e.is(names::marquee)) color("background-color", attribute(names::bgcolor));
        if (e.is(names::iframe)) {
            const QString *border = attribute(frameborder);
            if (equals(border, "0") || equals(border, "no")) put("border", "0");
        } else if (attribute(names::border)) {
            const int width = integer(attribute(names::border), 0);
            put("border-width", QStringLiteral("%1px").arg(width));
            put("border-style", "solid");
            color("border-color", attribute(names::bordercolor));
        }
        const QString *align = attribute(names::align);
        if (equals(align, "left")) put("float", "left");
        if (equals(align, "right")) put("float", "right");
        if (equals(align, "top") || equals(align, "texttop"))
            put("vertical-align", equals(align, "top") ? "top" : "text-top");
        if (equals(align, "middle") || equals(align, "center")) put("vertical-align", "-webkit-baseline-middle");
        if (equals(align, "absmiddle") || equals(align, "abscenter")) put("vertical-align", "middle");
        if (equals(align, "bottom") || equals(align, "baseline")) put("vertical-align", "baseline");
        if (equals(align, "absbottom")) put("vertical-align", "bottom");
    }

    void list()
    {
        if (e.is(names::li)) alignText(true);
        const QString *type = attribute(names::type);
        if (!type) return;
        const QString word = type->trimmed();
        if (word == QLatin1String("1")) put("list-style-type", "decimal");
        if (word == QLatin1String("a")) put("list-style-type", "lower-alpha");
        if (word == QLatin1String("A")) put("list-style-type", "upper-alpha");
        if (word == QLatin1String("i")) put("list-style-type", "lower-roman");
        if (word == QLatin1String("I")) put("list-style-type", "upper-roman");
        for (const char *name : {"disc", "circle", "square", "none"})
            if (equals(type, name)) put("list-style-type", name);
    }

    // Tables

    enum class Rules : uint8_t { Unset, None, Groups, Rows, Cols, All };
    static Rules rulesOf(const Element &table)
    {
        const QString *value = table.attribute(names::rules);
        if (equals(value, "none")) return Rules::None;
        if (equals(value, "groups")) return Rules::Groups;
        if (equals(value, "rows")) return Rules::Rows;
        if (equals(value, "cols")) return Rules::Cols;
        if (equals(value, "all")) return Rules::All;
        return Rules::Unset;
    }
    static int borderOf(const Element &table)
    {
        const QString *border = table.attribute(names::border);
        // An attribute without a number is a border all the same.
        return border ? integer(border, 1) : 0;
    }

    void table()
    {
        length("width", names::width, false);
        length("height", names::height, false);
        color("background-color", attribute(names::bgcolor));
        backgroundImage();
        const QString *align = attribute(names::align);
        if (equals(align, "left")) put("float", "left");
        if (equals(align, "right")) put("float", "right");
        if (equals(align, "center") || equals(align, "middle")) {
            put("margin-left", "auto");
            put("margin-right", "auto");
        }
        const QString spacing = dimension(attribute(names::cellspacing));
        if (!spacing.isEmpty() && !spacing.endsWith(u'%')) put("border-spacing", spacing);
        const Rules rules = rulesOf(e);
        if (rules != Rules::Unset) put("border-collapse", "collapse");
        tableBorder(rules);
    }

    void tableBorder(Rules rules)
    {
        const int width = borderOf(e);
        if (attribute(names::border)) put("border-width", QStringLiteral("%1px").arg(width));
        if (const QString *frame = attribute(frameAttribute)) {
            static const std::pair<const char *, const char *> frames[] = {{"void", "hidden"},
                                                                           {"above", "outset hidden hidden hidden"},
                                                                           {"below", "hidden hidden outset hidden"},
                                                                           {"hsides", "outset hidden"},
                                                                           {"lhs", "hidden hidden hidden outset"},
                                                                           {"rhs", "hidden outset hidden hidden"},
                                                                           {"vsides", "hidden outset"},
                                                                           {"box", "outset"},
                                                                           {"border", "outset"}};
            for (const auto &[word, style] : frames)
                if (equals(frame, word)) {
                    QString text = QString::fromLatin1(style);
                    if (rules != Rules::Unset) text.replace(QLatin1String("outset"), QLatin1String("solid"));
                    put("border-style", text);
                }
            put("border-width", "1px"); // COMPAT: a frame is thin, whatever the border is
        } else if (rules == Rules::None || rules == Rules::Groups || rules == Rules::Rows || rules == Rules::Cols ||
                   rules == Rules::All) {
            if (width > 0)
                put("border-style", "solid");
            else
                put("border-style", "hidden");
        } else if (width > 0) {
            put("border-style", attribute(names::bordercolor) ? "solid" : "outset");
        }
        color("border-color", attribute(names::bordercolor));
    }

    void tablePart()
    {
        alignText(true);
        alignDown();
        color("background-color", attribute(names::bgcolor));
        backgroundImage();
        if (e.is(names::tr) || e.is(names::tbody) || e.is(names::thead) || e.is(names::tfoot))
            length("height", names::height);
        if (e.is(names::col) || e.is(names::colgroup)) length("width", names::width);
        color("border-color", attribute(names::bordercolor));
        const Element *table = tableOf();
        if (!table) return;
        const Rules rules = rulesOf(*table);
        const bool group = e.is(names::tbody) || e.is(names::thead) || e.is(names::tfoot);
        if (rules == Rules::Rows && e.is(names::tr)) sides("border-top", "border-bottom");
        if (rules == Rules::Groups && group) sides("border-top", "border-bottom");
        if (rules == Rules::Groups && e.is(names::colgroup)) sides("border-left", "border-right");
    }
    void sides(const char *first, const char *second)
    {
        for (const char *side : {first, second})
            put(side, "1px solid");
    }

    const Element *tableOf() const
    {
        // A cell's table is at most three steps up.
        const Element *at = e.parentElement();
        for (int step = 0; at && step < 4; ++step, at = at->parentElement())
            if (at->is(names::table)) return at;
        return nullptr;
    }

    void cell()
    {
        length("width", names::width, false);
        length("height", names::height, false);
        color("background-color", attribute(names::bgcolor));
        backgroundImage();
        alignText(true);
        alignDown();
        if (e.hasAttribute(nowrapAttribute)) {
            // In quirks mode a width in pixels says more than the wish not to wrap.
            const QString width = dimension(attribute(names::width), false);
            if (!e.document().isQuirks() || !width.endsWith(u'x')) put("white-space", "nowrap");
        }
        if (const Element *table = tableOf()) cellOf(*table);
        color("border-color", attribute(names::bordercolor));
    }

    void cellOf(const Element &table)
    {
        const QString padding = dimension(table.attribute(names::cellpadding));
        if (!padding.isEmpty() && !padding.endsWith(u'%')) put("padding", padding);
        switch (rulesOf(table)) {
        case Rules::Unset:
            if (borderOf(table) > 0) put("border", table.hasAttribute(names::bordercolor) ? "1px solid" : "1px inset");
            break;
        case Rules::All:
            put("border", "1px solid");
            break;
        case Rules::Cols:
            sides("border-left", "border-right");
            break;
        case Rules::Rows:
        case Rules::Groups:
        case Rules::None:
            break;
        }
        if (table.hasAttribute(names::border) || rulesOf(table) == Rules::All) {
            if (table.hasAttribute(names::bordercolor))
                color("border-color", table.attribute(names::bordercolor));
            else
                put("border-color", "inherit");
        }
    }

    const Element &e;
    QString mText;
};

} // namespace

QString presentationalHints(const Element &element)
{
    return Hints(element).run();
}

HintReach hintReach(const Element &element, dom::Atom attribute)
{
    static const QSet<dom::Atom> *const known = new QSet<dom::Atom>{
        names::align,     names::alink,    names::background, names::bgcolor, names::border, names::bordercolor,
        names::clear,     names::color,    names::height,     names::href,    names::hspace, names::noshade,
        names::size,      names::text,     names::type,       names::valign,  names::vspace, names::width,
        faceAttribute,    nowrapAttribute, wrapAttribute,     leftmargin,     topmargin,     rightmargin,
        bottommargin,     marginwidth,     marginheight,      frameborder,    bgproperties,  frameAttribute,
        bordercolorlight, bordercolordark};
    if (element.is(names::table) && (attribute == names::border || attribute == names::bordercolor ||
                                     attribute == names::rules || attribute == names::cellpadding))
        return HintReach::Subtree;
    if (element.is(names::table) && attribute == names::cellspacing) return HintReach::Self;
    if (element.is(names::body) && (attribute == names::link || attribute == names::vlink)) return HintReach::Subtree;
    return known->contains(attribute) ? HintReach::Self : HintReach::None;
}

} // namespace css
