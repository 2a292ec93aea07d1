// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "platform/Collection.h"
#include "platform/Contract.h"
#include "platform/Enumerations.h"
#include "platform/HostContainer.h"
#include "platform/PropertyBag.h"

#include <QWidget>
#include <memory>

class CodeMax;
class QMimeData;
class RecoveryJournal;
class VirtualCommandManager;
struct ControlState;

/// The control: a WYSIWYG HTML editor that a host places on its form.
///
/// It holds one HTML document and shows it in three views: visual, source and preview. The source editor's text is the
/// one store of the document; the surface renders it, and what is edited there is copied back when somebody asks. A load
/// is asynchronous: `DocumentComplete` ends it. All other calls are synchronous.
///
/// No member raises: a failure is reported once and the caller goes on with the result as far as it came. The host calls
/// `Terminate` before it drops the control.
class VELLUMKIT_EXPORT Vellum5 : public QWidget
{
    Q_OBJECT
    // Shell
    Q_PROPERTY(QString AppName READ AppName WRITE setAppName)
    Q_PROPERTY(bool Enabled READ Enabled WRITE setEnabled)
    Q_PROPERTY(uint BackColor READ BackColor WRITE setBackColor)
    Q_PROPERTY(int BorderStyle READ BorderStyle WRITE setBorderStyle)
    Q_PROPERTY(int ContextToolbarStyle READ ContextToolbarStyle WRITE setContextToolbarStyle)
    Q_PROPERTY(bool Terminated READ Terminated)
    Q_PROPERTY(bool Terminating READ Terminating)
    Q_PROPERTY(bool Loaded READ Loaded)
    Q_PROPERTY(QObject *EventProxy READ EventProxy)
    Q_PROPERTY(QObject *ExternalObject READ ExternalObject WRITE setExternalObject)
    Q_PROPERTY(qulonglong hWnd READ hWnd)
    Q_PROPERTY(qulonglong EditorhWnd READ EditorhWnd)
    Q_PROPERTY(qulonglong PageMaphWnd READ PageMaphWnd)
    Q_PROPERTY(qulonglong PageTagBarhWnd READ PageTagBarhWnd)
    // Document text
    Q_PROPERTY(QString DocumentHTML READ DocumentHTML WRITE setDocumentHTML)
    Q_PROPERTY(QString BodyText READ BodyText WRITE setBodyText)
    Q_PROPERTY(bool BodyMode READ BodyMode WRITE setBodyMode)
    Q_PROPERTY(QString BaseURL READ BaseURL WRITE setBaseURL)
    Q_PROPERTY(bool Dirty READ Dirty)
    Q_PROPERTY(bool Loading READ Loading)
    Q_PROPERTY(bool AutoFormatHTML READ AutoFormatHTML WRITE setAutoFormatHTML)
    Q_PROPERTY(bool AutoFormatRemoveBlankLines READ AutoFormatRemoveBlankLines WRITE setAutoFormatRemoveBlankLines)
    Q_PROPERTY(int WrapCharacters READ WrapCharacters WRITE setWrapCharacters)
    // Views and layout
    Q_PROPERTY(int EditView READ EditView WRITE setEditView)
    Q_PROPERTY(bool DontPostWhenEditViewChanges READ DontPostWhenEditViewChanges WRITE setDontPostWhenEditViewChanges)
    Q_PROPERTY(bool ShowFlatStrip READ ShowFlatStrip WRITE setShowFlatStrip)
    Q_PROPERTY(bool ShowPreviewButton READ ShowPreviewButton WRITE setShowPreviewButton)
    Q_PROPERTY(bool ShowPageMap READ ShowPageMap WRITE setShowPageMap)
    Q_PROPERTY(bool ShowTagBar READ ShowTagBar WRITE setShowTagBar)
    Q_PROPERTY(bool ShowPropertySheet READ ShowPropertySheet WRITE setShowPropertySheet)
    Q_PROPERTY(bool ShowDetails READ ShowDetails WRITE setShowDetails)
    // Editing
    Q_PROPERTY(int EditMode READ EditMode WRITE setEditMode)
    Q_PROPERTY(bool Locked READ Locked WRITE setLocked)
    Q_PROPERTY(bool AutoSelectEditableSpans READ AutoSelectEditableSpans WRITE setAutoSelectEditableSpans)
    Q_PROPERTY(bool EnableLinkClicks READ EnableLinkClicks WRITE setEnableLinkClicks)
    Q_PROPERTY(int ChangeDelay READ ChangeDelay WRITE setChangeDelay)
    Q_PROPERTY(bool HasFocus READ HasFocus)
    Q_PROPERTY(QString SelectedHTML READ SelectedHTML WRITE setSelectedHTML)
    Q_PROPERTY(QString SelectedText READ SelectedText)
    Q_PROPERTY(bool IsWholeElementSelected READ IsWholeElementSelected)
    Q_PROPERTY(bool UndoEnabled READ UndoEnabled)
    Q_PROPERTY(bool RedoEnabled READ RedoEnabled)
    // Spelling
    Q_PROPERTY(QString SpellImagePath READ SpellImagePath)
    // Page map
    Q_PROPERTY(bool PageMapDragInProgress READ PageMapDragInProgress WRITE setPageMapDragInProgress)
    Q_PROPERTY(bool LockPageMapAndBarRefresh READ LockPageMapAndBarRefresh WRITE setLockPageMapAndBarRefresh)

public:
    /// A control that never had a property bag; its properties have their initial values.
    explicit Vellum5(QWidget *parent = nullptr, HostContainer *Container = nullptr);
    /// A control that reads its properties from `Bag`, as the host's form kept them. `Container` (not owned, may be null)
    /// is the host's side of the control, also above: without one the control runs in user mode.
    Vellum5(PropertyBag &Bag, QWidget *parent = nullptr, HostContainer *Container = nullptr);
    ~Vellum5() override;

