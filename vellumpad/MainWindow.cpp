// SPDX-License-Identifier: GPL-3.0-or-later
#include "MainWindow.h"

#include <VellumKit5/CommandManager>
#include <VellumKit5/Error>

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>

namespace {

const char *const viewCommands[] = {"ViewNormal", "ViewSource", "ViewPreview"};

} // namespace

MainWindow::MainWindow() : mControl(new Vellum5(this))
{
    setCentralWidget(mControl);
    setAcceptDrops(true);
    resize(1100, 850);
    makeActions();
    makeMenus();
    statusBar();
    connect(mControl, &Vellum5::DocumentComplete, this, &MainWindow::loaded);
    connect(mControl, &Vellum5::Change, this, &MainWindow::changed);
    connect(mControl, &Vellum5::ToolsRefreshed, this, &MainWindow::toolsRefreshed);
    mControl->setAppName(QStringLiteral("VellumPad"));
    newDocument();
}

MainWindow::~MainWindow()
{
    mControl->disconnect(this);
    mControl->Terminate();
}

QAction *MainWindow::action(const QString &text, const QKeySequence &keys, const char *icon, void (MainWindow::*run)())
{
    auto *made = new QAction(QIcon::fromTheme(QLatin1String(icon)), text, this);
    made->setShortcut(keys);
    connect(made, &QAction::triggered, this, run);
    return made;
}

void MainWindow::makeActions()
{
    const auto standard = [this](QAction *action, QStyle::StandardPixmap picture) {
        if (action->icon().isNull()) action->setIcon(style()->standardIcon(picture));
        return action;
    };
    mNew = standard(new QAction(QIcon::fromTheme(QStringLiteral("document-new")), tr("&New"), this), QStyle::SP_FileIcon);
    mNew->setShortcut(QKeySequence::New);
    connect(mNew, &QAction::triggered, this, [this] {
        if (mayLeave()) newDocument();
    });
    mOpen = standard(action(tr("&Open..."), QKeySequence::Open, "document-open", &MainWindow::open),
                     QStyle::SP_DialogOpenButton);
    mSave = standard(new QAction(QIcon::fromTheme(QStringLiteral("document-save")), tr("&Save"), this),
                     QStyle::SP_DialogSaveButton);
    mSave->setShortcut(QKeySequence::Save);
    connect(mSave, &QAction::triggered, this, [this] { save(); });
    mSaveAs = new QAction(tr("Save &As..."), this);
    mSaveAs->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(mSaveAs, &QAction::triggered, this, [this] { saveAs(); });
    mQuit = new QAction(tr("&Quit"), this);
    mQuit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(mQuit, &QAction::triggered, this, &QWidget::close);
    const auto command = [this](const QString &text, const QKeySequence &keys, const QString &name) {
        auto *made = new QAction(text, this);
        made->setShortcut(keys);
        connect(made, &QAction::triggered, this, [this, name] { mControl->RunCommand(name); });
        return made;
    };
    mUndo = standard(command(tr("&Undo"), QKeySequence::Undo, QStringLiteral("EditUndo")), QStyle::SP_ArrowBack);
    mRedo = standard(command(tr("&Redo"), QKeySequence::Redo, QStringLiteral("EditRedo")), QStyle::SP_ArrowForward);
    auto *group = new QActionGroup(this);
    const QString names[] = {tr("&Visual"), tr("&Source"), tr("&Preview")};
    for (int i = 0; i < 3; ++i) {
        mViews[i] = command(names[i], QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)), QLatin1String(viewCommands[i]));
        mViews[i]->setCheckable(true);
        group->addAction(mViews[i]);
    }
    mViews[0]->setChecked(true);
}

void MainWindow::makeMenus()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(mNew);
    file->addAction(mOpen);
    mRecentMenu = file->addMenu(tr("Open &Recent"));
    connect(file, &QMenu::aboutToShow, this, &MainWindow::updateRecentMenu);
    file->addSeparator();
    file->addAction(mSave);
    file->addAction(mSaveAs);
    file->addSeparator();
    file->addAction(mQuit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addAction(mUndo);
    edit->addAction(mRedo);
    QMenu *view = menuBar()->addMenu(tr("&View"));
    for (QAction *action : mViews) view->addAction(action);
    QToolBar *bar = addToolBar(tr("Standard"));
    bar->setObjectName(QStringLiteral("Standard"));
    for (QAction *action : {mNew, mOpen, mSave}) bar->addAction(action);
    bar->addSeparator();
    bar->addAction(mUndo);
    bar->addAction(mRedo);
}

void MainWindow::updateRecentMenu()
{
    mRecentMenu->clear();
    for (const QString &name : mRecent.names())
        mRecentMenu->addAction(QFileInfo(name).fileName() + QStringLiteral(" - ") + QFileInfo(name).path(), this,
                               [this, name] {
                                   if (mayLeave()) openFile(name);
                               });
    mRecentMenu->setEnabled(!mRecentMenu->isEmpty());
}

// Files

