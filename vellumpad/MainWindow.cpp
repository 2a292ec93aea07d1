// SPDX-License-Identifier: GPL-3.0-or-later
#include "MainWindow.h"

#include <VellumKit5/CommandManager>
#include <VellumKit5/Error>
#include <VellumKit5/HTMLEditor>
#include <VellumKit5/MessageBox>
#include <VellumKit5/Recovery>

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QProgressDialog>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>

using platform::MessageBox;
using Button = MessageBox::Button;

namespace {

const char *const viewCommands[] = {"ViewNormal", "ViewSource", "ViewPreview"};

/// The desktop's own picture, or one that is always there.
QIcon themeIcon(const char *name, const QIcon &otherwise)
{
    return QIcon::fromTheme(QLatin1String(name), otherwise);
}

/// The pointer asks for patience until what is about to be posted, a load, has been done. Within a load no other event
/// is looked at, so that there is nothing that could show how far it is.
class Patience
{
public:
    Patience() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Patience()
    {
        QMetaObject::invokeMethod(qApp, [] { QGuiApplication::restoreOverrideCursor(); }, Qt::QueuedConnection);
    }
};

} // namespace

MainWindow::MainWindow() : mControl(new Vellum5(this)), mFile(*mControl)
{
    setCentralWidget(mControl);
    mControl->setAccessibleName(tr("Page"));
    setAcceptDrops(true);
    resize(1100, 850);
    makeActions();
    makeMenus();
    makeToolBar();
    statusBar();
    connect(mControl, &Vellum5::DocumentComplete, this, &MainWindow::toolsRefreshed);
    connect(&mFile, &DocumentFile::changed, this, &MainWindow::fileChanged);
    connect(mControl, &Vellum5::ToolsRefreshed, this, &MainWindow::toolsRefreshed);
    connect(&mControl->Recovery(), &RecoveryJournal::Stopped, this, [this](const QString &message) {
        statusBar()->showMessage(message); // it stays; a box would take the next keys that somebody types
    });
    mControl->setAppName(QStringLiteral("VellumPad"));
    mControl->Recovery().setOn(true);
    newDocument();
    mControl->SetFocusEx();
}

MainWindow::~MainWindow()
{
    mControl->disconnect(this);
    mFile.disconnect(this);
    mControl->Terminate();
}

QAction *MainWindow::action(const QString &name, const QString &text, const QKeySequence &keys, const QIcon &icon,
                            const std::function<void()> &run)
{
    auto *made = new QAction(icon, text, this);
    made->setObjectName(name);
    made->setShortcut(keys);
    // A tool button has no room for its keys.
    QString plain = text;
    plain.remove(u'&').remove(QStringLiteral("..."));
    made->setToolTip(keys.isEmpty() ? plain
                                    : QStringLiteral("%1 (%2)").arg(plain, keys.toString(QKeySequence::NativeText)));
    connect(made, &QAction::triggered, this, run);
    addAction(made);
    return made;
}