    /// Writes the persistent properties, in their order.
    void WriteProperties(PropertyBag &Bag) const;

    // Shell
    QString AppName() const;
    /// The word under which the settings are kept; the settings are read anew.
    void setAppName(const QString &AppName);
    bool Enabled() const;
    /// False takes the caret from the surface and disables the source editor; the tabs stay at hand. `isEnabled` always
    /// answers what `Enabled` does, unless a parent is disabled, which doesn't count as `Enabled` False. Called through a
    /// `QWidget` pointer, or as its `setDisabled`, it does the same and disables the whole widget, tabs too.
    void setEnabled(bool Enabled);
    /// Red in the low byte, or the number of a system colour with the highest bit set. Kept in the bag, but each load
    /// shows white.
    uint BackColor() const;
    void setBackColor(uint BackColor);
    /// A `VellumBorderStyleEnum`.
    int BorderStyle() const;
    void setBorderStyle(int BorderStyle);
    /// A `ContextToolBarStyleEnum`; 3 is taken too.
    int ContextToolbarStyle() const;
    void setContextToolbarStyle(int Style);
    Q_INVOKABLE void Terminate();
    bool Terminated() const;
    bool Terminating() const;
    bool Loaded() const;
    /// Made at the first question; tells of `ToolsRefreshed`.
    QObject *EventProxy();
    /// Nothing after `Terminate`. Writing it does nothing.
    VirtualCommandManager *CommandManager() const;
    void setCommandManager(VirtualCommandManager *);
    QObject *ExternalObject() const;
    void setExternalObject(QObject *Object);
    qulonglong hWnd() const;
    qulonglong EditorhWnd() const;
    qulonglong PageMaphWnd() const;
    qulonglong PageTagBarhWnd() const;
    CodeMax *SourceEditControl() const;
    HTMLEditor *VisualEditControl() const;
    /// Nothing until a document is loaded.
    IHTMLDocument2 *DOM() const;

    // Document text
    QString DocumentHTML();
    void setDocumentHTML(const QString &Text);
    QString BodyText();
    void setBodyText(const QString &Text);
    bool BodyMode() const;
    void setBodyMode(bool BodyMode);
    QString BaseURL() const;
    void setBaseURL(const QString &BaseURL);
    /// Edited on the surface since the last load.
    bool Dirty();
    std::shared_ptr<platform::Collection> StyleSheets() const;
    void setStyleSheets(std::shared_ptr<platform::Collection> StyleSheets);
    /// A file's name, or an address that begins with "http:". A file that isn't there gives an empty document.
    Q_INVOKABLE void LoadFile(const QString &Filename);
    /// Writes to the file of the last `LoadFile` if the document is dirty. With `Prompt` the user is asked first, and
    /// `Cancel` tells that he would rather not go on.
    Q_INVOKABLE void SaveFile(bool &Cancel, bool Prompt = false);
    Q_INVOKABLE void Navigate(const QString &URL, int Flags = 0, const QString &TargetFrameName = {},
                              const QByteArray &PostData = {}, const QString &Headers = {});
    bool Loading() const;
    /// Pumps events until the load has ended, at most 21 times; it may return with the load still running.
    Q_INVOKABLE void WaitUntilLoaded();
    /// Sets the text only if the key differs from the one that came with the text shown; True when it did.
    Q_INVOKABLE bool SetDocumentHTMLWithChangeKey(const QString &RHS, const QString &ChangeKey);
    Q_INVOKABLE void SetChangeKey(const QString &ChangeKey);
    bool AutoFormatHTML() const;
    void setAutoFormatHTML(bool AutoFormat);
    bool AutoFormatRemoveBlankLines() const;
    void setAutoFormatRemoveBlankLines(bool Remove);
    int WrapCharacters() const;
    void setWrapCharacters(int Characters);
    Q_INVOKABLE QString FormatHTMLString(const QString &Text, bool IsBody);

