// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/DocumentText.h"

#include "control/RecoveryJournal.h"
#include "core/Host.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "engine/css/StyleObject.h"
#include "engine/css/StyleSheetObject.h"
#include "engine/html/Parser.h"
#include "engine/html/Serializer.h"
#include "platform/CodeMax.h"
#include "platform/FileHelper.h"
#include "platform/HttpHelper.h"
#include "platform/MessageBox.h"
#include "support/FailureTrap.h"

#include <QCoreApplication>
#include <QRegularExpression>

using support::given;
using support::trap;

namespace {

constexpr char module[] = "Vellum5";

const QString helpNamespace = QStringLiteral("http://msdn.microsoft.com/mshelp");
const QString markerClass = QStringLiteral("lxmisspelled");
/// The byte order mark of UTF-8 as a parser shows it that reads it as windows-1252.
const QString shownMark = QStringLiteral("\u00EF\u00BB\u00BF");

QString misspellingRule(const QString &picture)
{
    return QStringLiteral("BACKGROUND-POSITION: left bottom; BACKGROUND-IMAGE: url('res://") + picture +
           QStringLiteral("'); BACKGROUND-REPEAT: repeat-x; isStyleInternal: True");
}

/// Takes out the instructions that declare the help format's prefix, in all spellings: with and without its address,
/// quoted by either mark or none. Those of other prefixes, or of another address, are the page's own.
QString withoutHelpInstructions(const QString &text)
{
    static const QRegularExpression instruction(
        QStringLiteral("<\\?xml:namespace\\s+prefix\\s*=\\s*([\"']?)mshelp\\1"
                       "(?:\\s+ns\\s*=\\s*([\"']?)%1/?\\2)?\\s*[/?]?>")
            .arg(QRegularExpression::escape(helpNamespace)),
        QRegularExpression::CaseInsensitiveOption);
    // Most pages have none, and a long one isn't copied then.
    if (!text.contains(QLatin1String("<?xml:namespace"), Qt::CaseInsensitive)) return text;
    return QString(text).remove(instruction);
}

bool isMarker(const IHTMLElement &span)
{
    return span.className().compare(markerClass, Qt::CaseInsensitive) == 0;
}

/// Puts the word that a misspelling marker holds in its place, as text: read as HTML, "a<b" would lose its end. A marker
/// that holds more than a word, a picture or a line break, leaves all of that.
void dissolve(IHTMLElement &marker)
{
    bool isWord = true;
    for (const dom::Node *node = marker.firstChild(); node; node = node->next(&marker))
        if (const dom::Element *element = node->asElement()) isWord = isWord && !element->isVoid() && element->firstChild();
    if (isWord) {
        marker.insertAdjacentText(QStringLiteral("afterend"), marker.innerText());
    } else if (dom::Node *const parent = marker.parentNode()) {
        while (dom::Node *const child = marker.firstChild())
            parent->insertBefore(*child, &marker);
    }
    marker.setOuterHTML(QString());
}

bool startsWith(const QString &text, const char *with)
{
    return text.startsWith(QLatin1String(with), Qt::CaseInsensitive);
}

const QString navigatingKey = QStringLiteral("AppEvents\\Schemes\\Apps\\Explorer\\Navigating\\.current");

} // namespace

DocumentText::DocumentText(ControlState &state, Host &host, HTMLEditor &ed, CodeMax &source)
    : mState(state), mHost(host), ed(ed), txtHTMLSource(source)
{
}

// In

void DocumentText::setDocumentHTML(const QString &Text)
{
    trap(module, "DocumentHTML", given(&mState, "Text", Text), [&] {
        RecoveryJournal::Replacement replacement(*journal);
        SetInternalHTMLText(Text, true);
        UpdateCurrentView(true);
        // The call cleared the flag; in the source view the surface still holds the old text.
        if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit) mState.mHTMLSourceChanged = true;
    });
}

void DocumentText::setBodyText(const QString &Text)
{
    trap(module, "BodyText", given(&mState, "Text", Text), [&] { setDocumentHTML(AddHTMLWrapper(Text)); });
}

