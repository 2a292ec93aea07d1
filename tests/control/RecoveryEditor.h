// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/FoundJournal.h"
#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "control/Vellum5Parts.h"
#include "engine/dom/CharacterData.h"
#include "engine/surface/LoadedDocument.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

/// A control to type into, and what a kill would leave of it.
namespace recovery {

struct Editor {
    Vellum5 control;
    explicit Editor(bool on = true)
    {
        control.resize(800, 600);
        control.show();
        QApplication::setActiveWindow(&control);
        settle();
        control.Recovery().setOn(on);
    }
    void settle()
    {
        for (int i = 0; i < 3 || surface().isLoading(); ++i) QApplication::processEvents();
    }
    surface::HTMLEditor &surface() { return *control.VisualEditControl(); }
    CodeMax &source() { return *control.SourceEditControl(); }
    void load(const QString &text)
    {
        control.setDocumentHTML(text);
        settle();
    }
    /// The caret into the first text that holds this, behind it.
    void caretBehind(const QString &text)
    {
        for (dom::Node *node = control.DOM()->next(); node; node = node->next())
            if (const qsizetype at = node->isText() ? node->nodeValue().indexOf(text) : -1; at >= 0)
                return surface().loaded()->selection().setCaret({node, uint32_t(at + text.size())});
        QFAIL("the text isn't there");
    }
    void type(const QString &text)
    {
        surface().setFocus();
        QTest::keyClicks(&surface(), text);
        settle();
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        surface().setFocus();
        QTest::keyClick(&surface(), key, modifiers);
        settle();
    }
    void typeSource(const QString &text, int at)
    {
        source().setFocus();
        source().setSelStart(at);
        source().setSelEnd(at);
        QTest::keyClicks(&source(), text);
        settle();
    }
    void view(int view)
    {
        control.setEditView(view);
        settle();
    }
    /// Everything that recovery promises: nodes with ids, the store, the view, the modes, which side is ahead.
    QString whole()
    {
        const ControlState &state = control.state();
        QString out = QStringLiteral("view %1 body %2 mode %3 base %4 ahead %5 %6 dirty %7\n")
                          .arg(int(state.mCurrentEditView))
                          .arg(state.mBodyMode)
                          .arg(state.mEditMode)
                          .arg(state.mBaseURL)
                          .arg(state.mHTMLEdIsDirty)
                          .arg(state.mHTMLSourceChanged)
                          .arg(state.mDirty);
        out += source().Text() + u'\n';
        for (const dom::Node *node = surface().document()->next(); node; node = node->next()) {
            out += QStringLiteral("%1 #%2 ").arg(node->depth()).arg(node->id());
            const dom::Element *element = node->asElement();
            out += element ? element->name().text() : node->nodeValue();
            if (element && element->isHeldOpen()) out += u'!';
            if (element)
                for (const dom::Attribute &attribute : element->attributeList())
                    out += u' ' + attribute.name.text() + u'=' + attribute.value;
            out += u'\n';
        }
        return out;
    }
};

inline QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden);
}

inline QStringList files()
{
    return filesIn(RecoveryJournal::folder());
}

/// What a kill at this moment would leave: the journals' bytes as they are, in files that nobody holds.
class AfterKill
{
public:
    AfterKill() : mOld(RecoveryJournal::folder())
    {
        for (const QString &name : files()) QFile::copy(mOld + u'/' + name, mFolder.filePath(name));
        RecoveryJournal::setFolder(mFolder.path());
    }
    ~AfterKill() { RecoveryJournal::setFolder(mOld); }
    QString folder() const { return mFolder.path(); }

private:
    QString mOld;
    QTemporaryDir mFolder;
};

/// Another control stands where this one stands, after what this one has left.
inline void compareAfterKill(Editor &editor)
{
    Editor other(false);
    {
        AfterKill kill;
        std::vector<FoundJournal> found = FoundJournal::find();
        QCOMPARE(found.size(), size_t(1));
        QVERIFY2(found[0].isReadable(), qPrintable(found[0].problem()));
        QVERIFY(found[0].recover(other.control));
        other.settle();
        QCOMPARE(other.whole(), editor.whole());
        QCOMPARE(filesIn(kill.folder()).size(), 1);
        // Its own undo begins here.
        QCOMPARE(other.control.EditView() == 0 && other.control.UndoEnabled(), false);
        other.control.Terminate();
        QCOMPARE(filesIn(kill.folder()), QStringList());
    }
    QCOMPARE(other.control.state().mTerminated, true);
}

inline const QString page = QStringLiteral("<!doctype html>\r\n<html><head><title>T</title></head>\r\n<body><p id=\"a\">One two"
                                    "</p><p id=\"b\">Three <b>bold</b> four</p></body></html>\r\n");

} // namespace recovery
