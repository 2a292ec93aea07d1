// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DocumentFile.h"
#include "RecentFiles.h"

#include <VellumKit5/Vellum5>

#include <QMainWindow>
#include <functional>

class FoundJournal;
class QAction;
class QMenu;

/// VellumPad: a little HTML editor around one control. It saves what `DocumentHTML` gives, in the file's own encoding and
/// line ends, and keeps a modified mark of its own, so that what is typed in the source view counts too.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow();
    ~MainWindow() override;

    Vellum5 &control() { return *mControl; }
    /// False, with a message, if the file can't be read.
    bool openFile(const QString &name);
    /// A page of ours to play with. It is nobody's file: saving asks for a name.
    void openSample();
    bool saveFile(const QString &name);
    /// Takes over a document that an earlier run left; it counts as changed. False if that can't be.
    bool recover(FoundJournal &journal);
    const QString &fileName() const { return mFile.name(); }

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void makeActions();
    void makeMenus();
    void makeToolBar();
    void newDocument();
    void showPage(const QString &text);
    void open();
    bool save();
    bool saveAs();
    /// Asks before changes are lost; false if the user would rather stay.
    bool mayLeave();
    void print(bool preview);
    void exportPdf();
    void toolsRefreshed();
    void setView(int view);
    /// Title and modified mark.
    void fileChanged();
    void tell(const QString &caption, const QString &text);
    void updateRecentMenu();
    void lookAtDisk();
    QAction *action(const QString &name, const QString &text, const QKeySequence &keys, const QIcon &icon,
                    const std::function<void()> &run);

    Vellum5 *mControl;
    DocumentFile mFile;
    RecentFiles mRecent;
    bool mAsking = false;
    QMenu *mRecentMenu = nullptr;
    QAction *mNew, *mOpen, *mSave, *mSaveAs, *mPrint, *mPrintPreview, *mExportPdf, *mQuit, *mUndo, *mRedo;
    QAction *mViews[3];
};