QString DocumentText::BodyText()
{
    return trap<QString>(module, "BodyText", &mState,
                         [&](QString &Result) { Result = modMain::ReturnBody(DocumentHTML()); });
}

void DocumentText::SetInternalHTMLText(QString Text, bool ClearUndo)
{
    trap(module, "SetInternalHTMLText", given(&mState, "Text", Text, "ClearUndo", ClearUndo), [&] {
        Text = withoutHelpInstructions(Text);
        const bool bodyMode = mState.mBodyMode;
        txtHTMLSource.setText(bodyMode ? FormatHTML(modMain::ReturnBody(Text), true) : FormatHTML(Text, false));
        mState.mHTMLSourceChanged = true;
        journal->stateChanged();
        if (ClearUndo) txtHTMLSource.ClearUndo();
    });
}

QString DocumentText::GetInternalHTMLText() const
{
    return txtHTMLSource.Text();
}

QString DocumentText::FormatHTML(const QString &Text, bool IsBody)
{
    QString Result = Text; // what a failure leaves
    trap(module, "FormatHTML", given(&mState, "Text", Text, "IsBody", IsBody), [&] {
        // the formatter's place
    });
    return Result;
}

void DocumentText::SetedDocumentHTML(const QString &Text)
{
    QString posted;
    trap(module, "SetedDocumentHTML", given(&mState, "Text", Text).locals("Posted", posted), [&] {
        if (!mState.mInitialised) return;
        mState.mLoadingEd = true;
        ShutDownBeforeReload();
        mState.mRespondToDocumentComplete = true;
        posted = Text;
        if (mState.mBodyMode)
            posted = AddHTMLWrapper(modMain::ReturnBody(Text));
        else if (!mState.mBOM.isEmpty() && !Text.startsWith(shownMark))
            posted = mState.mBOM + Text;
        journal->posts(posted);
        ed.setDocumentText(posted);
    });
}

void DocumentText::ShutDownBeforeReload()
{
    trap(module, "ShutDownBeforeReload", &mState, [&] {
        mState.mSpellChoiceElement = nullptr;
        KillChangeManager();
        mState.mLoaded = false;
    });
}

QString DocumentText::AddHTMLWrapper(const QString &Text)
{
    bool editable = false;
    const auto variables = given(&mState, "Text", Text).locals("Editable", editable);
    return trap<QString>(module, "AddHTMLWrapper", variables, [&](QString &Result) {
        editable = mState.mEditMode == 1 && mState.mCurrentEditView == EditViewEnum::hvVisualEdit;
        const QStringList lines = {
            QStringLiteral("<!doctype HTML PUBLIC \"-//W3C//DTD HTML 4.0 Transitional//EN\">"),
            QStringLiteral("<HTML xmlns:MSHelp=\"%1\">").arg(helpNamespace),
            QStringLiteral("<HEAD>"),
            QStringLiteral("<META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; CHARSET=UTF-8\">"),
            StyleSheetLinks() + QStringLiteral("<BASE href=\"") + mState.mBaseURL +
                QStringLiteral("\"/><script>function lxOnError() { return true; } window.onerror = lxOnError;</script>"
                               "</HEAD>"),
            QStringLiteral("<BODY contenteditable=\"%1\" id=\"bodyelement\">")
                .arg(editable ? QStringLiteral("true") : QStringLiteral("false")),
            Text,
            QStringLiteral("</BODY>"),
            QStringLiteral("</HTML>"),
        };
        Result = lines.join(QStringLiteral("\r\n"));
    });
}

QString DocumentText::StyleSheetLinks()
{
    int i = 0;
    return trap<QString>(module, "StyleSheetLinks", given(&mState).locals("i", i), [&](QString &Result) {
        // COMPAT: the rule's closing brace is missing; the comment's end follows at once.
        Result = QStringLiteral("<style><!-- SPAN.lxMisspelled { ") + misspellingRule(mState.mSpellImagePath) +
                 QStringLiteral(" --></style>");
        if (!mState.mStylesheets) return;
        for (i = 1; i <= mState.mStylesheets->Count(); ++i)
            Result += QStringLiteral("    <link rel=\"stylesheet\" href=\"") + mState.mStylesheets->Item(i).toString() +
                      QStringLiteral("\" type=\"text/css\">\r\n");
    });
}

