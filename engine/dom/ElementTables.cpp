// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Element.h"
#include "engine/dom/Names.h"

#include <QHash>
#include <QSet>

namespace dom {

bool isVoidElement(Atom name)
{
    static const QSet<Atom> voids = {
        names::area,  names::base,  names::basefont, names::bgsound, names::br,     names::col,   names::embed,
        names::frame, names::hr,    names::img,      names::input,   names::keygen, names::link,  names::meta,
        names::param, names::source, names::track,   names::wbr};
    return voids.contains(name);
}

namespace {

std::vector<Atom> atoms(const char *words)
{
    std::vector<Atom> list;
    for (const QString &word : QString::fromLatin1(words).split(u' ', Qt::SkipEmptyParts)) list.push_back(Atom(word));
    return list;
}

struct Row {
    const char *elements;
    const char *attributes;
};

// HTML 4.01, index of attributes, and the few that later editions add; event attributes are left to the page.
const Row rows[] = {
    {"a", "href name target rel rev charset coords shape type hreflang accesskey tabindex"},
    {"area", "alt href target coords shape nohref accesskey tabindex"},
    {"base", "href target"},
    {"blockquote q", "cite"},
    {"body", "alink background bgcolor link text vlink bgproperties leftmargin topmargin rightmargin bottommargin scroll"},
    {"br", "clear"},
    {"button", "name value type disabled accesskey tabindex"},
    {"caption", "align valign"},
    {"col colgroup", "align valign span width char charoff"},
    {"del ins", "cite datetime"},
    {"div p h1 h2 h3 h4 h5 h6", "align"},
    {"dl dir menu", "compact"},
    {"font basefont", "color face size"},
    {"form", "action method enctype target name accept-charset accept"},
    {"frame iframe", "src name frameborder longdesc marginheight marginwidth scrolling noresize align height width"},
    {"hr", "align color noshade size width"},
    {"html", "version"},
    {"img",
     "src alt border align height width hspace vspace usemap ismap name longdesc lowsrc dynsrc loop start vrml"},
    {"input",
     "type name value size maxlength checked disabled readonly src alt align accept usemap accesskey tabindex"},
    {"label", "for accesskey"},
    {"legend", "align accesskey"},
    {"li", "type value"},
    {"link", "href rel rev type media target charset hreflang"},
    {"map", "name"},
    {"meta", "name content http-equiv scheme"},
    {"object applet", "align border height width hspace vspace name data type classid code codebase archive"},
    {"ol", "type start compact"},
    {"optgroup", "label disabled"},
    {"option", "value label selected disabled"},
    {"param", "name value valuetype type"},
    {"pre", "width"},
    {"script", "src type language defer charset"},
    {"select", "name size multiple disabled tabindex"},
    {"style", "type media"},
    {"table",
     "align background bgcolor border bordercolor bordercolordark bordercolorlight cellpadding cellspacing cols frame "
     "height rules summary width"},
    {"tbody thead tfoot", "align valign bgcolor char charoff"},
    {"td th",
     "abbr align axis background bgcolor bordercolor bordercolordark bordercolorlight char charoff colspan headers "
     "height nowrap rowspan scope valign width"},
    {"textarea", "name rows cols disabled readonly accesskey tabindex wrap"},
    {"tr", "align valign bgcolor bordercolor bordercolordark bordercolorlight char charoff height"},
    {"ul", "type compact"},
};

} // namespace

const std::vector<Atom> &possibleAttributes(Atom elementName)
{
    static const auto table = [] {
        QHash<Atom, std::vector<Atom>> table;
        const std::vector<Atom> common = atoms("id class style title lang dir contenteditable");
        for (const Row &row : rows)
            for (const Atom element : atoms(row.elements)) {
                std::vector<Atom> list = common;
                for (const Atom attribute : atoms(row.attributes)) list.push_back(attribute);
                table.insert(element, list);
            }
        table.insert(Atom(), common);
        return table;
    }();
    const auto found = table.constFind(elementName);
    return found != table.constEnd() ? *found : *table.constFind(Atom());
}

QString defaultAttributeValue(Atom elementName, Atom attribute)
{
    if (attribute == names::colspan || attribute == names::rowspan || attribute == Atom("span"))
        return QStringLiteral("1");
    if (attribute == names::contenteditable) return QStringLiteral("inherit");
    if (attribute == Atom("shape")) return QStringLiteral("rect");
    if (elementName == names::form && attribute == Atom("method")) return QStringLiteral("get");
    if (elementName == names::input && attribute == names::type) return QStringLiteral("text");
    return QStringLiteral("");
}

} // namespace dom