    // Views and layout
    int EditView() const;
    void setEditView(int View);
    bool DontPostWhenEditViewChanges() const;
    void setDontPostWhenEditViewChanges(bool DontPost);
    bool ShowFlatStrip() const;
    void setShowFlatStrip(bool Show);
    bool ShowPreviewButton() const;
    void setShowPreviewButton(bool Show);
    bool ShowPageMap() const;
    void setShowPageMap(bool Show);
    bool ShowTagBar() const;
    void setShowTagBar(bool Show);
    bool ShowPropertySheet() const;
    void setShowPropertySheet(bool Show);
    bool ShowDetails() const;
    void setShowDetails(bool Show);

    // Editing
    int EditMode() const;
    void setEditMode(int Mode);
    bool AutoSelectEditableSpans() const;
    void setAutoSelectEditableSpans(bool AutoSelect);
    /// No editing by the user, though find still works; nothing looks disabled. What the host writes goes through.
    bool Locked() const;
    void setLocked(bool Locked);
    bool EnableLinkClicks() const;
    void setEnableLinkClicks(bool Enable);
    int ChangeDelay() const;
    void setChangeDelay(int Milliseconds);
    /// Raises at once the `Change` that waits for a pause.
    Q_INVOKABLE void CommitEdit();
    bool HasFocus() const;
    Q_INVOKABLE void SetFocusEx();
    Q_INVOKABLE void SetFocusQueued();
    /// Runs a command of the vocabulary, whatever its case. A name that isn't in it raises `CommandClick` and does
    /// nothing more. Late-bound callers pass the name by reference; it comes back as it was.
    Q_INVOKABLE void RunCommand(QString &CommandName);
    void RunCommand(const QString &CommandName);
    // Selection
    /// HTML of the selection, in the source view the editor's selected text. Writing it replaces the selection; in the
    /// preview it is "" and takes nothing.
    QString SelectedHTML();
    void setSelectedHTML(const QString &Text);
    QString SelectedText();
    /// The element that is meant: the one that a command forces, a selected cell, area or object, the one that the
    /// selected text is in or all of; BODY where nothing is selected, Nothing without a document.
    base::Ref<dom::Element> SelectedElement();
    /// The document's selection in the visual view, else Nothing.
    ranges::SelectionObject *SelectionObject();
    /// The caret goes to a client point of the surface; where no text can stand it stays.
    Q_INVOKABLE void SetSelectionToPoint(int x, int y);
    /// Keeps the place by numbers of characters, which outlives a rebuild of the document.
    Q_INVOKABLE void SaveCurrentSelectionPoint();
    /// Puts the selection back, once: what was kept is cleared, and restoring again puts the caret to the start.
    Q_INVOKABLE void RestoreSavedSelectionPoint();
    bool IsWholeElementSelected();

    // Regions. Elements may be Nothing.
    Q_INVOKABLE base::Ref<dom::Element> GetCurrentEditWrapperElement();
    Q_INVOKABLE bool IsEditWrapperElement(dom::Element *e);
    Q_INVOKABLE bool IsWidgetElement(dom::Element *e);
    Q_INVOKABLE bool IsWidgetPropertyElement(dom::Element *e);
    Q_INVOKABLE bool ContainsWidgetElement(dom::Element *e);
    Q_INVOKABLE bool IsInWidget(dom::Element *e);
    Q_INVOKABLE void RunCommandEx(const QString &CommandName, dom::Element *SpecificElement);
    Q_INVOKABLE void ForceElementChange(dom::Element *Element);
    /// Shows the pages, or asks for a printer and prints. Nothing happens without a document.
    Q_INVOKABLE void DoPrint(bool Preview);

    // Spelling
    /// Of the picture below misspelt words: what follows "res://". "" at design time.
    QString SpellImagePath() const;

