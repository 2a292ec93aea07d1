// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

namespace changes {

/// The file of one journal, open and locked for as long as the object lives. The lock is the file's own, held by the
/// kernel for this process: it goes with the process, however that ends, and no number of a process that ended long ago
/// can be taken for it. Only the owner may read the file.
///
/// A file may be nameless: written, but in no folder, and gone with the process. So a document that nobody edits leaves
/// nothing behind, and the first edit of a large one only has to give a name.
class JournalFile
{
public:
    /// A nameless file in a folder, which is made if it isn't there. Null, with the reason in `error`, if it can't be.
    static std::unique_ptr<JournalFile> create(const QString &folder, QString &error);
    /// One that is there, to be gone on with; null if it isn't, or if a process (this one too) holds its lock.
    static std::unique_ptr<JournalFile> open(const QString &name);
    ~JournalFile();
    JournalFile(const JournalFile &) = delete;
    JournalFile &operator=(const JournalFile &) = delete;

    /// The absolute name; empty while nameless.
    const QString &name() const { return mName; }
    /// Appends, by one call. False, with the file as it was before and the reason in `error`, if the bytes don't fit.
    bool append(const QByteArray &bytes, QString &error);
    /// Gives a nameless file a name of its own.
    bool giveName(QString &error);
    /// A nameless file of the same content.
    std::unique_ptr<JournalFile> copy(QString &error) const;
    /// Takes the name away: what isn't written elsewhere is lost when the object goes.
    void remove();
    /// Another name in the same folder.
    bool rename(const QString &name);

    qint64 size() const { return mSize; }
    void truncate(qint64 size);
    QByteArray readAll() const;
    /// Milliseconds since the epoch.
    qint64 lastWritten() const;
    /// Has a worker bring what was written to the disk; returns at once.
    void sync();
    /// How many such orders the worker has carried out, for all files.
    static int syncsDone();

    /// What a journal's file name ends in.
    static QString suffix() { return QStringLiteral(".journal"); }

private:
    JournalFile(int descriptor, const QString &folder);
    int mDescriptor;
    QString mFolder;
    QString mName;
    qint64 mSize = 0;
    bool mNameSynced = false;
};

} // namespace changes
