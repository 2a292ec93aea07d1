// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/layout/LaidOutPage.h"

#include <QtTest>

using namespace layout;

namespace {

struct Page : LaidOutPage {
    explicit Page(const QString &html) : LaidOutPage("<!DOCTYPE html>" + html) {}
    /// The generated text of every element with that name, in order.
    QStringList shown(const char *name)
    {
        tree.update();
        QStringList texts;
        for (dom::Element *element : document->elementsNamed(name)) {
            QString text;
            gather(*boxOf(*element), text);
            texts << text;
        }
        return texts;
    }
    QStringList markers()
    {
        tree.update();
        QStringList texts;
        for (dom::Element *element : document->elementsNamed("li")) texts << tree.markerText(*boxOf(*element)->asBlock()).trimmed();
        return texts;
    }

private:
    static void gather(Box &box, QString &text)
    {
        for (Box *child = box.firstChild(); child; child = child->next()) {
            if (child->isText() && !child->node()) text += static_cast<TextBox &>(*child).generated;
            if (child->anonymous || child->pseudo != Pseudo::None) gather(*child, text);
        }
    }
};

} // namespace

class CountersTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void markersHaveAStyleAndAContentOfTheirOwn()
    {
        Page page("<style>.c::marker { content: '(' counter(list-item, upper-roman) ') ' } .n::marker { content: none } .b::marker { content: '> '; font: 40px/50px serif }"
                  " ul { margin: 0 } li { font: 16px/20px serif }</style><ol><li class=c>a<li>b<li id=i class=c>c</ol><ul><li class=n>d<li id=b class=b>e<li id=p>f</ul>");
        QCOMPARE(page.markers(), (QStringList{"(I)", "2.", "(III)", "", ">", QString(QChar(0x2022))}));
        QCOMPARE(page.box("p").height(), 20.0);
        QVERIFY2(page.box("b").height() >= 50, qPrintable(QString::number(page.box("b").height()))); // the marker stands on its line
        dom::RawTree::setAttribute(page.byId("b"), "class", nullptr);
        QCOMPARE(page.box("b").height(), 20.0);
        dom::RawTree::remove(*page.byId("i").previousElementSibling());
        QCOMPARE(page.markers().value(1), QString("(II)"));
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void chaptersAndSections()
    {
        Page page("<style>body{counter-reset:chapter}h1{counter-reset:section;counter-increment:chapter}"
                  "h1::before{content:counter(chapter) '. '}h2::before{counter-increment:section;content:counter(chapter) '.' counter(section) ' '}"
                  "</style><body><h1>a</h1><h2>b</h2><h2>c</h2><h1>d</h1><h2>e</h2>");
        QCOMPARE(page.shown("h1"), (QStringList{"1. ", "2. "}));
        QCOMPARE(page.shown("h2"), (QStringList{"1.1 ", "1.2 ", "2.1 "}));
    }
    void nestedScopes()
    {
        Page page("<style>ol{counter-reset:item}i{counter-increment:item}i::before{content:counters(item,'.')}</style>"
                  "<ol><i></i><i></i><b><ol><i></i><i></i></ol></b><i></i><b><ol><i></i></ol></b></ol><ol><i></i></ol>");
        QCOMPARE(page.shown("i"), (QStringList{"1", "2", "2.1", "2.2", "3", "3.1", "1"}));
    }
    void whatNobodyResetBeginsWhereItIsCounted()
    {
        Page page("<style>i{counter-increment:n}i::after{content:counter(n)}</style><div><i></i><i></i></div><div><i></i></div>");
        QCOMPARE(page.shown("i"), (QStringList{"1", "2", "1"}));
    }
    void whatIsNotDisplayedCountsNothing()
    {
        Page page("<style>body{counter-reset:n}i{counter-increment:n}i::after{content:counter(n)}</style><i></i><div id=gone style='display:none'><i></i></div><b><i></i></b>");
        page.tree.update();
        page.document->getElementById("gone")->setInnerHTML("");
        QCOMPARE(page.shown("i"), (QStringList{"1", "2"}));
    }
    void numbersFollowChangesInFront()
    {
        Page page("<style>body{counter-reset:n}h2{counter-increment:n}h2::before{content:counter(n) ' '}.no{counter-increment:none}</style>"
                  "<body><div id=a></div><h2 id=b>b</h2><h2 id=c>c</h2>");
        QCOMPARE(page.shown("h2"), (QStringList{"1 ", "2 "}));
        page.document->getElementById("a")->setInnerHTML("<h2>new</h2><p>text</p>");
        QCOMPARE(page.shown("h2"), (QStringList{"1 ", "2 ", "3 "}));
        QCOMPARE(page.tree.compareWithFresh(), QString());
        page.document->getElementById("b")->setClassName("no");
        QCOMPARE(page.shown("h2"), (QStringList{"1 ", "1 ", "2 "}));
        page.document->getElementById("a")->setInnerHTML("");
        QCOMPARE(page.shown("h2"), (QStringList{"0 ", "1 "}));
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void listsCount()
    {
        Page page("<ol><li>a<li value=7>b<li>c</ol><ol start=-1><li>d<li>e</ol><ol reversed><li>f<li>g</ol><ol reversed start=9><li>h<li>i</ol>");
        QCOMPARE(page.markers(), (QStringList{"1.", "7.", "8.", "-1.", "0.", "2.", "1.", "9.", "8."}));
        page.document->elementsNamed("li")[0]->insertAdjacentHTML("beforebegin", "<li>new</li>");
        QCOMPARE(page.markers(), (QStringList{"1.", "2.", "7.", "8.", "-1.", "0.", "2.", "1.", "9.", "8."}));
    }
};

QTEST_MAIN(CountersTest)
#include "tst_counters.moc"