void MainWindow::makeActions()
{
    const QStyle &look = *style();
    mNew = action(QStringLiteral("FileNew"), tr("&New"), QKeySequence::New,
                  themeIcon("document-new", look.standardIcon(QStyle::SP_FileIcon)), [this] {
                      if (mayLeave()) newDocument();
                  });
    mOpen = action(QStringLiteral("FileOpen"), tr("&Open..."), QKeySequence::Open,
                   themeIcon("document-open", look.standardIcon(QStyle::SP_DialogOpenButton)), [this] { open(); });
    mSave = action(QStringLiteral("FileSave"), tr("&Save"), QKeySequence::Save,
                   themeIcon("document-save", look.standardIcon(QStyle::SP_DialogSaveButton)), [this] { save(); });
    mSaveAs = action(QStringLiteral("FileSaveAs"), tr("Save &As..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), {},
                     [this] { saveAs(); });
    mPrint = action(QStringLiteral("FilePrint"), tr("&Print..."), QKeySequence::Print, themeIcon("document-print", {}), [this] { print(false); });
    mPrintPreview = action(QStringLiteral("FilePrintPreview"), tr("Print Pre&view"), {}, themeIcon("document-print-preview", {}), [this] { print(true); });
    mExportPdf = action(QStringLiteral("FileExportPdf"), tr("&Export as PDF..."), {}, {}, [this] { exportPdf(); });
    mQuit = action(QStringLiteral("FileQuit"), tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), {}, [this] { close(); });
    mUndo = action(QStringLiteral("EditUndo"), tr("&Undo"), QKeySequence::Undo,
                   themeIcon("edit-undo", QIcon(QStringLiteral(":/vellumpad/icons/undo.svg"))),
                   [this] { mControl->RunCommand(QStringLiteral("EditUndo")); });
    mRedo = action(QStringLiteral("EditRedo"), tr("&Redo"), QKeySequence::Redo,
                   themeIcon("edit-redo", QIcon(QStringLiteral(":/vellumpad/icons/redo.svg"))),
                   [this] { mControl->RunCommand(QStringLiteral("EditRedo")); });
    auto *group = new QActionGroup(this);
    const QString names[] = {tr("&Normal"), tr("&HTML"), tr("&Preview")}; // as the tabs have them
    for (int i = 0; i < 3; ++i) {
        mViews[i] = action(QLatin1String(viewCommands[i]), names[i], QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)), {},
                           [this, i] { setView(i); });
        mViews[i]->setCheckable(true);
        group->addAction(mViews[i]);
    }
    mViews[0]->setChecked(true);
}

