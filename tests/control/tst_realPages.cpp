// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"
#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "engine/dom/CharacterData.h"
#include "engine/html/Parser.h"
#include "engine/surface/LoadedDocument.h"
#include "platform/FileText.h"
#include "support/SettingsStore.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

/// Real pages make the round trip: opened, shown, typed into and saved.
class tst_realPages : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void roundTrip_data();
    void roundTrip();

private:
    QTemporaryDir mSettings;
};

namespace {

void settle(Vellum5 &control)
{
    while (control.VisualEditControl()->isLoading()) QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

/// Nodes, attributes and texts; neighbouring texts are one.
QString shape(const dom::Document &document)
{
    QString out;
    for (const dom::Node *node = document.next(); node; node = node->next()) {
        if (!node->isText() || !(node->previousSibling() && node->previousSibling()->isText()))
            out += QStringLiteral("\n%1 %2 ").arg(node->depth()).arg(node->nodeType());
        if (const dom::Element *element = node->asElement()) {
            out += element->name().text();
            for (const dom::Attribute &attribute : element->attributeList())
                out += u' ' + attribute.name.text() + u'=' + attribute.value;
        } else {
            out += node->nodeValue();
        }
    }
    return out;
}

/// Pages of different generators, 15 KB to 900 KB, from packages that `scripts/setup` installs.
const char *const installed[] = {
    "/usr/share/doc/debian/FAQ/pkg-basics.en.html",
    "/usr/share/doc/debian/FAQ/ftparchives.en.html",
    "/usr/share/doc/debian/FAQ/support.en.html",
    "/usr/share/doc/bash/bashref.html",
    "/usr/share/doc/libflac-doc/api/group__flacpp__metadata__level2.html",
    "/usr/share/doc/libflac-doc/api/group__flac__stream__encoder.html",
    "/usr/share/doc/libflac-doc/api/FLAC_2metadata_8h_source.html",
    "/usr/share/doc/libtheora-dev/html/codec_8h.html",
    "/usr/share/doc/libtheora-dev/html/theora_8h_source.html",
    "/usr/share/developers-reference/developers-reference.html",
    "/usr/share/developers-reference/resources.html",
    "/usr/share/developers-reference/developer-duties.html",
};

} // namespace

void tst_realPages::initTestCase()
{
    support::SettingsStore::instance().setFolder(mSettings.path());
}

void tst_realPages::roundTrip_data()
{
    QTest::addColumn<QString>("file");
    for (const char *file : installed) {
        // A machine may be told to install packages without their documents.
        if (QFile::exists(QString::fromLatin1(file)))
            QTest::newRow(file) << QString::fromLatin1(file);
        else
            qWarning("not installed here: %s", file);
    }
    int pages = 0;
    for (const char *folder : {SOURCE_DIR "/tests/data/pages", SOURCE_DIR "/../shared/pages"}) {
        QDirIterator it(QString::fromLatin1(folder), {"*.html"}, QDir::Files, QDirIterator::Subdirectories);
        for (; it.hasNext(); ++pages) {
            const QString file = it.next();
            QTest::newRow(qPrintable(QDir(folder).relativeFilePath(file))) << file;
        }
    }
    QVERIFY(pages >= 2);
}

void tst_realPages::roundTrip()
{
    QFETCH(QString, file);
    QFile source(file);
    QVERIFY(source.open(QFile::ReadOnly));
    const QString page = platform::decodeFileText(source.readAll()).text;
    Vellum5 control;
    control.resize(1000, 800);
    control.show();
    control.setAutoFormatHTML(false);
    control.setBaseURL(QStringLiteral("file://") + QFileInfo(file).path() + u'/');
    control.setDocumentHTML(page);
    settle(control);
    QVERIFY(control.Loaded());
    QCOMPARE(control.DocumentHTML(), page); // nobody touched it
    const QString parsed = shape(*control.DOM());

    // A letter in the middle, and away again.
    dom::Document &document = *control.DOM();
    dom::Node *text = nullptr;
    for (uint32_t i = document.elementCount() / 2; i < document.elementCount() && !text; ++i)
        for (dom::Node *node = document.elementAt(i)->firstChild(); node; node = node->nextSibling())
            if (node->isText() && node->nodeValue().trimmed().size() > 3 && node->parentElement()->isContentEditable() &&
                !node->parentElement()->is("script") && !node->parentElement()->is("style"))
                text = node;
    QVERIFY(text);
    const QString before = text->nodeValue();
    qsizetype letter = 0;
    while (!before[letter].isLetterOrNumber()) ++letter;
    QWidget *surface = control.VisualEditControl();
    control.VisualEditControl()->loaded()->selection().setCaret({text, uint32_t(letter + 1)});
    QTest::keyClick(surface, 'q');
    QCOMPARE(text->nodeValue().size(), before.size() + 1);
    QVERIFY(control.Dirty());
    QTest::keyClick(surface, Qt::Key_Backspace);
    const QString saved = control.DocumentHTML();
    QCOMPARE(shape(*control.DOM()), parsed);
    QCOMPARE(control.VisualEditControl()->loaded()->tree().compareWithFresh(), QString());

    // What was saved loads as it was, and saves the same.
    control.setDocumentHTML(saved);
    settle(control);
    QCOMPARE(shape(*control.DOM()), parsed);
    QCOMPARE(control.DOM()->documentElement()->outerHTML(), saved);
    control.Terminate();
}

QTEST_MAIN(tst_realPages)
#include "tst_realPages.moc"
