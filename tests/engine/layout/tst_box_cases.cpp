// SPDX-License-Identifier: GPL-3.0-or-later
/// Runs the cases of `tests/data/boxes/*.txt`: a title behind "==", the body's HTML, and behind "--" the border boxes of
/// elements, which were reckoned by hand. Then every style and text is changed back and forth: what comes of the changes
/// must equal a layout made anew.
#include "tests/engine/layout/LaidOutPage.h"

#include <QDir>
#include <QtTest>

using namespace layout;

namespace {

struct Page : LaidOutPage {
    explicit Page(const QString &body) : LaidOutPage(bare(body)) {}
};

} // namespace

class BoxCases : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void boxes_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QStringList>("expected");
        const QDir folder(QStringLiteral(SOURCE_DIR "/tests/data/boxes"));
        int count = 0;
        for (const QString &name : folder.entryList({"*.txt"}, QDir::Files)) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QStringList cases = QString::fromUtf8(file.readAll()).split("\n== ").mid(1);
            for (const QString &each : cases) {
                const QString title = each.section('\n', 0, 0), rest = each.section('\n', 1);
                const QStringList parts = rest.split("\n--\n");
                QVERIFY2(parts.size() == 2, qPrintable(title));
                QTest::newRow(qPrintable(name + ": " + title)) << parts[0] << parts[1].split('\n', Qt::SkipEmptyParts);
                ++count;
            }
        }
        QVERIFY(count > 0);
    }
    void boxes()
    {
        QFETCH(QString, body);
        QFETCH(QStringList, expected);
        Page page(body);
        const auto check = [&]() -> QString {
            for (const QString &line : expected) {
                const QStringList words = line.split(' ', Qt::SkipEmptyParts);
                const dom::Element *element = page.document->getElementById(words.value(0));
                if (words.size() != 5 || !element) return "bad line: " + line;
                const QRectF box = page.queries.borderBox(*element);
                const double values[] = {box.x(), box.y(), box.width(), box.height()};
                for (int i = 0; i < 4; ++i)
                    if (std::abs(values[i] - words[i + 1].toDouble()) > 0.03)
                        return QStringLiteral("%1, but here %2 %3 %4 %5").arg(line).arg(values[0]).arg(values[1]).arg(values[2]).arg(values[3]);
            }
            return {};
        };
        QCOMPARE(check(), QString());
        std::vector<dom::Element *> elements;
        for (dom::Node *node = page.document->body()->firstChild(); node; node = node->next(page.document->body()))
            if (node->isElement()) elements.push_back(static_cast<dom::Element *>(node));
        for (dom::Element *element : elements) {
            const QString before = element->attributeValue("style");
            for (const char *change : {";padding:3px", ";display:none", ";width:33px", ";height:37px", ";order:3", ";float:left"}) {
                setStyle(*element, before + change);
                QCOMPARE(page.tree.compareWithFresh(), QString());
            }
            setStyle(*element, before);
            const auto text = page.document->createTextNode("some words");
            dom::RawTree::insert(*element, *text, element->firstChild());
            QCOMPARE(page.tree.compareWithFresh(), QString());
            dom::RawTree::replaceText(*text, 0, 4, u"other and longer");
            QCOMPARE(page.tree.compareWithFresh(), QString());
            dom::RawTree::remove(*text);
        }
        QCOMPARE(check(), QString());
    }
};

QTEST_MAIN(BoxCases)
#include "tst_box_cases.moc"
