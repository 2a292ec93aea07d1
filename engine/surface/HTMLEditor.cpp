// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/HTMLEditor.h"

#include "base/Error.h"
#include "engine/changes/EditScope.h"
#include "engine/dom/Names.h"
#include "engine/html/Parser.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QScrollBar>

namespace surface {

namespace {

constexpr int commandRedo = 29;
constexpr int commandUndo = 43;
constexpr int commandPrint = 27;
constexpr int commandPrintPreview = 2003;
constexpr int statusEnabled = 2;
constexpr int statusSupported = 1;
const QString blank = QStringLiteral("about:blank");

} // namespace

/// A load that a posted call will carry out.
struct HTMLEditor::PendingLoad {
    QString text;
    Navigation navigation;
    bool isNavigation = false;
};

HTMLEditor::HTMLEditor(QWidget *parent) : QAbstractScrollArea(parent), mView(std::make_unique<View>(*this))
{
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setMouseTracking(true);
    viewport()->setAcceptDrops(true);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

HTMLEditor::~HTMLEditor() = default;

dom::Document *HTMLEditor::document() const
{
    return mLoaded ? &mLoaded->document() : nullptr;
}

changes::ChangeTracker *HTMLEditor::tracker() const
{
    return mLoaded ? &mLoaded->tracker() : nullptr;
}

void HTMLEditor::setDocumentText(const QString &text)
{
    auto load = std::make_unique<PendingLoad>();
    load->text = text;
    post(std::move(load));
}

void HTMLEditor::post(std::unique_ptr<PendingLoad> load)
{
    PendingLoad *mine = load.get();
    mPending = std::move(load);
    QMetaObject::invokeMethod(
        this,
        [this, mine] {
            if (mPending.get() == mine) finishLoad(); // else a later load has taken its place
        },
        Qt::QueuedConnection);
}

void HTMLEditor::setBaseUrl(const QString &url)
{
    mBaseUrl = url;
    if (mLoaded) mLoaded->document().setBaseURL(url);
}

void HTMLEditor::finishLoad()
{
    changes::EditScope scope;
    const std::unique_ptr<PendingLoad> load = std::move(mPending);
    QString url = mBaseUrl.isEmpty() ? blank : mBaseUrl;
    QString text = load->text;
    if (load->isNavigation) {
        url = load->navigation.url;
        if (url != blank && readText) {
            try {
                text = readText(url);
            } catch (const base::Error &error) {
                text = QStringLiteral("<title>%1</title><p>%2</p>")
                           .arg(url.toHtmlEscaped(), error.description().toHtmlEscaped());
            }
        }
    }
    base::Ref<dom::Document> document = html::parseDocument(text);
    document->setBaseURL(load->isNavigation && url != blank ? url : mBaseUrl);
    document->setEditMode(mEditMode);
    mView->documentGone();
    mLoaded = std::make_unique<LoadedDocument>(std::move(document));
    mLoaded->rendering().setRoles(roleOf);
    mView->documentLoaded(*mLoaded);
    Q_EMIT documentLoaded(text);
    if (std::exchange(mFocusAtLoadEnd, false)) takeFocus();
    if (load->isNavigation) Q_EMIT navigateComplete();
    Q_EMIT documentComplete(url);
}

void HTMLEditor::nothingToLoad(Asker asker)
{
    Q_EMIT navigateComplete();
    if (asker == Asker::Link || !mLoaded) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            changes::EditScope scope;
            if (!mPending) Q_EMIT documentComplete(mBaseUrl.isEmpty() ? blank : mBaseUrl);
        },
        Qt::QueuedConnection);
}

void HTMLEditor::navigate(const Navigation &navigation, Asker asker)
{
    bool cancel = false;
    Q_EMIT beforeNavigate(navigation, cancel);
    if (cancel) return;
    const QString &url = navigation.url;
    if (url.startsWith(QLatin1String("javascript:"), Qt::CaseInsensitive)) return nothingToLoad(asker); // none ever runs
    const qsizetype hash = url.indexOf(u'#');
    if (hash >= 0 && mLoaded && (hash == 0 || url.left(hash) == mLoaded->document().baseURL())) {
        mView->scrollToAnchor(url.mid(hash + 1));
        return nothingToLoad(asker);
    }
    auto load = std::make_unique<PendingLoad>();
    load->navigation = navigation;
    load->isNavigation = true;
    post(std::move(load));
}

void HTMLEditor::setEditMode(dom::EditMode mode)
{
    if (mEditMode == mode) return;
    mEditMode = mode;
    if (mLoaded) mLoaded->document().setEditMode(mode);
    mView->modeChanged();
    Q_EMIT commandStateChange(-1, true);
}

void HTMLEditor::setShowDetails(bool show)
{
    if (std::exchange(mShowDetails, show) != show) viewport()->update();
}

void HTMLEditor::setShowBorders(bool show)
{
    if (std::exchange(mShowBorders, show) != show) viewport()->update();
}

int HTMLEditor::hotSpotTool() const
{
    return int(mView->hotSpotShape());
}

void HTMLEditor::setHotSpotTool(int shape)
{
    mView->setHotSpotShape(HotSpotTool::Shape(std::clamp(shape, 0, 3)));
}

int HTMLEditor::queryStatus(int command) const
{
    const auto *tracker = this->tracker();
    if (command == commandUndo) return tracker && tracker->canUndo() ? statusEnabled : 0;
    if (command == commandRedo) return tracker && tracker->canRedo() ? statusEnabled : 0;
    if (command == commandPrint || command == commandPrintPreview) return mLoaded ? statusEnabled | statusSupported : 0;
    return mView->commandStatus(command) ? mView->commandStatus(command) | statusSupported : 0;
}

bool HTMLEditor::execCommand(int command, bool showUi, const QString &value)
{
    if (command == commandUndo) return undo();
    if (command == commandRedo) return redo();
    if (command == commandPrint) return showUi ? printWithDialog() : printAtOnce();
    if (command == commandPrintPreview) return showPrintPreview();
    return mView->execCommand(command, value);
}

bool HTMLEditor::undo()
{
    if (!tracker() || !tracker()->canUndo()) return false;
    tracker()->undo();
    return true;
}

bool HTMLEditor::redo()
{
    if (!tracker() || !tracker()->canRedo()) return false;
    tracker()->redo();
    return true;
}

bool HTMLEditor::isControlSelected() const
{
    return mView->isControlSelected();
}

editing::Editor *HTMLEditor::editor() const
{
    return mView->editor();
}

dom::Element *HTMLEditor::elementAt(QPoint client) const
{
    return mView->elementAt(client);
}

} // namespace surface