// The load ends

bool DocumentText::isActive() const
{
    return ed.editMode() != dom::EditMode::Browse || ed.autoSelectEditableSpans();
}

void DocumentText::ed_DocumentComplete(const QString &URL)
{
    trap(module, "ed_DocumentComplete", given(&mState, "URL", URL), [&] {
        // What a script's address ends in is no load, and takes neither edits nor undo steps away.
        if (std::exchange(mScriptAddress, false) && !mState.mLoadingEd) return;
        mState.mLoadingEd = false;
        if (mState.mRespondToDocumentComplete && !mState.mTerminating && !mState.mTerminated) {
            mState.mLoaded = true;
            if (isActive()) CreateNewChangeManager();
            if (!mState.mBodyMode) {
                if (URL != QLatin1String("about:blank")) addMisspellingStyle();
            } else {
                addBodyModeStyles();
            }
            if (isActive()) mHost.raiseDocumentComplete();
        }
        mState.mHTMLEdIsDirty = false;
        mState.mDirty = false;
        ResetNavSound();
    });
}

void DocumentText::addMisspellingStyle()
{
    css::StyleSheetObject *sheet = mDoc()->styles->createStyleSheet(*mDoc(), QString());
    sheet->setCssText(QStringLiteral("SPAN.lxMisspelled {") + misspellingRule(mState.mSpellImagePath) + u'}');
}

// They are for the one who writes. The rule that shows them may stand in the page's text, so another one beats it.
void DocumentText::hideMisspellings(IHTMLDocument2 &document)
{
    css::StyleSheetObject *sheet = document.styles->createStyleSheet(document, QString());
    sheet->setCssText(QStringLiteral("SPAN.lxMisspelled { background-image: none !important }"));
}

/// Linked style sheets written for a page whose content lies in a `div#pagebody` style the wrapper's body. What the text
/// itself brings in a STYLE element stays as it is.
void DocumentText::addBodyModeStyles()
{
    IHTMLDocument2 &document = *mDoc();
    css::StyleSheetObject *added = document.styles->createStyleSheet(document, QString());
    const QString page = QStringLiteral("div#pagebody");
    for (uint32_t i = 0; i < document.styles->styleSheetCount(document); ++i) {
        css::StyleSheetObject *sheet = document.styles->styleSheet(document, i);
        if (sheet->href().isEmpty()) continue;
        for (uint32_t r = 0; r < sheet->ruleCount(); ++r) {
            const auto rule = sheet->rule(r);
            QString selector = rule->selectorText();
            if (!selector.contains(page, Qt::CaseInsensitive)) continue;
            selector.replace(page, QStringLiteral("body#bodyelement"), Qt::CaseInsensitive);
            added->addRule(selector, rule->style()->cssText(), -1);
        }
    }
    if (mState.mCurrentEditView == EditViewEnum::hvPreview && document.body())
        document.body()->style()->showAs(QStringLiteral("visibility"), QStringLiteral("visible"));
}

// Out

QString DocumentText::DocumentHTML()
{
    return trap<QString>(module, "DocumentHTML", &mState, [&](QString &Result) {
        if (mState.mCurrentEditView == EditViewEnum::hvVisualEdit) UpdateInternalHTMLText();
        Result = GetInternalHTMLText();
    });
}

void DocumentText::UpdateInternalHTMLText()
{
    QString text;
    trap(module, "UpdateInternalHTMLText", given(&mState).locals("Text", text), [&] {
        if (mState.mCurrentEditView != EditViewEnum::hvVisualEdit || !mState.mHTMLEdIsDirty) return;
        // While a load is under way, and once the control has ended, there is nothing on the surface to copy, and the
        // store has the text.
        if (mState.mLoadingEd || !mDoc()) return;
        // No document reads as nothing: a reading that failed must not empty the store.
        text = GetVisualHTML();
        if (mState.mBodyMode) text = withBodyAlone(text);
        if (!text.isEmpty()) SetInternalHTMLText(text, false);
    });
}

