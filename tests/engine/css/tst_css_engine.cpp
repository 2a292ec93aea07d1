// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/css/Services.h"
#include "engine/dom/RawTree.h"
#include "engine/html/Parser.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using namespace css;
using dom::Element;

namespace {

/// Notes what a page's styles tell.
class Notes final : public StyleListener
{
public:
    void styleChanged(Element &element, Difference difference) override
    {
        const QString id = element.idAttribute();
        const QString name = id.isEmpty() ? element.name().text() : id;
        told << name + u':' + QString::number(int(difference));
    }
    QStringList take()
    {
        QStringList list = std::exchange(told, {});
        list.sort();
        return list;
    }
    QStringList told;
};

/// Counts what goes through the door, and lets it through.
class CountingDoor final : public dom::MutationDoor
{
public:
    void insert(dom::ParentNode &parent, dom::Node &child, dom::Node *before) override
    {
        ++primitives;
        dom::RawTree::insert(parent, child, before);
    }
    void remove(dom::Node &child) override
    {
        ++primitives;
        dom::RawTree::remove(child);
    }
    void move(dom::ParentNode &parent, dom::Node &child, dom::Node *before) override
    {
        ++primitives;
        dom::RawTree::move(parent, child, before);
    }
    void replaceText(dom::CharacterData &node, uint32_t offset, uint32_t count, const QString &with) override
    {
        ++primitives;
        dom::RawTree::replaceText(node, offset, count, with);
    }
    void setAttribute(Element &element, dom::Atom name, const QString *value) override
    {
        ++primitives;
        dom::RawTree::setAttribute(element, name, value);
    }
    void setHeldOpen(Element &element, bool heldOpen) override { dom::RawTree::setHeldOpen(element, heldOpen); }
    void beginAssignment() override
    {
        if (depth++ == 0) ++assignments;
    }
    void endAssignment(bool) override { --depth; }
    int primitives = 0, assignments = 0, depth = 0;
};

struct Page
{
    explicit Page(const QString &html, const QString &base = {}, SheetLoader *loader = nullptr)
        : document(html::parseDocument(html))
    {
        document->setBaseURL(base);
        services = std::make_unique<Services>(*document, loader);
        engine().addListener(&notes);
    }
    StyleEngine &engine() { return services->engine(); }
    Element &at(const char *id)
    {
        Element *element = document->getElementById(QString::fromLatin1(id));
        Q_ASSERT(element);
        return *element;
    }
    const ComputedStyle &style(const char *id) { return engine().styleFor(at(id)); }
    void styleAll()
    {
        for (dom::Node *node = document.get(); node; node = node->next(document.get()))
            if (Element *element = node->asElement()) engine().styleFor(*element);
    }
    base::Ref<dom::Document> document;
    Notes notes; // outlives the services, whose end tells it once more
    std::unique_ptr<Services> services;
};

const QString standards = QStringLiteral("<!DOCTYPE html>");

} // namespace

class TestCssEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectorsMatch_data()
    {
        QTest::addColumn<QString>("selector");
        QTest::addColumn<QString>("ids"); // in document order
        const auto row = [](const char *selector, const char *ids) {
            QTest::newRow(selector) << QString::fromLatin1(selector) << QString::fromLatin1(ids);
        };
        row("p", "p1 p2 p3");
        row("P", "p1 p2 p3");
        row(".a", "p1 b1");
        row(".A", "");
        row("#p2", "p2");
        row("p.a", "p1");
        row(".a.b", "b1");
        row("div p", "p1 p2 p3");
        row("div > b", "");
        row("p > b", "b1");
        row("p + p", "p2 p3");
        row("p ~ p", "p2 p3");
        row("#p1 ~ p", "p2 p3");
        row("p:first-child", "p1");
        row("p:last-child", "");
        row("ul:last-child", "u");
        row("li:only-child", "");
        row("li:nth-child(odd)", "l1 l3");
        row("li:nth-child(2n)", "l2 l4");
        row("li:nth-child(-n+2)", "l1 l2");
        row("li:nth-last-child(1)", "l4");
        row("li:nth-child(3)", "l3");
        row("p:nth-of-type(2)", "p2");
        row("p:last-of-type", "p3");
        row("ul:first-of-type", "u");
        row("p:empty", "p3");
        row("a:link", "a1");
        row("a:visited", "");
        row("a:hover", "");
        row("[title]", "p2 a2");
        row("[title=x]", "");
        row("[title='X y']", "p2");
        row("[title='x y' i]", "p2");
        row("[title~=y]", "p2");
        row("[title^=X]", "p2");
        row("[title$=y]", "p2");
        row("[title*=' ']", "p2");
        row("[lang|=en]", "l1");
        row("p:not(.a)", "p2 p3");
        row("p:not(.a, #p2)", "p3");
        row(":is(ul, p) > b", "b1");
        row("o\\:p", "o");
        row("input:checked", "i1");
        row("input:disabled", "i2");
        row("div div", "");
        row("body div ul li", "l1 l2 l3 l4");
        row("p::first-line", "");
        row("div *:first-child", "p1 b1 l1");
        row("p:unknown", "");
        row("p, :unknown", "");
        row("p..a", "");
    }
    void selectorsMatch()
    {
        QFETCH(QString, selector);
        QFETCH(QString, ids);
        Page page(standards +
                  QStringLiteral("<style>%1 { z-index: 77 }</style><div id=d><p id=p1 class=a><b id=b1 class='b a'>"
                                 "x</b></p><p id=p2 title='X y'>t</p><p id=p3></p><a id=a1 href=x>l</a>"
                                 "<a id=a2 title>l</a><o:p id=o>z</o:p><input id=i1 checked><input id=i2 disabled>"
                                 "<ul id=u><li id=l1 lang=en-GB>1<li id=l2>2<li id=l3>3<li id=l4>4</ul></div>")
                      .arg(selector));
        QStringList found;
        for (dom::Node *node = page.document.get(); node; node = node->next(page.document.get()))
            if (Element *element = node->asElement(); element && page.engine().styleFor(*element).box().zIndex == 77)
                if (!element->idAttribute().isEmpty()) found << element->idAttribute();
        QCOMPARE(found.join(u' '), ids);
    }

    void quirksMatchIdsAndClassesOfAnyCase()
    {
        Page page(QStringLiteral("<style>.FOO { z-index: 1 } #BAR { z-index: 2 }</style><p id=x class=foo><p id=bar>"));
        QVERIFY(page.document->isQuirks());
        QCOMPARE(page.style("x").box().zIndex, 1);
        QCOMPARE(page.style("bar").box().zIndex, 2);
    }

    void theCascadeOrdersDeclarations_data()
    {
        QTest::addColumn<QString>("css");
        QTest::addColumn<QString>("attributes");
        QTest::addColumn<int>("expected"); // the z-index of p
        QTest::newRow("later wins") << "p { z-index: 1 } p { z-index: 2 }"
                                    << "" << 2;
        QTest::newRow("class beats type") << ".a { z-index: 1 } p { z-index: 2 }"
                                          << "" << 1;
        QTest::newRow("id beats classes") << "#x { z-index: 1 } p.a.a.a { z-index: 2 }"
                                          << "" << 1;
        QTest::newRow("inline beats id") << "#x { z-index: 1 }"
                                         << "style='z-index: 5'" << 5;
        QTest::newRow("important beats inline") << "p { z-index: 1 !important }"
                                                << "style='z-index: 5'" << 1;
        QTest::newRow("important inline beats all") << "p { z-index: 1 !important }"
                                                    << "style='z-index: 5 !important'" << 5;
        QTest::newRow("invalid is no declaration") << "p { z-index: 1; z-index: red }"
                                                   << "" << 1;
        QTest::newRow("initial") << "p { z-index: 1 } .a { z-index: initial }"
                                 << "" << 0;
        QTest::newRow("media that suits") << "@media screen { p { z-index: 3 } }"
                                          << "" << 3;
        QTest::newRow("media that doesn't") << "p { z-index: 1 } @media print { p { z-index: 3 } }"
                                            << "" << 1;
        QTest::newRow("width query") << "@media (min-width: 500px) and (max-width: 2000px) { p { z-index: 3 } }"
                                     << "" << 3;
        QTest::newRow("variable") << "html { --z: 4 } p { z-index: var(--z) }"
                                  << "" << 4;
        QTest::newRow("variable's fall-back") << "p { z-index: var(--none, 6) }"
                                              << "" << 6;
        QTest::newRow("rule in a markup comment") << "<!-- p { z-index: 8 } -->"
                                                  << "" << 8;
        QTest::newRow("broken rule before") << "q { color: } } p { z-index: 1 } p { z-index: 9 }"
                                            << "" << 9;
        QTest::newRow("variables in a circle") << "p { --a: var(--b); --b: var(--a); z-index: var(--a, 2) }"
                                               << "" << 2;
    }
    void theCascadeOrdersDeclarations()
    {
        QFETCH(QString, css);
        QFETCH(QString, attributes);
        QFETCH(int, expected);
        Page page(standards + QStringLiteral("<style>%1</style><p id=x class=a %2>").arg(css, attributes));
        QCOMPARE(page.style("x").box().zIndex, expected);
    }

    void lengthsAreComputed_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<float>("px");
        QTest::addColumn<float>("percent");
        QTest::newRow("px") << "10px" << 10.f << 0.f;
        QTest::newRow("pt") << "12pt" << 16.f << 0.f;
        QTest::newRow("in") << "1in" << 96.f << 0.f;
        QTest::newRow("em") << "2em" << 40.f << 0.f;
        QTest::newRow("rem") << "2rem" << 20.f << 0.f;
        QTest::newRow("ex") << "1ex" << 10.f << 0.f;
        QTest::newRow("vw") << "10vw" << 100.f << 0.f;
        QTest::newRow("vh") << "10vh" << 80.f << 0.f;
        QTest::newRow("per cent") << "25%" << 0.f << 25.f;
        QTest::newRow("calc") << "calc(50% - 2 * (10px + 1em))" << -60.f << 50.f;
        QTest::newRow("calc of lengths") << "calc(1em + 5px)" << 25.f << 0.f;
        QTest::newRow("smallest") << "min(30px, 1em, 5rem)" << 20.f << 0.f;
        QTest::newRow("largest") << "max(30px, 1em)" << 30.f << 0.f;
        QTest::newRow("between") << "clamp(10px, 1em, 15px)" << 15.f << 0.f;
        QTest::newRow("between, the least wins") << "clamp(30px, 1em, 15px)" << 30.f << 0.f;
        QTest::newRow("sums are compared") << "clamp(10px, 1em + 2vw, 100px)" << 40.f << 0.f;
        QTest::newRow("a comparison in a sum") << "calc(2 * clamp(16px, 1vw, 18px) + 1px)" << 33.f << 0.f;
        QTest::newRow("a product with one") << "calc(0.95 * min(20px, 5vw))" << 19.f << 0.f;
        QTest::newRow("taken away") << "calc(50px - max(1em, 30px))" << 20.f << 0.f;
        QTest::newRow("one in another") << "min(max(1px, 40px), calc(10px + min(3px, 7px)))" << 13.f << 0.f;
        QTest::newRow("numbers are compared") << "calc(max(2, 3) * 5px)" << 15.f << 0.f;
        QTest::newRow("per cents beside a comparison") << "calc(10% + min(3px, 7px))" << 3.f << 10.f;
    }
    void lengthsAreComputed()
    {
        QFETCH(QString, value);
        QFETCH(float, px);
        QFETCH(float, percent);
        Page page(standards +
                  QStringLiteral("<html style='font-size: 10px'><p id=x style='font-size: 20px; margin-left: %1'>")
                      .arg(value));
        const Length length = page.style("x").margin().left;
        QVERIFY(length.isDefinite());
        QCOMPARE(length.px, px);
        QCOMPARE(length.percent, percent);
    }

    void fontSizesFollowTheBrowsers_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<double>("size");
        QTest::newRow("initial") << "<p id=x>" << 16.0;
        QTest::newRow("h1") << "<h1 id=x>" << 32.0;
        QTest::newRow("h1 in a section") << "<section><h1 id=x>" << 32.0;
        QTest::newRow("h6") << "<h6 id=x>" << 10.72;
        QTest::newRow("pre") << "<pre id=x>" << 13.0;
        QTest::newRow("code in h1") << "<h1><code id=x>" << 26.0;
        QTest::newRow("monospace with a fall-back") << "<p id=x style='font-family: monospace, serif'>" << 16.0;
        QTest::newRow("pre at a size") << "<div style='font-size: 20px'><pre id=x>" << 20.0;
        QTest::newRow("small word") << "<p id=x style='font-size: small'>" << 13.0;
        QTest::newRow("small word, fixed") << "<pre id=x style='font-size: small'>" << 12.0;
        QTest::newRow("small") << "<small id=x>" << 16 / 1.2;
        QTest::newRow("big") << "<big id=x>" << 19.2;
        QTest::newRow("font 1") << "<font id=x size=1>" << 10.0;
        QTest::newRow("font 7") << "<font id=x size=7>" << 48.0;
        QTest::newRow("font +1") << "<font id=x size=+1>" << 18.0;
        QTest::newRow("font -1") << "<font id=x size=-1>" << 13.0;
        QTest::newRow("per cent") << "<p style='font-size: 50%'><span id=x style='font-size: 150%'>" << 12.0;
        QTest::newRow("back from monospace") << "<pre><span id=x style='font-family: serif'>" << 16.0;
    }
    void fontSizesFollowTheBrowsers()
    {
        QFETCH(QString, html);
        QFETCH(double, size);
        Page page(standards + html);
        QVERIFY2(std::abs(page.style("x").font().size - size) < 0.001,
                 qPrintable(QString::number(page.style("x").font().size)));
    }

    void presentationalAttributesCount()
    {
        Page page(
            standards +
                QStringLiteral(
                    "<body bgcolor=#112233 text=red link=lime background='b.gif' leftmargin=3>"
                    "<table id=t border=2 cellpadding=5 cellspacing=4 width=50% align=center bordercolor=blue>"
                    "<tr id=r valign=top align=right bgcolor=yellow><td id=c nowrap width=40 height=20>x<th id=h>"
                    "</table><font id=f color=#00f face='Arial, Helvetica'>f</font>"
                    "<img id=i align=left hspace=3 vspace=4 border=2 width=10 height=20>"
                    "<hr id=hr size=5 noshade width=30% align=left><center id=ce></center><p id=p align=right></p>"
                    "<ol id=o type=A></ol><br id=br clear=all><a id=a href=x>l</a><a id=n>n</a>"
                    "<div id=rtl dir=rtl></div><div id=da align=center></div>"),
            QStringLiteral("http://example.org/d/"));
        const ComputedStyle &body = page.engine().styleFor(*page.document->body());
        QCOMPARE(body.background().color, 0xff112233u);
        QCOMPARE(body.color(), 0xffff0000u);
        QCOMPARE(body.background().layers[0].image.text, QStringLiteral("http://example.org/d/b.gif"));
        QCOMPARE(body.margin().left, Length::fixed(3));
        QCOMPARE(body.margin().top, Length::fixed(8));
        const ComputedStyle &table = page.style("t");
        QCOMPARE(table.box().width, Length::percentage(50));
        QVERIFY(table.margin().left.isAuto() && table.margin().right.isAuto());
        QCOMPARE(table.text().borderSpacingX, 4.f);
        QCOMPARE(table.border().top.width, 2.f);
        QCOMPARE(table.border().top.color, 0xff0000ffu);
        const ComputedStyle &cell = page.style("c");
        QCOMPARE(cell.padding().left, Length::fixed(5));
        QCOMPARE(cell.box().width, Length::fixed(40));
        QCOMPARE(cell.text().whiteSpace, WhiteSpace::Nowrap);
        QCOMPARE(cell.text().textAlign, TextAlign::WebkitRight);
        QCOMPARE(cell.box().verticalAlign.kind, VerticalAlign::Kind::Top);
        QCOMPARE(cell.border().top.width, 1.f);
        QCOMPARE(page.style("h").font().weight, 700);
        QCOMPARE(page.style("r").background().color, 0xffffff00u);
        QCOMPARE(page.style("f").color(), 0xff0000ffu);
        QCOMPARE(page.style("f").font().families, QStringList({QStringLiteral("Arial"), QStringLiteral("Helvetica")}));
        const ComputedStyle &image = page.style("i");
        QCOMPARE(image.floating(), Float::Left);
        QCOMPARE(image.display(), css::Display::Block);
        QCOMPARE(image.margin().left, Length::fixed(3));
        QCOMPARE(image.margin().bottom, Length::fixed(4));
        QCOMPARE(image.border().left.width, 2.f);
        QCOMPARE(image.box().height, Length::fixed(20));
        const ComputedStyle &rule = page.style("hr");
        QCOMPARE(rule.border().top.style, BorderStyle::Solid);
        QCOMPARE(rule.box().width, Length::percentage(30));
        QCOMPARE(rule.margin().left, Length::fixed(0));
        QVERIFY(rule.margin().right.isAuto());
        QCOMPARE(page.style("ce").text().textAlign, TextAlign::WebkitCenter);
        QCOMPARE(page.style("p").text().textAlign, TextAlign::WebkitRight);
        QCOMPARE(page.style("da").text().textAlign, TextAlign::WebkitCenter);
        QCOMPARE(page.style("o").text().listStyleType, ListStyleType::UpperAlpha);
        QCOMPARE(page.style("br").box().clear, Clear::Both);
        QCOMPARE(page.style("a").color(), 0xff00ff00u);
        QCOMPARE(page.style("a").rare().textDecoration, decoration::underline);
        QCOMPARE(page.style("n").color(), 0xffff0000u);
        QCOMPARE(page.style("rtl").text().direction, Direction::Rtl);
    }

    void tablesOfQuirksPagesDontInheritFonts()
    {
        const QString html =
            QStringLiteral("<body text=blue><div style='font-size: 30px; font-weight: bold; color: red'><table id=t>");
        Page quirks(html), strict(standards + html);
        QCOMPARE(quirks.style("t").font().size, 16.0);
        QCOMPARE(quirks.style("t").font().weight, 400);
        QCOMPARE(quirks.style("t").color(), 0xff0000ffu);
        QCOMPARE(strict.style("t").font().size, 30.0);
        QCOMPARE(strict.style("t").font().weight, 700);
        QCOMPARE(strict.style("t").color(), 0xffff0000u);
    }

    void whatAlwaysHoldsDoes()
    {
        Page page(standards +
                  QStringLiteral("<span id=f style='float: left'></span><span id=a style='position: absolute;"
                                 "float: left'></span><p id=o style='overflow-x: scroll'></p>"
                                 "<p id=b style='border: 5px none; color: red'></p>"
                                 "<p id=c style='border: solid; color: red'></p><div style='display: flex'>"
                                 "<span id=i></span></div><p id=h style='width: calc(1px - 9px)'>"));
        QCOMPARE(page.style("f").display(), css::Display::Block);
        QCOMPARE(page.style("a").display(), css::Display::Block);
        QCOMPARE(page.style("a").floating(), Float::None);
        QVERIFY(page.style("a").box().originalInline);
        QCOMPARE(page.style("o").box().overflowY, Overflow::Auto);
        QCOMPARE(page.style("b").border().top.width, 0.f);
        QCOMPARE(page.style("c").border().top.width, 3.f);
        QCOMPARE(page.style("c").border().top.color, 0xffff0000u);
        QCOMPARE(page.style("i").display(), css::Display::Block);
        QCOMPARE(page.style("h").box().width, Length::fixed(0));
        QVERIFY(page.engine().styleFor(*page.document->documentElement()).background().layers.size() == 1);
    }

    void pseudoElementsHaveStyles()
    {
        Page page(
            standards +
            QStringLiteral("<style>#x::before { content: '[' attr(title) ']' counter(n, upper-roman); color: red }"
                           "#x::after { color: blue }</style><p id=x title=T>t</p><p id=y><q id=q>"));
        const ComputedStyle *before = page.engine().styleFor(page.at("x"), Pseudo::Before);
        QVERIFY(before);
        QCOMPARE(before->rare().content.size(), size_t(4));
        QCOMPARE(before->rare().content[1].text, QStringLiteral("T"));
        QCOMPARE(before->rare().content[3].listStyle, ListStyleType::UpperRoman);
        QCOMPARE(before->color(), 0xffff0000u);
        QVERIFY(!page.engine().styleFor(page.at("x"), Pseudo::After));
        QVERIFY(!page.engine().styleFor(page.at("y"), Pseudo::Before));
        QVERIFY(page.engine().styleFor(page.at("q"), Pseudo::After));
        page.notes.take();
        page.at("x").setAttribute(QStringLiteral("title"), QStringLiteral("U"));
        page.engine().update();
        QCOMPARE(page.notes.take(), QStringList{QStringLiteral("x:3")});
    }

    void alikeElementsShareOneStyle()
    {
        Page page(standards +
                  QStringLiteral("<style>.k { color: red }</style><p id=a class=k>x<p id=b class=k>y<p id=c>"));
        QCOMPARE(&page.style("a"), &page.style("b"));
        QVERIFY(&page.style("a") != &page.style("c"));
    }

    void onlyWhatMayHaveChangedIsRestyled_data()
    {
        QTest::addColumn<QString>("css");
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("work");
        QTest::addColumn<QString>("told");
        QTest::newRow("text") << "p { color: red }"
                              << "text" << 0 << "";
        QTest::newRow("unused class") << "p { color: red }"
                                      << "class u" << 0 << "";
        QTest::newRow("class of itself") << ".u { background: red }"
                                         << "class u" << 1 << "u:1";
        QTest::newRow("class of itself, inherited") << ".u { color: red }"
                                                    << "class u" << 3 << "b1:1 i1:1 u:1";
        QTest::newRow("class with the same result") << ".u { z-index: 0 } .u { z-index: auto }"
                                                    << "class u" << 1 << "";
        QTest::newRow("class of an ancestor") << ".u b { color: red }"
                                              << "class u" << 3 << "b1:1";
        QTest::newRow("class of a sibling") << ".u + p { color: red }"
                                            << "class u" << 1 << "v:1";
        QTest::newRow("class of a list") << ".u { display: none }"
                                         << "class u" << 1 << "u:3";
        QTest::newRow("inline width") << ""
                                      << "style width: 5px" << 1 << "u:2";
        QTest::newRow("inline colour is inherited") << ""
                                                    << "style color: red" << 3 << "b1:1 i1:1 u:1";
        QTest::newRow("unknown attribute") << ""
                                           << "data-x" << 0 << "";
        QTest::newRow("attribute in a rule") << "[title] { color: red }"
                                             << "title" << 3 << "b1:1 i1:1 u:1";
        QTest::newRow("new neighbour, no rules") << "p { color: red }"
                                                 << "insert" << 0 << "";
        QTest::newRow("new neighbour, adjacent") << "q + p { color: red }"
                                                 << "insert" << 1 << "v:1";
        QTest::newRow("new neighbour, all behind") << "q ~ p { color: red }"
                                                   << "insert" << 2 << "v:1 w:1";
    }
    void onlyWhatMayHaveChangedIsRestyled()
    {
        QFETCH(QString, css);
        QFETCH(QString, action);
        QFETCH(int, work);
        QFETCH(QString, told);
        Page page(standards +
                  QStringLiteral("<style>%1</style><div id=d><p id=u>t<b id=b1>x</b><i id=i1>y</i></p><p id=v>"
                                 "z</p><p id=w></p></div>")
                      .arg(css));
        page.styleAll();
        page.notes.take();
        const uint64_t before = page.engine().computations();
        Element &u = page.at("u");
        if (action == QLatin1String("text"))
            static_cast<dom::Text &>(*u.firstChild()).replaceData(0, 1, QStringLiteral("ab"));
        if (action.startsWith(QLatin1String("class"))) u.setClassName(action.mid(6));
        if (action.startsWith(QLatin1String("style"))) u.setAttribute(QStringLiteral("style"), action.mid(6));
        if (action == QLatin1String("title") || action == QLatin1String("data-x"))
            u.setAttribute(action, QStringLiteral("x"));
        if (action == QLatin1String("insert"))
            u.parentNode()->insertBefore(*page.document->createElement(QStringLiteral("q")), u.nextSibling());
        page.engine().update();
        QCOMPARE(int(page.engine().computations() - before), work);
        QCOMPARE(page.notes.take().join(u' '), told);
    }

    void afterAnyChangeStylesAreWhatAFreshEngineFinds()
    {
        const QString css = QStringLiteral(".a b { color: red } .b + .a { margin-left: 1px } li:nth-child(2n) { color: "
                                           "blue } .c > * { font-size: 2em }"
                                           "p:first-child { text-indent: 3px } p:last-child { opacity: .5 } :empty { "
                                           "min-width: 9px } .a ~ .c b { top: 1px }"
                                           "li:only-child { left: 2px } b:first-of-type { right: 1px } .b { "
                                           "vertical-align: top } .b * { vertical-align: inherit }"
                                           "#n1 i { bottom: 4px } [align=right] b { z-index: 4 } .d { display: flex }");
        Page page(
            standards +
            QStringLiteral("<style>%1</style><div id=root><p id=n1>1<b>x</b></p><ul><li>a<li>b<b>c</b></ul></div>")
                .arg(css));
        quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        static const char *const tags[] = {"p", "b", "i", "div", "ul", "li", "table", "span"};
        static const char *const classes[] = {"", "a", "b", "c", "a b", "b c", "d"};
        const base::Ref<Element> root(&page.at("root"));
        for (int round = 0; round < 400; ++round) {
            page.styleAll();
            std::vector<Element *> all;
            for (dom::Node *node = root.get(); node; node = node->next(root.get()))
                if (Element *element = node->asElement()) all.push_back(element);
            Element &target = *all[size_t(random.bounded(int(all.size())))];
            switch (random.bounded(6)) {
            case 0:
                target.setClassName(QString::fromLatin1(classes[random.bounded(7)]));
                break;
            case 1:
                target.setAttribute(QStringLiteral("align"),
                                    random.bounded(2) ? QStringLiteral("right") : QStringLiteral("left"));
                break;
            case 2: {
                auto made = page.document->createElement(QString::fromLatin1(tags[random.bounded(8)]));
                made->setClassName(QString::fromLatin1(classes[random.bounded(7)]));
                if (!target.isVoid()) target.insertBefore(*made, random.bounded(2) ? target.firstChild() : nullptr);
                break;
            }
            case 3:
                if (&target != root.get() && all.size() > 6) target.removeNode();
                break;
            case 4: {
                Element &other = *all[size_t(random.bounded(int(all.size())))];
                if (&other != root.get() && !other.contains(target)) target.insertBefore(other, target.firstChild());
                break;
            }
            default:
                target.setAttribute(QStringLiteral("style"),
                                    random.bounded(2) ? QStringLiteral("color: lime") : QString());
            }
            page.engine().update();
            QHash<Element *, base::Ref<const ComputedStyle>> mine;
            for (dom::Node *node = root.get(); node; node = node->next(root.get()))
                if (Element *element = node->asElement())
                    mine.insert(element, base::Ref<const ComputedStyle>(&page.engine().styleFor(*element)));
            // The page's own, from nothing.
            page.services.reset();
            page.services = std::make_unique<Services>(*page.document);
            for (auto at = mine.constBegin(); at != mine.constEnd(); ++at)
                QVERIFY2(page.engine().styleFor(*at.key()) == *at.value(),
                         qPrintable(QStringLiteral("round %1: %2").arg(round).arg(at.key()->tagName())));
        }
    }

    void inlineStylesAreOneAssignment()
    {
        Page page(standards + QStringLiteral("<p id=x>t"));
        CountingDoor door;
        page.document->door = &door;
        StyleObject *style = page.at("x").style();
        style->setAttribute(QStringLiteral("backgroundColor"), QStringLiteral("red"));
        QCOMPARE(door.assignments, 1);
        QCOMPARE(door.primitives, 1);
        QCOMPARE(page.at("x").getAttribute(QStringLiteral("style")), QStringLiteral("background-color: red"));
        QCOMPARE(page.style("x").background().color, 0xffff0000u);
        QCOMPARE(style->property(QStringLiteral("BACKGROUNDCOLOR")), QStringLiteral("red"));
        style->setAttribute(QStringLiteral("backgroundColor"), QStringLiteral("red")); // changes nothing
        QCOMPARE(door.assignments, 1);
        QVERIFY_THROWS_EXCEPTION(base::Error, style->setAttribute(QStringLiteral("width"), QStringLiteral("broad")));
        QCOMPARE(door.assignments, 1);
        style->setAttribute(QStringLiteral("width"), QVariant(7));
        QCOMPARE(style->cssText(), QStringLiteral("background-color: red; width: 7px"));
        QVERIFY(!style->removeAttribute(QStringLiteral("height")));
        style->setCssText(QString());
        QVERIFY(!page.at("x").hasAttribute(dom::Atom("style")));
        style->setAttribute(QStringLiteral("auto-update-caption"), QStringLiteral("true"));
        QCOMPARE(style->getAttribute(QStringLiteral("auto-update-caption")), QStringLiteral("true"));
        QVERIFY(style->removeAttribute(QStringLiteral("AUTO-UPDATE-CAPTION")));
        QVERIFY(!page.at("x").hasAttribute(dom::Atom("style")));
        page.document->door = nullptr;
    }

    void runtimeStylesLieOverInlineOnes()
    {
        Page page(standards + QStringLiteral("<p id=x style='color: red'>t"));
        CountingDoor door;
        page.document->door = &door;
        page.style("x");
        page.at("x").runtimeStyle()->setProperty(QStringLiteral("color"), QStringLiteral("blue"));
        QCOMPARE(page.style("x").color(), 0xff0000ffu);
        QCOMPARE(page.at("x").style()->cssText(), QStringLiteral("color: red"));
        QCOMPARE(door.assignments + door.primitives, 0);
        QCOMPARE(page.services->elementsWithRuntimeStyle(), std::vector<Element *>{&page.at("x")});
        page.document->door = nullptr;
        const base::Ref<Element> keep(&page.at("x"));
        const base::Ref<dom::Node> parent(keep->parentNode());
        keep->removeNode();
        QVERIFY(page.services->elementsWithRuntimeStyle().empty());
        parent->appendChild(*keep);
        QCOMPARE(page.services->elementsWithRuntimeStyle().size(), size_t(1));
        keep->runtimeStyle()->setCssText(QString());
        QCOMPARE(page.style("x").color(), 0xffff0000u);
        QVERIFY(page.services->elementsWithRuntimeStyle().empty());
    }

    void aStyleOutlivesItsElementsTree()
    {
        base::Ref<StyleObject> style;
        Page page(standards + QStringLiteral("<p id=x>t"));
        style = base::Ref<StyleObject>(page.at("x").style());
        page.at("x").removeNode();
        style->setAttribute(QStringLiteral("color"), QStringLiteral("red"));
        QCOMPARE(style->element()->getAttribute(QStringLiteral("style")), QStringLiteral("color: red"));
    }

    void rulesOfStyleElementsWriteTheirText()
    {
        Page page(
            standards +
            QStringLiteral("<style id=s><!-- /* head */ p { color: red }\n  .k { isStyleInternal: True }\n--></style>"
                           "<p id=x class=k>t"));
        CountingDoor door;
        page.document->door = &door;
        QCOMPARE(page.services->styleSheetCount(*page.document), 1u);
        StyleSheetObject *sheet = page.services->styleSheet(*page.document, 0);
        QCOMPARE(sheet->ruleCount(), 2u);
        const auto rule = sheet->rule(0);
        QCOMPARE(rule->selectorText(), QStringLiteral("P"));
        QCOMPARE(page.style("x").color(), 0xffff0000u);
        rule->style()->setAttribute(QStringLiteral("color"), QStringLiteral("blue"));
        QCOMPARE(door.assignments, 1);
        QCOMPARE(static_cast<dom::Text &>(*page.at("s").firstChild()).data(),
                 QStringLiteral("<!-- /* head */ p { color: blue }\n  .k { isStyleInternal: True }\n-->"));
        QCOMPARE(page.style("x").color(), 0xff0000ffu);
        QCOMPARE(sheet->rule(1)->style()->property(QStringLiteral("isStyleInternal")), QStringLiteral("True"));
        QCOMPARE(sheet->addRule(QStringLiteral("div#styledummy"), QStringLiteral(" ")), 2);
        QCOMPARE(sheet->rule(2)->selectorText(), QStringLiteral("DIV#styledummy"));
        QCOMPARE(sheet->rule(2)->style()->cssText(), QString());
        QCOMPARE(door.assignments, 2);
        sheet->removeRule(1);
        QCOMPARE(sheet->ruleCount(), 2u);
        QVERIFY_THROWS_EXCEPTION(base::Error, sheet->removeRule(7));
        QVERIFY(!sheet->rule(9));
        // Somebody else rewrites the text: the same rule goes on.
        static_cast<dom::Text &>(*page.at("s").firstChild()).setNodeValue(QStringLiteral("p { color: lime }"));
        QCOMPARE(page.style("x").color(), 0xff00ff00u);
        QCOMPARE(rule->style()->cssText(), QStringLiteral("color: lime"));
        page.document->door = nullptr;
    }

    void createdSheetsTouchNothing()
    {
        Page page(standards + QStringLiteral("<style>p { color: red }</style><p id=x>t"));
        CountingDoor door;
        page.document->door = &door;
        StyleSheetObject *sheet = page.services->createStyleSheet(*page.document, QString());
        sheet->setCssText(QStringLiteral("p { color: blue } q { isStyleInternal: True }"));
        QCOMPARE(page.style("x").color(), 0xff0000ffu);
        QCOMPARE(sheet->ruleCount(), 2u);
        QCOMPARE(sheet->href(), QString());
        QCOMPARE(page.services->styleSheetCount(*page.document), 2u);
        QCOMPARE(page.services->styleSheet(*page.document, 1), sheet);
        sheet->addRule(QStringLiteral("P"), QStringLiteral("color: lime"), -1);
        QCOMPARE(page.style("x").color(), 0xff00ff00u);
        sheet->rule(2)->style()->setCssText(QStringLiteral("color: aqua"));
        QCOMPARE(page.style("x").color(), 0xff00ffffu);
        QCOMPARE(door.assignments + door.primitives, 0);
        StyleSheetObject *linked = page.services->createStyleSheet(*page.document, QStringLiteral("styles/a.css"));
        QVERIFY(linked);
        QCOMPARE(linked->href(), QStringLiteral("styles/a.css"));
        QCOMPARE(door.assignments, 1);
        QCOMPARE(page.services->styleSheet(*page.document, 1), linked);
        QCOMPARE(page.services->styleSheet(*page.document, 2), sheet);
        page.document->door = nullptr;
    }

    void linkedSheetsAreReadFromFiles()
    {
        QTemporaryDir folder;
        const auto write = [&folder](const char *name, const QByteArray &text) {
            QFile file(folder.filePath(QString::fromLatin1(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
        };
        write("a.css", "@import 'b.css'; p { background-image: url(x.gif) }");
        write("b.css", "@import url(a.css); p { z-index: 6 }");
        const QString base = QUrl::fromLocalFile(folder.path() + u'/').toString();
        Page page(standards +
                      QStringLiteral("<link rel=stylesheet href=missing.css><link rel=StyleSheet href=a.css>"
                                     "<link rel=stylesheet href=a.css media=print><link rel=icon href=x><p id=x>"),
                  base);
        QCOMPARE(page.services->styleSheetCount(*page.document), 3u);
        StyleSheetObject *missing = page.services->styleSheet(*page.document, 0);
        QCOMPARE(missing->href(), QStringLiteral("missing.css"));
        QCOMPARE(missing->ruleCount(), 0u);
        QVERIFY(!missing->isLoaded());
        QCOMPARE(page.style("x").box().zIndex, 6);
        QCOMPARE(page.style("x").background().layers[0].image.text, base + QStringLiteral("x.gif"));
        page.services->styleSheet(*page.document, 1)
            ->rule(0)
            ->style()
            ->setAttribute(QStringLiteral("zIndex"), QVariant(9));
        QCOMPARE(page.style("x").box().zIndex, 9);
        page.services->reloadSheets();
        QCOMPARE(page.style("x").box().zIndex, 6);
    }

    void aViewportOfAnotherSizeRestylesWhatAsksForIt()
    {
        Page page(
            standards +
            QStringLiteral("<style>p { z-index: 1 } @media (max-width: 600px) { p { z-index: 2 } }</style><p id=x>"));
        QCOMPARE(page.style("x").box().zIndex, 1);
        page.engine().setMedium({QStringLiteral("screen"), QSizeF(500, 800)});
        QCOMPARE(page.style("x").box().zIndex, 2);
        Page plain(standards + QStringLiteral("<p id=x>"));
        plain.style("x");
        plain.engine().setMedium({QStringLiteral("screen"), QSizeF(500, 800)});
        QVERIFY(!plain.engine().needsUpdate());
    }

    void depthCostsNoStack()
    {
        auto document = html::parseDocument(standards);
        dom::Node *at = document->body();
        for (int i = 0; i < 20000; ++i) {
            auto child = document->createElement(QStringLiteral("div"));
            at->appendChild(*child);
            at = child.get();
        }
        Services services(*document);
        QCOMPARE(services.engine().styleFor(*at->asElement()).display(), css::Display::Block);
        document->body()->setAttribute(QStringLiteral("style"), QStringLiteral("color: red"));
        QCOMPARE(services.engine().styleFor(*at->asElement()).color(), 0xffff0000u);
    }

    void detachedElementsHaveAStyleToo()
    {
        Page page(standards);
        auto element = page.document->createElement(QStringLiteral("b"));
        element->style()->setAttribute(QStringLiteral("color"), QStringLiteral("red"));
        QCOMPARE(page.engine().styleFor(*element).font().weight, 700);
        QCOMPARE(page.engine().styleFor(*element).color(), 0xffff0000u);
        QVERIFY(!element->styleSlot);
    }
};

QTEST_MAIN(TestCssEngine)
#include "tst_css_engine.moc"
