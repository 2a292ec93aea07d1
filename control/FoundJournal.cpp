// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/FoundJournal.h"

#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "core/modMain.h"
#include "engine/changes/ChangeTracker.h"
#include "engine/changes/Journal.h"
#include "engine/changes/JournalFile.h"
#include "engine/html/Parser.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using changes::Journal;
using changes::JournalFile;

namespace {

const QString aside = QStringLiteral(".aside");
constexpr qint64 passingSeconds = 60;

QString problemOf(const Journal &journal, const QString &keptAs)
{
    const char *text = nullptr;
    switch (journal.condition) {
    case Journal::Condition::Foreign:
        text = QT_TRANSLATE_NOOP("FoundJournal", "This file is not a recovery journal. It was kept as %1.");
        break;
    case Journal::Condition::Newer:
        text = QT_TRANSLATE_NOOP("FoundJournal",
                                 "This recovery journal was written by a newer version of the program. It was kept as %1.");
        break;
    case Journal::Condition::Damaged:
        text = QT_TRANSLATE_NOOP("FoundJournal", "This recovery journal is damaged. It was kept as %1.");
        break;
    default: return {};
    }
    return QCoreApplication::translate("FoundJournal", text).arg(QDir::toNativeSeparators(keptAs));
}

/// What a process left that ended while it was giving a name: no journal yet, and no edit was told.
void clearPassing(const QDir &folder)
{
    for (const QFileInfo &info : folder.entryInfoList({u'*' + JournalFile::suffix() + QStringLiteral(".new")}, QDir::Files)) {
        if (info.lastModified().secsTo(QDateTime::currentDateTime()) < passingSeconds) continue;
        if (const auto file = JournalFile::open(info.absoluteFilePath())) file->remove();
    }
}

} // namespace

struct FoundJournal::Parts {
    Journal journal;
    std::unique_ptr<JournalFile> file;
    QDateTime time;
    QString problem;
    QString documentName;
};

FoundJournal::FoundJournal(std::unique_ptr<Parts> parts) : mParts(std::move(parts)) {}
FoundJournal::FoundJournal(FoundJournal &&) noexcept = default;
FoundJournal &FoundJournal::operator=(FoundJournal &&) noexcept = default;
FoundJournal::~FoundJournal() = default;

std::vector<FoundJournal> FoundJournal::find()
{
    std::vector<FoundJournal> found;
    const QDir folder(RecoveryJournal::folder());
    clearPassing(folder);
    const QStringList patterns = {u'*' + JournalFile::suffix(), u'*' + JournalFile::suffix() + aside};
    for (const QFileInfo &info : folder.entryInfoList(patterns, QDir::Files | QDir::Hidden, QDir::Time)) {
        auto parts = std::make_unique<Parts>();
        parts->file = JournalFile::open(info.absoluteFilePath());
        if (!parts->file) continue; // its process runs, or somebody else is looking at it
        parts->time = QDateTime::fromMSecsSinceEpoch(parts->file->lastWritten());
        parts->journal = Journal::read(parts->file->readAll());
        const bool wasAside = info.fileName().endsWith(aside);
        if (!parts->journal.isReadable()) {
            if (wasAside) continue; // told already
            parts->file->rename(info.fileName() + aside);
            parts->problem = problemOf(parts->journal, parts->file->name());
        } else if (!parts->journal.edited) {
            parts->file->remove();
            continue;
        }
        parts->documentName = parts->journal.documentName;
        found.push_back(FoundJournal(std::move(parts)));
    }
    return found;
}

bool FoundJournal::isReadable() const
{
    return mParts->problem.isEmpty();
}

QString FoundJournal::problem() const
{
    return mParts->problem;
}

QString FoundJournal::documentName() const
{
    return mParts->documentName;
}

QDateTime FoundJournal::time() const
{
    return mParts->time;
}

QString FoundJournal::fileName() const
{
    return mParts->file ? mParts->file->name() : QString();
}

namespace {

base::Ref<dom::Document> documentOf(const Journal &journal)
{
    if (journal.state.view != 0 || !journal.state.surfaceAhead) return html::parseDocument(QString::fromUtf8(journal.store));
    base::Ref<dom::Document> document = html::parseDocument(journal.surface);
    changes::ChangeTracker tracker(*document);
    for (const QByteArray &record : journal.records) tracker.play(record, true);
    return document;
}

} // namespace

QString FoundJournal::text() const
{
    const Journal &journal = mParts->journal;
    if (!isReadable()) return {};
    if (journal.state.view != 0 || !journal.state.surfaceAhead) return QString::fromUtf8(journal.store);
    const base::Ref<dom::Document> document = documentOf(journal);
    const QString text = document->documentElement()->outerHTML();
    return journal.state.bodyMode ? modMain::ReturnBody(text) : text;
}

QString FoundJournal::preview(int characters) const
{
    if (!isReadable() || !mParts->file) return {};
    const base::Ref<dom::Document> document = documentOf(mParts->journal);
    if (!document->body()) return {};
    QString text = document->body()->innerText().simplified();
    if (text.size() <= characters) return text;
    text.truncate(std::max(0, characters));
    if (!text.isEmpty() && text.back().isHighSurrogate()) text.chop(1);
    return text + QChar(0x2026);
}

bool FoundJournal::recover(Vellum5 &Control)
{
    if (!isReadable() || !mParts->file) return false;
    return Control.Recovery().recover(mParts->journal, mParts->file);
}

void FoundJournal::discard()
{
    if (mParts->file) mParts->file->remove();
    mParts->file.reset();
}
