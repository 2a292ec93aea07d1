// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/ControlState.h"
#include "platform/FileText.h"

class CodeMax;
class Host;
class RecoveryJournal;

/// The road of the document's text: how it gets in, where it lives, how it reaches the surface and comes back.
///
/// The source editor's text is the one store. `mHTMLEdIsDirty` says that the surface is ahead of it,
/// `mHTMLSourceChanged` that it is ahead of the surface.
class DocumentText
{
public:
    DocumentText(ControlState &state, Host &host, HTMLEditor &ed, CodeMax &txtHTMLSource);

    /// Set by the control: shows the current view, posting the store's text if told.
    std::function<void(bool PostContent)> UpdateCurrentView;
    std::function<void()> CreateNewChangeManager;
    std::function<void()> KillChangeManager;
    RecoveryJournal *journal = nullptr; // never null in a control

    QString DocumentHTML();
    void setDocumentHTML(const QString &Text);
    QString BodyText();
    void setBodyText(const QString &Text);
    bool Dirty();
    bool Loading() const;
    void WaitUntilLoaded();
    bool SetDocumentHTMLWithChangeKey(const QString &RHS, const QString &ChangeKey);
    void SetChangeKey(const QString &ChangeKey);
    void LoadFile(const QString &Filename);
    void SaveFile(bool &Cancel, bool Prompt);
    void Navigate(const surface::Navigation &navigation);

    void SetInternalHTMLText(QString Text, bool ClearUndo);
    QString GetInternalHTMLText() const;
    void UpdateInternalHTMLText();
    QString GetVisualHTML();
    void SetedDocumentHTML(const QString &Text);
    QString AddHTMLWrapper(const QString &Text);
    QString StyleSheetLinks();
    void ShutDownBeforeReload();
    void ResetNavSound();
    QString FormatHTML(const QString &Text, bool IsBody);
    void ed_DocumentComplete(const QString &URL);
    IHTMLDocument2 *mDoc() const;
    /// In a copy that is printed.
    static void hideMisspellings(IHTMLDocument2 &document);

private:
    bool isActive() const;
    void addMisspellingStyle();
    void addBodyModeStyles();
    QString withBodyAlone(const QString &text) const;

    ControlState &mState;
    Host &mHost;
    HTMLEditor &ed;
    CodeMax &txtHTMLSource;
    platform::FileFormat mFormat; ///< of the file last loaded
    bool mScriptAddress = false;  ///< the surface was handed a script's address while the page is only read
};
