// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/Record.h"

#include <QByteArray>
#include <QString>
#include <vector>

/// What a recovery journal holds, as bytes. A journal is what a control needs to stand again where it stood: the text of
/// the store, the text that the surface was loaded with, and everything that was done to either since.
///
///     journal = magic version entry*
///     magic   = "VKitJrnl"
///     version = 4 bytes
///     entry   = length sequence checksum content      4 bytes each, then `length` bytes
///     content = type, then what the type says; below
///
/// Numbers of 4 bytes have the lowest byte first, the others are those of a record. Sequences count from 0 without a gap;
/// the checksum (CRC-32) covers length, sequence and content. An entry is written by one call, so that what a kill leaves
/// is whole entries, and what a loss of power leaves is whole entries and a tail that no checksum fits.
namespace changes {

/// The state of a control, as far as it says where the text is and how it is shown.
struct JournalState {
    uint8_t view = 0;          ///< 0 visual, 1 source, 2 preview
    uint8_t editMode = 1;      ///< 0 browse, 1 edit, 2 disabled
    bool bodyMode = false;     ///< the store holds a body, the surface a page around it
    bool surfaceAhead = false; ///< the surface was edited since its load
    bool sourceAhead = false;  ///< the store was edited since it was posted
    bool dirty = false;
    bool tracked = false; ///< a record makes the surface ahead
    QString baseUrl;      ///< of the next load
    friend bool operator==(const JournalState &, const JournalState &) = default;
};

class JournalWriter
{
public:
    /// 2: records name their step. Those of version 1 don't, and read as before.
    static constexpr uint32_t version = 2;
    static constexpr uint32_t oldestVersion = 1;
    static QByteArray head(uint32_t version = JournalWriter::version);

    /// The entries, in their order; each call counts the sequence on.
    QByteArray document(const QString &name);
    /// The whole text of the store.
    QByteArray store(const QByteArray &utf8);
    /// One edit of it: at `position` `removed` bytes go and `inserted` comes; all in bytes of UTF-8.
    QByteArray storeEdit(uint64_t position, uint64_t removed, const QByteArray &inserted);
    /// A load of the surface: the text, or null where it is the store's; what was done to an earlier one is past.
    QByteArray surface(const QString *text, const QString &baseUrl);
    QByteArray record(const QByteArray &record);
    QByteArray state(const JournalState &state);

    uint32_t sequence() const { return mSequence; }
    /// Goes on where another has stopped.
    void setSequence(uint32_t sequence) { mSequence = sequence; }

private:
    QByteArray entry(Writer &content);
    uint32_t mSequence = 0;
};

/// A journal read back.
struct Journal {
    enum class Condition {
        Whole,
        Torn,    ///< the tail was cut at the last whole entry; all before it counts
        Foreign, ///< no journal at all
        Newer,   ///< of a version that isn't known here
        Damaged, ///< bytes in the middle are not what was written
    };
    Condition condition = Condition::Foreign;
    uint32_t version = 0;
    bool isReadable() const { return condition == Condition::Whole || condition == Condition::Torn; }

    QString documentName;
    QByteArray store; ///< UTF-8
    bool hasSurface = false;
    QString surface; ///< the text that it was loaded with
    QString surfaceBaseUrl;
    std::vector<QByteArray> records; ///< since that load
    JournalState state;
    bool edited = false; ///< something was done since the journal was begun

    qint64 length = 0; ///< of head and whole entries, in bytes
    uint32_t nextSequence = 0;

    static Journal read(const QByteArray &bytes);
};

} // namespace changes