/// The body is sought by its tags, in the text as it stands: a comment or a script in it that speaks of a body, or a ">"
/// in one of the body's own values, would be taken for them, and what lies in front of it would be lost. So only the body
/// is handed on, in tags that can't be mistaken.
QString DocumentText::withBodyAlone(const QString &text) const
{
    QString tag;
    if (const IHTMLElement *body = mDoc()->body()) html::Serializer::writeStartTag(*body, tag);
    tag = html::Serializer::withCrLf(tag);
    const qsizetype begin = tag.isEmpty() ? -1 : text.indexOf(tag);
    const qsizetype end = text.lastIndexOf(QLatin1String("</BODY>"));
    if (begin < 0 || end < begin + tag.size()) return text;
    const qsizetype inside = begin + tag.size();
    return QStringLiteral("<BODY>") + text.mid(inside, end - inside) + QStringLiteral("</BODY>");
}

QString DocumentText::GetVisualHTML()
{
    base::Ref<IHTMLDocument2> copy;
    return trap<QString>(module, "GetVisualHTML", given(&mState).locals("Copy", copy), [&](QString &Result) {
        if (!mHost.IsUserMode() || !mState.mInitialised || mState.mLoadingEd || !mDoc()) return;
        Result = mDoc()->documentElement()->outerHTML();
        if (mState.mDynamicSpellCheck) {
            // The live document mustn't be touched, or it would be marked anew at each read.
            copy = html::parseDocument(Result);
            const std::vector<IHTMLElement *> spans = copy->elementsNamed("span");
            for (const auto &span : std::vector<base::Ref<IHTMLElement>>(spans.begin(), spans.end()))
                if (isMarker(*span)) dissolve(*span);
            Result = copy->documentElement()->outerHTML();
        }
        if (Result.startsWith(shownMark)) Result.remove(0, 3);
    });
}

bool DocumentText::Dirty()
{
    return trap<bool>(module, "Dirty", &mState, [&](bool &Result) {
        UpdateInternalHTMLText();
        Result = mState.mDirty;
    });
}

bool DocumentText::Loading() const
{
    return !mState.mLoaded || mState.mLoadingEd;
}

void DocumentText::WaitUntilLoaded()
{
    int pass = 0;
    trap(module, "WaitUntilLoaded", given(&mState).locals("Pass", pass), [&] {
        for (; pass < 21 && mState.mLoadingEd; ++pass) {
            changes::EditScope::Suspension pump;
            QCoreApplication::processEvents();
        }
    });
}

bool DocumentText::SetDocumentHTMLWithChangeKey(const QString &RHS, const QString &ChangeKey)
{
    const auto parameters = given(&mState, "RHS", RHS, "ChangeKey", ChangeKey);
    return trap<bool>(module, "SetDocumentHTMLWithChangeKey", parameters, [&](bool &Result) {
        if (ChangeKey != mState.mChangeKey) {
            setDocumentHTML(RHS);
            mState.mChangeKey = ChangeKey;
            Result = true;
        } else {
            UpdateCurrentView(false);
        }
    });
}

void DocumentText::SetChangeKey(const QString &ChangeKey)
{
    trap(module, "SetChangeKey", given(&mState, "ChangeKey", ChangeKey), [&] { mState.mChangeKey = ChangeKey; });
}

// Files

/// Events come in while the network is waited for; what they change is told then, and not as part of the load.
static QString fetch(const QString &URL)
{
    changes::EditScope::Suspension waiting;
    return platform::HttpHelper::fetchText(URL);
}

