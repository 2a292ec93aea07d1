// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "engine/dom/Document.h"
#include "engine/dom/EventObject.h"
#include "engine/surface/PrintSettings.h"

#include <QAbstractScrollArea>
#include <QPointer>
#include <functional>
#include <memory>

class QPagedPaintDevice;

namespace changes {
class ChangeTracker;
}
namespace editing {
class Editor;
}
namespace ranges {
enum class Role : uint8_t;
}

namespace surface {

class LoadedDocument;
class View;

/// What a navigation carries, in the contract's words. Empty strings are what the caller didn't give.
struct Navigation {
    QString url;
    int flags = 0;
    QString targetFrameName;
    QByteArray postData;
    QString headers;
};

/// The design surface: the one widget of the engine. It shows a document, scrolls it, takes input to it and tells of what
/// happens. Writing its text starts a load, which a posted call carries out and `documentComplete` ends.
///
/// Coordinates of events and questions are client pixels of the viewport. Nothing here raises to the caller; what is not
/// possible answers no.
class VELLUMKIT_EXPORT HTMLEditor : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit HTMLEditor(QWidget *parent = nullptr);
    ~HTMLEditor() override;

    /// Nothing (null) before the first load has ended.
    dom::Document *document() const;
    /// Starts a load of the text; a load that was under way is forgotten.
    void setDocumentText(const QString &text);
    bool isLoading() const { return mPending != nullptr; }
    /// Where relative references of the next load, and of the document, are resolved.
    QString baseUrl() const { return mBaseUrl; }
    void setBaseUrl(const QString &url);
    /// Raises `beforeNavigate`; unless cancelled, loads the address, or scrolls to a bookmark ("#name") of the document.
    /// An address that loads nothing (a bookmark, a script) asked for by the host ends like a load, by a posted call;
    /// a link that a user follows just scrolls.
    enum class Asker { Host, Link };
    void navigate(const Navigation &navigation, Asker asker = Asker::Host);

    dom::EditMode editMode() const { return mEditMode; }
    void setEditMode(dom::EditMode mode);
    /// Takes no input that would edit; what is written through the document goes through.
    bool isReadOnly() const { return mReadOnly; }
    void setReadOnly(bool readOnly) { mReadOnly = readOnly; }
    bool showDetails() const { return mShowDetails; }
    void setShowDetails(bool show);
    bool showBorders() const { return mShowBorders; }
    void setShowBorders(bool show);
    bool autoSelectEditableSpans() const { return mAutoSelectEditableSpans; }
    void setAutoSelectEditableSpans(bool select) { mAutoSelectEditableSpans = select; }
    /// Options that a host switches by number; the surface keeps them and answers what was set.
    bool numberedOption(int index) const { return mOptions.value(index); }
    void setNumberedOption(int index, bool on) { mOptions[index] = on; }
    QObject *externalObject() const { return mExternalObject; }
    void setExternalObject(QObject *object) { mExternalObject = object; }

    void takeFocus() { setFocus(Qt::OtherFocusReason); }
    void takeFocusAtLoadEnd() { mFocusAtLoadEnd = true; }

    /// Draws hot spots on images with the mouse: 1 rectangles, 2 circles, 3 polygons, 0 none. Each raises `areaCreated`.
    int hotSpotTool() const;
    void setHotSpotTool(int shape);

    /// Bit field of a command: 2 enabled, 4 latched; 43 is undo and 29 redo.
    int queryStatus(int command) const;
    /// Does the command; whether it could. 27 prints: with `showUi` after asking, else at once, to the usual printer; 2003
    /// shows the pages.
    bool execCommand(int command, bool showUi = false, const QString &value = {});
    /// The surface's own history; with a reader of the change log, Ctrl+Z goes out as `undoRequested`.
    bool undo();
    bool redo();

    /// Whether objects are selected, not text.
    bool isControlSelected() const;
    /// Reads the text behind an address that a navigation goes to; fails with `base::Error`. The control gives it.
    std::function<QString(const QString &url)> readText;
    /// What elements mean in the host's pages, for documents loaded from then on; empty: as HTML has it. Asked often.
    std::function<ranges::Role(const dom::Element &)> roleOf;

    // Printing. The document is laid out anew for the paper, with rules for print; what is shown stays as it is.
    /// Plain text of its TITLE, "" without one.
    QString documentTitle() const;
    /// Sets the device's paper, without margins of the device's own. False without a document, where `progress` ended it,
    /// and where the device failed.
    bool print(QPagedPaintDevice &device, const PrintSettings &settings = {}, const PrintProgress &progress = {});
    /// Writes the file as a whole or not at all.
    bool printToPdf(const QString &fileName, const PrintSettings &settings = {}, const PrintProgress &progress = {});
    /// Asks for a printer; whether something was printed.
    bool printWithDialog();
    /// To the system's usual printer, as was chosen last. False where there is none.
    bool printAtOnce();
    /// False without a document.
    bool showPrintPreview();
    /// What the dialogs offered last.
    const PrintSettings &printSettings() const { return mPrintSettings; }
    void setPrintSettings(const PrintSettings &settings) { mPrintSettings = settings; }
    /// May change the copy that is printed: the control takes away the marks of its own.
    std::function<void(dom::Document &copy)> beforePrint;

    // Inside, for the folders that wire the surface to the rest and for checks.
    LoadedDocument *loaded() const { return mLoaded.get(); }
    changes::ChangeTracker *tracker() const;
    editing::Editor *editor() const;
    View &view() const { return *mView; }
    /// The element at a client point; null outside.
    dom::Element *elementAt(QPoint client) const;

Q_SIGNALS:
    /// A new document, made of `text`, has taken the place of the old one; nobody has touched it yet.
    void documentLoaded(const QString &text);
    void documentComplete(const QString &url);
    void beforeNavigate(const surface::Navigation &navigation, bool &cancel);
    void navigateComplete();
    void elementEvent(int id, dom::EventObject *event, bool &cancelDefault);
    /// -1 for any command.
    void commandStateChange(int command, bool enable);
    void selectionChanged();
    void cellSelectionChanged();
    void areaCreated(dom::Element *area);
    void showContextMenu(int menuType, int x, int y, dom::Element *at, bool &handled);
    void undoRequested();
    void redoRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    struct PendingLoad;
    void post(std::unique_ptr<PendingLoad> load);
    void finishLoad();
    void nothingToLoad(Asker asker);
    bool raise(int id, dom::EventObject &event);

    std::unique_ptr<PendingLoad> mPending;
    std::unique_ptr<LoadedDocument> mLoaded;
    std::unique_ptr<View> mView;
    QString mBaseUrl;
    dom::EditMode mEditMode = dom::EditMode::Edit;
    bool mShowDetails = false;
    bool mShowBorders = true;
    bool mReadOnly = false;
    bool mAutoSelectEditableSpans = false;
    bool mFocusAtLoadEnd = false;
    QHash<int, bool> mOptions;
    PrintSettings mPrintSettings;
    QPointer<QObject> mExternalObject;
};

} // namespace surface