void MainWindow::newDocument()
{
    setCurrentFile(QString());
    mFormat = {};
    mControl->setBaseURL(QString());
    mControl->setDocumentHTML(QStringLiteral("<!DOCTYPE html>\r\n<html>\r\n<head>\r\n<meta charset=\"utf-8\">\r\n"
                                             "<title></title>\r\n</head>\r\n<body>\r\n<p></p>\r\n</body>\r\n</html>\r\n"));
    setChanged(false);
}

void MainWindow::open()
{
    if (!mayLeave()) return;
    const QString name = QFileDialog::getOpenFileName(this, tr("Open"), QFileInfo(mFileName).path(),
                                                      tr("Web pages (*.html *.htm *.xhtml);;All files (*)"));
    if (!name.isEmpty()) openFile(name);
}

bool MainWindow::openFile(const QString &name)
{
    try {
        const QString local = platform::FileHelper::localName(name);
        const platform::DecodedText file = platform::FileHelper::readText(local);
        mFormat = file.format;
        mControl->setBaseURL(QStringLiteral("file://") + platform::FileHelper::folderPart(local));
        mControl->setDocumentHTML(file.text);
        setCurrentFile(local);
        mRecent.add(local);
        setChanged(false);
        if (file.lossy)
            statusBar()->showMessage(tr("Some bytes of the file had no meaning in its encoding."), 10000);
        return true;
    } catch (const base::Error &error) {
        mRecent.remove(name);
        QMessageBox::warning(this, tr("Open"), error.description());
        return false;
    }
}

bool MainWindow::saveFile(const QString &name)
{
    try {
        const QString text = mControl->DocumentHTML();
        const platform::EncodedText written = platform::FileHelper::writeText(name, text, mFormat);
        mFormat = written.format;
        setCurrentFile(name);
        mRecent.add(name);
        mSavedText = text;
        setChanged(false);
        if (!written.message.isEmpty()) QMessageBox::information(this, tr("Save"), written.message);
        return true;
    } catch (const base::Error &error) {
        QMessageBox::warning(this, tr("Save"), error.description());
        return false;
    }
}

bool MainWindow::save()
{
    if (mFileName.isEmpty()) return saveAs();
    const QDateTime onDisk = QFileInfo(mFileName).lastModified();
    if (mTimeOnDisk.isValid() && onDisk.isValid() && onDisk != mTimeOnDisk) {
        const auto answer = QMessageBox::warning(
            this, tr("Save"),
            tr("%1 was changed by another program since you opened it. Do you want to save over it?")
                .arg(QFileInfo(mFileName).fileName()),
            QMessageBox::Save | QMessageBox::Cancel, QMessageBox::Cancel);
        if (answer != QMessageBox::Save) return false;
    }
    return saveFile(mFileName);
}

bool MainWindow::saveAs()
{
    const QString name = QFileDialog::getSaveFileName(this, tr("Save As"), mFileName,
                                                      tr("Web pages (*.html *.htm);;All files (*)"));
    return !name.isEmpty() && saveFile(name);
}

bool MainWindow::mayLeave()
{
    if (!isWindowModified()) return true;
    const auto answer = QMessageBox::question(
        this, tr("VellumPad"), tr("Do you want to save your changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    return answer == QMessageBox::Discard || (answer == QMessageBox::Save && save());
}

void MainWindow::setCurrentFile(const QString &name)
{
    mFileName = name;
    mTimeOnDisk = name.isEmpty() ? QDateTime() : QFileInfo(name).lastModified();
    setWindowFilePath(name);
    setWindowTitle((name.isEmpty() ? tr("Untitled") : QFileInfo(name).fileName()) + QStringLiteral("[*] - VellumPad"));
}

void MainWindow::setChanged(bool changed)
{
    setWindowModified(changed);
}

void MainWindow::lookAtDisk()
{
    if (mFileName.isEmpty() || mAsking) return;
    const QDateTime onDisk = QFileInfo(mFileName).lastModified();
    if (!onDisk.isValid() || onDisk == mTimeOnDisk) return;
    mAsking = true;
    const auto answer = QMessageBox::question(
        this, tr("VellumPad"),
        tr("%1 was changed by another program. Do you want to open it anew?%2")
            .arg(QFileInfo(mFileName).fileName(), isWindowModified() ? tr(" Your changes would be lost.") : QString()));
    if (answer == QMessageBox::Yes)
        openFile(mFileName);
    else
        mTimeOnDisk = onDisk;
    mAsking = false;
}

// The control

void MainWindow::loaded()
{
    toolsRefreshed();
}

void MainWindow::changed()
{
    setChanged(true);
}

void MainWindow::toolsRefreshed()
{
    mUndo->setEnabled(mControl->UndoEnabled());
    mRedo->setEnabled(mControl->RedoEnabled());
    const int view = mControl->EditView();
    if (view >= 0 && view < 3) mViews[view]->setChecked(true);
}

// The window

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->setAccepted(mayLeave());
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        QMetaObject::invokeMethod(this, [this] { lookAtDisk(); }, Qt::QueuedConnection);
}

static QString droppedFile(const QMimeData *data)
{
    return data->hasUrls() && data->urls().size() == 1 ? data->urls().front().toLocalFile() : QString();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!droppedFile(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QString name = droppedFile(event->mimeData());
    if (!name.isEmpty() && mayLeave()) openFile(name);
}