    // Page map
    bool PageMapDragInProgress() const;
    void setPageMapDragInProgress(bool InProgress);
    bool LockPageMapAndBarRefresh() const;
    void setLockPageMapAndBarRefresh(bool Lock);

    // Undo
    Q_INVOKABLE void StartUndoBlock(bool Merge, bool PrivateBlock);
    Q_INVOKABLE void EndUndoBlock(bool Deferred);
    Q_INVOKABLE void FlushChanges();
    Q_INVOKABLE void ResetUndo();
    Q_INVOKABLE void Undo();
    Q_INVOKABLE void Redo();
    bool UndoEnabled() const;
    bool RedoEnabled() const;

    /// What the host says to the recovery journal of the document, and asks of it.
    RecoveryJournal &Recovery() const;

    /// The control's concerns, for those who look inside.
    struct Parts;
    Parts &parts() const { return *mParts; }
    ControlState &state() const;

Q_SIGNALS:
    void SpellIgnoreWordAdded(const QString &Word);
    void SpellCustomWordAdded(const QString &Word);
    void Change();
    void DocumentComplete();
    void CommandClick(const QString &CommandName, bool &Ignore);
    void HyperlinkClick(const QString &href);
    void InsertHyperLinkRequest(const QString &SelectedText, QString &Link, bool &Handled);
    void InsertHyperLinkRequestEx(const QString &SelectedText, QString &Link, QString &Target, bool &Handled);
    void GetURL(QString &URL, QString &Caption, bool &RemoveLink, bool ShowRemoveLink, bool ShowCaption,
                bool EnabledLXLinks, bool &Handled);
    void InsertImageRequest(const QString &SelectedText, QString &Image, bool &Handled);
    void ToolsRefreshed();
    void PasteSpecialRequest(bool &Handled);
    void GetPictureURL(QString &URL, bool &Handled);
    void OLEDragDrop(const QMimeData *DataObject, int KeyState, int x, int y, int &DropEffect);
    void OLEDragOver(int KeyState, int x, int y, int &DropEffect);
    void OLEDragEnter(const QMimeData *DataObject, int KeyState, int x, int y, int &DropEffect);
    void OLEDragLeave();
    void ElementEvent(int EventId, dom::EventObject *EventInfo, bool &CancelDefault);
    void BeforeShowContextMenu(int MenuType, int x, int y, dom::Element *ObjectAtPoint, bool &CancelDefault);
    void BeforeShowContextMenuEx(int MenuType, int x, int y, dom::Element *ObjectAtPoint, bool &CancelDefault,
                                 bool &ShowDefaultContextMenu);
    void SpellCheckComplete(bool Cancelled, bool &CancelDefault);
    void FindReplaceComplete(bool Cancelled, bool &CancelDefault);
    void EditableSpanChanged(dom::Element *SPAN);
    void CellSelectionChanged();
    void NewStyleCreated(const QString &SelectorText);
    void CreateNewStyleRequest(QString &SelectorText, QString &CSSText, QString &StyleSheet, QString &FullStyleText,
                               bool &Allow, bool &UpdateFile);
    void IsEditableStylesheet(const QString &StyleSheet, bool &IsEditable, bool &IsDefault);
    void WidgetEditRequest(dom::Element *WidgetElement);
    void WidgetDeleteRequest(dom::Element *WidgetElement);
    void CreateNewStyleSheetRequest(QString &StyleSheetFileName);
    void ShowTipRequest(const QString &TipName, qulonglong hWnd, qulonglong hWnd2, QObject *TipObject);
    void HideAllTipsRequest();
    void FakeModalRequest(QObject *frm, bool &Handled);
    void WidgetConvertRequest(dom::Element *WidgetElement);
    void WidgetMakeStaticRequest(dom::Element *WidgetElement);
    void BeforeShowElementMenu(dom::Element *Element, bool &CancelDefault);

    /// `PropertyChanged` of the container, for hosts that are no container.
    void PropertyChanged(const QString &Name);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    friend class ControlHost;
    void UserControl_Initialize(HostContainer *Container);
    void UserControl_InitProperties();
    void UserControl_ReadProperties(PropertyBag &Bag);
    void Initialise();
    void UserControl_Show();
    void UserControl_Hide();
    void UserControl_Terminate();
    bool IsUserMode() const;
    void letEnabled(bool Enabled);
    void OutputDebugString(const QString &Text) const;
    void tellHost(const char *Name);
    void wireChildren();

    std::unique_ptr<Parts> mParts;
    bool mLettingEnabled = false;
};
