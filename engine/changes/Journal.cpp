// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/Journal.h"

#include <array>
#include <cstring>

namespace changes {

namespace {

constexpr char magic[] = "VKitJrnl";
constexpr qsizetype magicLength = 8;
constexpr qsizetype headLength = magicLength + 4;
constexpr qsizetype frameLength = 12;

enum class Type : uint8_t { Document = 1, Store, StoreEdit, Surface, Record, State };

/// CRC-32 of eight bytes at a time: the texts in front may be megabytes.
class Crc
{
public:
    void add(const char *bytes, qsizetype count)
    {
        const auto &t = tables();
        const auto *at = reinterpret_cast<const uint8_t *>(bytes);
        for (; count >= 8; at += 8, count -= 8) {
            const uint32_t low = mValue ^ (uint32_t(at[0]) | uint32_t(at[1]) << 8 | uint32_t(at[2]) << 16 | uint32_t(at[3]) << 24);
            mValue = t[7][low & 0xff] ^ t[6][low >> 8 & 0xff] ^ t[5][low >> 16 & 0xff] ^ t[4][low >> 24] ^ t[3][at[4]] ^
                     t[2][at[5]] ^ t[1][at[6]] ^ t[0][at[7]];
        }
        for (; count > 0; ++at, --count) mValue = t[0][(mValue ^ *at) & 0xff] ^ mValue >> 8;
    }
    uint32_t value() const { return ~mValue; }

private:
    using Tables = std::array<std::array<uint32_t, 256>, 8>;
    static const Tables &tables()
    {
        static const Tables tables = [] {
            Tables t;
            for (uint32_t i = 0; i < 256; ++i) {
                uint32_t value = i;
                for (int bit = 0; bit < 8; ++bit) value = value >> 1 ^ (value & 1 ? 0xEDB88320u : 0);
                t[0][i] = value;
            }
            for (size_t n = 1; n < 8; ++n)
                for (size_t i = 0; i < 256; ++i) t[n][i] = t[0][t[n - 1][i] & 0xff] ^ t[n - 1][i] >> 8;
            return t;
        }();
        return tables;
    }
    uint32_t mValue = ~0u;
};

void write32(char *to, uint32_t value)
{
    for (int i = 0; i < 4; ++i) to[i] = char(value >> 8 * i);
}

uint32_t read32(const char *from)
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= uint32_t(uint8_t(from[i])) << 8 * i;
    return value;
}

uint32_t checksum(const char *frame, const char *content, qsizetype length)
{
    Crc crc;
    crc.add(frame, 8);
    crc.add(content, length);
    return crc.value();
}

void writeBytes(Writer &to, const QByteArray &bytes)
{
    to.number(uint64_t(bytes.size()));
    to.append(bytes);
}

QByteArray readBytes(Reader &from)
{
    return from.bytes(from.number());
}

/// A text under many small edits that lie near each other: bytes move only as far as the place of the edit does.
class GapText
{
public:
    void set(const QByteArray &text)
    {
        mBefore = text;
        mAfter.clear();
    }
    bool replace(uint64_t position, uint64_t removed, const QByteArray &inserted)
    {
        const auto size = uint64_t(mBefore.size() + mAfter.size());
        if (position > size || removed > size - position) return false;
        moveGap(qsizetype(position));
        mAfter.chop(qsizetype(removed));
        mBefore.append(inserted);
        return true;
    }
    QByteArray text() const
    {
        QByteArray all = mBefore;
        all.reserve(mBefore.size() + mAfter.size());
        for (qsizetype i = mAfter.size(); i-- > 0;) all.append(mAfter[i]);
        return all;
    }

private:
    void moveGap(qsizetype position)
    {
        for (; mBefore.size() > position; mBefore.chop(1)) mAfter.append(mBefore.back());
        for (; mBefore.size() < position; mAfter.chop(1)) mBefore.append(mAfter.back());
    }
    QByteArray mBefore;
    QByteArray mAfter; // the other way round
};

/// Puts the entries of a journal together.
class Contents
{
public:
    explicit Contents(Journal &journal) : mJournal(journal) {}
    bool take(const QByteArray &content)
    {
        Reader from(content);
        const auto type = Type(from.byte());
        bool fits = true;
        switch (type) {
        case Type::Document: mJournal.documentName = from.string(); break;
        case Type::Store: mStore.set(readBytes(from)); break;
        case Type::StoreEdit: fits = takeStoreEdit(from); break;
        case Type::Surface: takeSurface(from); break;
        case Type::Record: fits = takeRecord(content.mid(1)); return fits;
        case Type::State: takeState(from); break;
        default: return false;
        }
        return fits && !from.failed() && from.atEnd();
    }
    void finish() { mJournal.store = mStore.text(); }

private:
    bool takeStoreEdit(Reader &from)
    {
        const uint64_t position = from.number();
        const uint64_t removed = from.number();
        const QByteArray inserted = readBytes(from);
        mJournal.edited = true;
        if (mJournal.state.view == 1) mJournal.state.sourceAhead = true;
        return !from.failed() && mStore.replace(position, removed, inserted);
    }
    void takeSurface(Reader &from)
    {
        const bool own = from.byte() != 0;
        mJournal.surfaceBaseUrl = from.string();
        mJournal.surface = QString::fromUtf8(own ? readBytes(from) : mStore.text());
        mJournal.hasSurface = true;
        mJournal.records.clear();
        mJournal.state.surfaceAhead = false;
        mJournal.state.dirty = false;
    }
    bool takeRecord(const QByteArray &bytes)
    {
        Record record;
        if (!Record::read(bytes, record)) return false;
        mJournal.records.push_back(bytes);
        mJournal.edited = true;
        if (mJournal.state.tracked) mJournal.state.surfaceAhead = mJournal.state.dirty = true;
        return true;
    }
    void takeState(Reader &from)
    {
        JournalState &state = mJournal.state;
        state.view = from.byte();
        state.editMode = from.byte();
        const uint8_t flags = from.byte();
        state.bodyMode = flags & 1;
        state.surfaceAhead = flags & 2;
        state.sourceAhead = flags & 4;
        state.dirty = flags & 8;
        state.tracked = flags & 16;
        state.baseUrl = from.string();
        if (state.view > 2 || state.editMode > 2) from.fail();
    }