void DocumentText::LoadFile(const QString &Filename)
{
    bool isThere = false;
    QString page;
    const auto variables = given(&mState, "Filename", Filename).locals("IsThere", isThere, "Page", page);
    trap(module, "LoadFile", variables, [&] {
        if (!Filename.startsWith(QLatin1String("http:"))) {
            mState.mBaseURL = QStringLiteral("file://") + platform::FileHelper::folderPart(Filename);
            platform::DecodedText file;
            // A folder is no missing file: it can't be read.
            isThere = platform::FileHelper::exists(Filename) || platform::FileHelper::isFolder(Filename);
            if (isThere) file = platform::FileHelper::readText(Filename);
            page = file.text;
            // Only now: a file that can't be read leaves the old one's name, text and format.
            mFormat = file.format;
            setDocumentHTML(page);
        } else {
            mState.mBaseURL = Filename.left(Filename.lastIndexOf(u'/') + 1);
            page = fetch(Filename);
            mFormat = {};
            setDocumentHTML(page);
        }
        mState.mFileName = Filename;
    });
}

void DocumentText::SaveFile(bool &Cancel, bool Prompt)
{
    auto answer = platform::MessageBox::Button::Yes;
    platform::EncodedText written;
    const auto parameters = given(&mState, "Cancel", Cancel, "Prompt", Prompt);
    trap(module, "SaveFile", parameters.locals("Answer", answer, "Message", written.message), [&] {
        if (!Dirty()) return;
        if (Prompt) {
            using platform::MessageBox;
            changes::EditScope::Suspension modal;
            answer = MessageBox::show(MessageBox::Icon::Question, QStringLiteral("Save changes"),
                                      QStringLiteral("Would you like to save your changes to this file ?"),
                                      {MessageBox::Button::Yes, MessageBox::Button::No, MessageBox::Button::Cancel},
                                      mHost.window());
            if (answer == MessageBox::Button::Cancel) Cancel = true;
            if (answer != MessageBox::Button::Yes) return;
        }
        written = platform::FileHelper::writeText(mState.mFileName, GetInternalHTMLText(), mFormat);
        mFormat = written.format;
        journal->documentSaved();
        if (!written.message.isEmpty()) {
            using platform::MessageBox;
            MessageBox::show(MessageBox::Icon::Information, QStringLiteral("Save changes"), written.message,
                             {MessageBox::Button::Ok}, mHost.window());
        }
    });
}

// Navigation

void DocumentText::Navigate(const surface::Navigation &navigation)
{
    const auto parameters =
        given(&mState, "URL", navigation.url, "Flags", navigation.flags, "TargetFrameName", navigation.targetFrameName,
              "PostData", navigation.postData, "Headers", navigation.headers);
    QString sound;
    trap(module, "Navigate", parameters.locals("Sound", sound), [&] {
        mState.mAllowNavigate = true;
        mScriptAddress = startsWith(navigation.url, "javascript:") && mState.mEditMode == 0;
        if (!mScriptAddress) {
            mState.mLoadingEd = true;
            support::SettingsStore &store = support::SettingsStore::instance();
            sound = store.read(support::SettingsRoot::CurrentUser, navigatingKey, QString());
            if (!sound.isEmpty()) {
                mState.mNavigateSound = sound;
                store.write(support::SettingsRoot::CurrentUser, navigatingKey, QString(), QString());
            }
            ShutDownBeforeReload();
            mState.mRespondToDocumentComplete = true;
        }
        ed.navigate(navigation);
        if (ed.isHidden()) {
            ed.show();
            txtHTMLSource.hide();
        }
    });
}

void DocumentText::ResetNavSound()
{
    trap(module, "ResetNavSound", &mState, [&] {
        if (mState.mNavigateSound.isEmpty()) return;
        support::SettingsStore::instance().write(support::SettingsRoot::CurrentUser, navigatingKey, QString(),
                                                 mState.mNavigateSound);
        mState.mNavigateSound.clear();
    });
}

IHTMLDocument2 *DocumentText::mDoc() const
{
    return mState.mTerminating || mState.mTerminated || !mState.mLoaded ? nullptr : ed.document();
}