void MainWindow::setView(int view)
{
    const Patience patience;
    mControl->RunCommand(QLatin1String(viewCommands[view]));
    mControl->SetFocusEx(); // who asked for a view wants to go on in it
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
    file->addAction(mPrint);
    file->addAction(mPrintPreview);
    file->addAction(mExportPdf);
    file->addSeparator();
    file->addAction(mQuit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addAction(mUndo);
    edit->addAction(mRedo);
    QMenu *view = menuBar()->addMenu(tr("&View"));
    for (QAction *action : mViews) view->addAction(action);
}

void MainWindow::makeToolBar()
{
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
    int number = 0;
    for (const QString &name : mRecent.names()) {
        const QFileInfo file(name);
        QString text = file.fileName() + QStringLiteral(" - ") + QDir::toNativeSeparators(file.path());
        text.replace(u'&', QStringLiteral("&&"));
        text.prepend(++number < 10 ? QStringLiteral("&%1 ").arg(number) : QStringLiteral("%1 ").arg(number));
        mRecentMenu->addAction(text, this, [this, name] {
            if (mayLeave()) openFile(name);
        });
    }
    if (number > 0) {
        mRecentMenu->addSeparator();
        mRecentMenu->addAction(tr("&Clear List"), this, [this] { mRecent.clear(); });
    }
    mRecentMenu->setEnabled(number > 0);
}

// Files

void MainWindow::showPage(const QString &text)
{
    const Patience patience;
    mFile.release();
    mControl->setBaseURL(QString());
    mControl->setDocumentHTML(text);
}

void MainWindow::newDocument()
{
    showPage(QStringLiteral("<!DOCTYPE html>\r\n<html>\r\n<head>\r\n<meta charset=\"utf-8\">\r\n"
                            "<title></title>\r\n</head>\r\n<body>\r\n<p></p>\r\n</body>\r\n</html>\r\n"));
}

void MainWindow::openSample()
{
    QFile sample(QStringLiteral(":/vellumpad/data/sample.html"));
    if (!sample.open(QFile::ReadOnly)) return;
    showPage(QString::fromUtf8(sample.readAll()));
}

void MainWindow::open()
{
    if (!mayLeave()) return;
    const QString name = QFileDialog::getOpenFileName(this, tr("Open"), mFile.name().isEmpty() ? QString() : QFileInfo(mFile.name()).path(),
                                                      tr("Web pages (*.html *.htm *.xhtml);;All files (*)"));
    if (!name.isEmpty()) openFile(name);
}

bool MainWindow::openFile(const QString &name)
{
    try {
        const Patience patience;
        mFile.open(name);
    } catch (const base::Error &error) {
        mRecent.remove(name);
        tell(tr("Open"), error.description());
        return false;
    }
    mRecent.add(mFile.name());
    if (mFile.isLossy()) statusBar()->showMessage(tr("Some bytes of the file had no meaning in its encoding."), 10000);
    return true;
}

bool MainWindow::saveFile(const QString &name)
{
    try {
        if (!mFile.save(name, this)) return false;
    } catch (const base::Error &error) {
        tell(tr("Save"), error.description());
        return false;
    }
    mRecent.add(mFile.name());
    statusBar()->showMessage(tr("Saved %1").arg(QDir::toNativeSeparators(mFile.name())), 5000);
    return true;
}

bool MainWindow::recover(FoundJournal &journal)
{
    const QString name = journal.documentName();
    if (!journal.recover(*mControl)) return false;
    mFile.adopt(name);
    return true;
}

bool MainWindow::save()
{
    return mFile.name().isEmpty() ? saveAs() : saveFile(mFile.name());
}

bool MainWindow::saveAs()
{
    QFileDialog dialog(this, tr("Save As"), mFile.name().isEmpty() ? QString() : QFileInfo(mFile.name()).path(),
                       tr("Web pages (*.html *.htm);;All files (*)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("html"));
    if (!mFile.name().isEmpty()) dialog.selectFile(QFileInfo(mFile.name()).fileName());
    return dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty() &&
           saveFile(dialog.selectedFiles().front());
}

// The surface is what is printed: what was typed in the source view is shown there first.
void MainWindow::print(bool preview)
{
    if (mControl->EditView() == 1) setView(0);
    mControl->WaitUntilLoaded();
    mControl->RunCommand(preview ? QStringLiteral("PrintPreview") : QStringLiteral("Print"));
}

void MainWindow::exportPdf()
{
    const QFileInfo known(mFile.name());
    const QString proposed = mFile.name().isEmpty() ? mFile.shownName() + QStringLiteral(".pdf")
                                                 : known.path() + u'/' + known.completeBaseName() + QStringLiteral(".pdf");
    const QString name = QFileDialog::getSaveFileName(this, tr("Export as PDF"), proposed, tr("PDF documents (*.pdf)"));
    if (name.isEmpty()) return;
    if (mControl->EditView() == 1) setView(0);
    mControl->WaitUntilLoaded();
    QProgressDialog box(tr("Exporting..."), tr("Cancel"), 0, 0, this);
    box.setWindowModality(Qt::WindowModal);
    box.setMinimumDuration(700);
    const bool done = mControl->VisualEditControl()->printToPdf(name, mControl->VisualEditControl()->printSettings(), [&box](int page, int pages) {
        box.setMaximum(pages + 1);
        box.setValue(page);
        return !box.wasCanceled();
    });
    const bool cancelled = box.wasCanceled();
    box.reset();
    if (done)
        statusBar()->showMessage(tr("Exported %1").arg(QDir::toNativeSeparators(name)), 5000);
    else if (!cancelled)
        tell(tr("Export as PDF"), tr("%1 can't be written.").arg(QDir::toNativeSeparators(name)));
}

bool MainWindow::mayLeave()
{
    return mFile.mayLeave([this] { return save(); }, this);
}

void MainWindow::fileChanged()
{
    setWindowFilePath(mFile.name());
    QString title = mFile.shownName();
    title.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); // a name may hold what marks the place of the asterisk
    setWindowTitle(title + QStringLiteral("[*] - VellumPad"));
    setWindowModified(mFile.hasChanges());
    toolsRefreshed();
}

void MainWindow::lookAtDisk()
{
    if (mAsking || !mFile.hasNewsOnDisk()) return;
    mAsking = true;
    const Button answer = MessageBox::show(
        MessageBox::Icon::Question, tr("VellumPad"),
        tr("%1 was changed by another program. Do you want to open it anew?%2")
            .arg(mFile.shownName(), mFile.hasChanges() ? tr(" Your changes would be lost.") : QString()),
        {Button::Yes, Button::No}, this);
    if (answer == Button::Yes)
        openFile(mFile.name());
    else
        mFile.acceptDisk();
    mAsking = false;
}

void MainWindow::tell(const QString &caption, const QString &text)
{
    MessageBox::show(MessageBox::Icon::Warning, caption, text, {Button::Ok}, this);
}

// The control

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