    Journal &mJournal;
    GapText mStore;
};

/// The content of the whole entry at a place; null if there is none.
QByteArray entryAt(const QByteArray &bytes, qsizetype at, uint32_t sequence)
{
    if (bytes.size() - at < frameLength) return {};
    const char *frame = bytes.constData() + at;
    const uint32_t length = read32(frame);
    if (length == 0 || qsizetype(length) > bytes.size() - at - frameLength || read32(frame + 4) != sequence) return {};
    if (read32(frame + 8) != checksum(frame, frame + frameLength, length)) return {};
    return QByteArray::fromRawData(frame + frameLength, length);
}

/// Whether a later entry stands whole behind a place that holds none: then it is no tail that was being written.
bool entryFollows(const QByteArray &bytes, qsizetype at, uint32_t sequence)
{
    for (++at; bytes.size() - at > frameLength; ++at) {
        const uint32_t found = read32(bytes.constData() + at + 4);
        if (found < sequence || found - sequence > uint64_t(bytes.size())) continue;
        if (!entryAt(bytes, at, found).isNull()) return true;
    }
    return false;
}

} // namespace

// Writing

QByteArray JournalWriter::head(uint32_t version)
{
    QByteArray bytes(magic, magicLength);
    bytes.resize(headLength);
    write32(bytes.data() + magicLength, version);
    return bytes;
}

QByteArray JournalWriter::entry(Writer &content)
{
    const QByteArray bytes = content.take();
    QByteArray whole(frameLength, Qt::Uninitialized);
    whole.reserve(frameLength + bytes.size());
    char *frame = whole.data();
    write32(frame, uint32_t(bytes.size()));
    write32(frame + 4, mSequence++);
    write32(frame + 8, checksum(frame, bytes.constData(), bytes.size()));
    whole.append(bytes);
    return whole;
}

QByteArray JournalWriter::document(const QString &name)
{
    Writer content;
    content.byte(uint8_t(Type::Document));
    content.string(name);
    return entry(content);
}

QByteArray JournalWriter::store(const QByteArray &utf8)
{
    Writer content;
    content.byte(uint8_t(Type::Store));
    writeBytes(content, utf8);
    return entry(content);
}

QByteArray JournalWriter::storeEdit(uint64_t position, uint64_t removed, const QByteArray &inserted)
{
    Writer content;
    content.byte(uint8_t(Type::StoreEdit));
    content.number(position);
    content.number(removed);
    writeBytes(content, inserted);
    return entry(content);
}

QByteArray JournalWriter::surface(const QString *text, const QString &baseUrl)
{
    Writer content;
    content.byte(uint8_t(Type::Surface));
    content.byte(text != nullptr);
    content.string(baseUrl);
    if (text) writeBytes(content, text->toUtf8());
    return entry(content);
}

QByteArray JournalWriter::record(const QByteArray &record)
{
    Writer content;
    content.byte(uint8_t(Type::Record));
    content.append(record);
    return entry(content);
}

QByteArray JournalWriter::state(const JournalState &state)
{
    Writer content;
    content.byte(uint8_t(Type::State));
    content.byte(state.view);
    content.byte(state.editMode);
    content.byte(uint8_t((state.bodyMode ? 1 : 0) | (state.surfaceAhead ? 2 : 0) | (state.sourceAhead ? 4 : 0) |
                         (state.dirty ? 8 : 0) | (state.tracked ? 16 : 0)));
    content.string(state.baseUrl);
    return entry(content);
}

// Reading

Journal Journal::read(const QByteArray &bytes)
{
    Journal journal;
    if (bytes.size() < headLength || std::memcmp(bytes.constData(), magic, magicLength) != 0) return journal;
    journal.version = read32(bytes.constData() + magicLength);
    if (journal.version < JournalWriter::oldestVersion || journal.version > JournalWriter::version) {
        journal.condition = journal.version > JournalWriter::version ? Condition::Newer : Condition::Foreign;
        return journal;
    }
    journal.length = headLength;
    Contents contents(journal);
    bool sound = true;
    while (sound && journal.length < bytes.size()) {
        const QByteArray content = entryAt(bytes, journal.length, journal.nextSequence);
        if (content.isNull()) break;
        sound = contents.take(content);
        journal.length += frameLength + content.size();
        ++journal.nextSequence;
    }
    contents.finish();
    if (!sound || (journal.length < bytes.size() && entryFollows(bytes, journal.length, journal.nextSequence)))
        journal.condition = Condition::Damaged;
    else
        journal.condition = journal.length < bytes.size() ? Condition::Torn : Condition::Whole;
    return journal;
}

} // namespace changes
