// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LineTable.h"

#include <QByteArray>
#include <QFile>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <vector>

namespace support {

namespace {

/// Reads numbers off a stretch of bytes. Beyond its end everything is 0 and `failed` is set.
class Cursor
{
public:
    explicit Cursor(const QByteArray &bytes) : mBytes(bytes) {}

    bool atEnd() const { return mFailed || mAt >= mBytes.size(); }
    bool failed() const { return mFailed; }
    qsizetype position() const { return mAt; }
    void moveTo(qsizetype position)
    {
        if (position < 0 || position > mBytes.size())
            mFailed = true;
        else
            mAt = position;
    }
    void skip(quint64 count)
    {
        if (count > quint64(mBytes.size() - mAt))
            mFailed = true;
        else
            mAt += qsizetype(count);
    }
    template <class T> T read()
    {
        T value{};
        if (mFailed || qsizetype(sizeof(T)) > mBytes.size() - mAt) {
            mFailed = true;
            return value;
        }
        std::memcpy(&value, mBytes.constData() + mAt, sizeof(T));
        mAt += sizeof(T);
        return value;
    }
    quint64 offset(bool isLong) { return isLong ? read<quint64>() : read<quint32>(); }
    quint64 unsignedLeb()
    {
        quint64 value = 0;
        for (int shift = 0;; shift += 7) {
            const quint8 byte = read<quint8>();
            if (shift < 64) value |= quint64(byte & 0x7F) << shift;
            if (!(byte & 0x80)) return value;
        }
    }
    qint64 signedLeb()
    {
        qint64 value = 0;
        for (int shift = 0;;) {
            const quint8 byte = read<quint8>();
            if (shift < 64) value |= qint64(quint64(byte & 0x7F) << shift);
            shift += 7;
            if (byte & 0x80) continue;
            if (shift < 64 && (byte & 0x40)) value |= qint64(~quint64(0) << shift);
            return value;
        }
    }
    QByteArray string()
    {
        const qsizetype end = mFailed ? -1 : mBytes.indexOf('\0', mAt);
        if (end < 0) {
            mFailed = true;
            return {};
        }
        const QByteArray text = mBytes.mid(mAt, end - mAt);
        mAt = end + 1;
        return text;
    }

private:
    QByteArray mBytes;
    qsizetype mAt = 0;
    bool mFailed = false;
};

QByteArray fileName(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

/// The sections that a line table consists of; views of the mapped file.
struct Sections
{
    QByteArray lines, lineStrings, strings;
};

QByteArray viewOf(const QByteArray &image, quint64 offset, quint64 size)
{
    const quint64 whole = quint64(image.size());
    if (offset > whole || size > whole - offset) return {};
    return QByteArray::fromRawData(image.constData() + offset, qsizetype(size));
}

Sections findSections(const QByteArray &image)
{
    Sections sections;
    Cursor cursor(image);
    const auto header = cursor.read<ElfW(Ehdr)>();
    constexpr quint8 ownByteOrder = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? ELFDATA2LSB : ELFDATA2MSB;
    if (cursor.failed() || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != (sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32) ||
        header.e_ident[EI_DATA] != ownByteOrder)
        return sections;
    std::vector<ElfW(Shdr)> table;
    cursor.moveTo(qsizetype(header.e_shoff));
    for (int i = 0; i < header.e_shnum && !cursor.failed(); ++i)
        table.push_back(cursor.read<ElfW(Shdr)>());
    if (header.e_shstrndx >= table.size()) return sections;
    const auto &nameSection = table[header.e_shstrndx];
    const QByteArray names = viewOf(image, nameSection.sh_offset, nameSection.sh_size);
    for (const auto &section : table) {
        if (section.sh_flags & SHF_COMPRESSED) continue;
        Cursor name(names);
        name.moveTo(qsizetype(section.sh_name));
        const QByteArray text = name.string();
        const QByteArray content = viewOf(image, section.sh_offset, section.sh_size);
        if (text == ".debug_line")
            sections.lines = content;
        else if (text == ".debug_line_str")
            sections.lineStrings = content;
        else if (text == ".debug_str")
            sections.strings = content;
    }
    return sections;
}

/// Opcodes, forms and content types of the format, as far as they are needed.
enum : quint64 {
    FormData2 = 0x05,
    FormData4 = 0x06,
    FormData8 = 0x07,
    FormString = 0x08,
    FormBlock = 0x09,
    FormData1 = 0x0B,
    FormStrp = 0x0E,
    FormUdata = 0x0F,
    FormData16 = 0x1E,
    FormLineStrp = 0x1F,
    ContentPath = 1
};
enum : quint8 {
    Copy = 1,
    AdvancePc,
    AdvanceLine,
    SetFile,
    SetColumn,
    NegateStatement,
    SetBasicBlock,
    ConstAddPc,
    FixedAdvancePc
};
enum : quint8 { EndSequence = 1, SetAddress = 2 };

/// One compilation unit's part of the table.
class LineUnit
{
public:
    LineUnit(const Sections &sections, const QByteArray &bytes, bool isLong)
        : mSections(sections), mCursor(bytes), mIsLong(isLong)
    {
    }

    /// Runs the unit's program if the file is one of its own. The line at `address`, if it lies in that file.
    std::optional<int> find(quint64 address, const QByteArray &file)
    {
        if (!readHeader(file)) return {};
        return run(address);
    }

private:
    bool readHeader(const QByteArray &file)
    {
        if (mCursor.read<quint16>() != 5 || mCursor.read<quint8>() != sizeof(void *)) return false;
        mCursor.skip(1); // size of a segment selector
        const quint64 headerLength = mCursor.offset(mIsLong);
        const qsizetype program = mCursor.position() + qsizetype(headerLength);
        mInstructionLength = mCursor.read<quint8>();
        mCursor.skip(2); // operations per instruction, is a row a statement by default
        mLineBase = mCursor.read<qint8>();
        mLineRange = mCursor.read<quint8>();
        const quint8 opcodeBase = mCursor.read<quint8>();
        for (int i = 1; i < opcodeBase; ++i)
            mArguments.push_back(mCursor.read<quint8>());
        readEntries(nullptr);
        std::vector<QByteArray> files;
        readEntries(&files);
        mWanted.resize(files.size());
        bool isOurs = false;
        for (std::size_t i = 0; i < files.size(); ++i) {
            mWanted[i] = fileName(files[i]) == file;
            isOurs = isOurs || mWanted[i];
        }
        mCursor.moveTo(program);
        return isOurs && !mCursor.failed() && mLineRange != 0 && opcodeBase > FixedAdvancePc;
    }

    void readEntries(std::vector<QByteArray> *paths)
    {
        std::vector<std::pair<quint64, quint64>> formats; // content, form
        const int formatCount = mCursor.read<quint8>();
        for (int i = 0; i < formatCount; ++i) {
            const quint64 content = mCursor.unsignedLeb();
            formats.emplace_back(content, mCursor.unsignedLeb());
        }
        const quint64 count = mCursor.unsignedLeb();
        for (quint64 i = 0; i < count && !mCursor.failed(); ++i) {
            for (const auto &[content, form] : formats) {
                const QByteArray value = readForm(form);
                if (content == ContentPath && paths) paths->push_back(value);
            }
        }
    }

    QByteArray readForm(quint64 form)
    {
        switch (form) {
        case FormString:
            return mCursor.string();
        case FormLineStrp:
            return stringAt(mSections.lineStrings);
        case FormStrp:
            return stringAt(mSections.strings);
        case FormData1:
            mCursor.skip(1);
            break;
        case FormData2:
            mCursor.skip(2);
            break;
        case FormData4:
            mCursor.skip(4);
            break;
        case FormData8:
            mCursor.skip(8);
            break;
        case FormData16:
            mCursor.skip(16);
            break;
        case FormUdata:
            mCursor.unsignedLeb();
            break;
        case FormBlock:
            mCursor.skip(mCursor.unsignedLeb());
            break;
        default:
            mCursor.moveTo(-1); // unknown: the rest can't be read
        }
        return {};
    }

    QByteArray stringAt(const QByteArray &section)
    {
        Cursor cursor(section);
        cursor.moveTo(qsizetype(mCursor.offset(mIsLong)));
        return cursor.string();
    }

    void reset() { mRow = mLast = Row(), mHasLast = false; }

    /// A row ends the stretch of the one before. True if that holds the address.
    bool addRow(quint64 address)
    {
        const bool found = mHasLast && mLast.address <= address && address < mRow.address;
        if (found) return true;
        mLast = mRow;
        mHasLast = true;
        return false;
    }

    void advance(quint64 operations) { mRow.address += operations * mInstructionLength; }

    std::optional<int> answer() const
    {
        if (mLast.file >= mWanted.size() || !mWanted[mLast.file] || mLast.line <= 0) return {};
        return int(mLast.line);
    }

    std::optional<int> run(quint64 address)
    {
        reset();
        while (!mCursor.atEnd()) {
            const quint8 opcode = mCursor.read<quint8>();
            bool isRow = false, isEnd = false;
            if (opcode > mArguments.size()) {
                const int adjusted = opcode - int(mArguments.size()) - 1;
                advance(quint64(adjusted / mLineRange));
                mRow.line += mLineBase + adjusted % mLineRange;
                isRow = true;
            } else if (opcode == 0) {
                isRow = isEnd = runExtended();
            } else {
                isRow = runStandard(opcode);
            }
            if (isRow && addRow(address)) return answer();
            if (isEnd) reset();
        }
        return {};
    }

    /// True at the end of a sequence.
    bool runExtended()
    {
        const quint64 length = mCursor.unsignedLeb();
        const qsizetype start = mCursor.position();
        const quint8 opcode = mCursor.read<quint8>();
        if (opcode == SetAddress) mRow.address = mCursor.read<quintptr>();
        mCursor.moveTo(start);
        mCursor.skip(length);
        return opcode == EndSequence;
    }

    /// True if the opcode makes a row.
    bool runStandard(quint8 opcode)
    {
        switch (opcode) {
        case Copy:
            return true;
        case AdvancePc:
            advance(mCursor.unsignedLeb());
            break;
        case AdvanceLine:
            mRow.line += mCursor.signedLeb();
            break;
        case SetFile:
            mRow.file = mCursor.unsignedLeb();
            break;
        case ConstAddPc:
            advance(quint64((255 - int(mArguments.size()) - 1) / mLineRange));
            break;
        case FixedAdvancePc:
            mRow.address += mCursor.read<quint16>();
            break;
        default:
            for (int i = 0; i < mArguments[opcode - 1]; ++i)
                mCursor.unsignedLeb();
        }
        return false;
    }

    struct Row
    {
        quint64 address = 0, file = 1;
        qint64 line = 1;
    };

    const Sections &mSections;
    Cursor mCursor;
    bool mIsLong;
    quint8 mInstructionLength = 1, mLineRange = 0;
    qint8 mLineBase = 0;
    std::vector<quint8> mArguments; // of the standard opcodes, from 1 on
    std::vector<bool> mWanted;      // by number of the file
    Row mRow, mLast;
    bool mHasLast = false;
};

std::optional<int> findLine(const Sections &sections, quint64 address, const QByteArray &file)
{
    Cursor cursor(sections.lines);
    while (!cursor.atEnd()) {
        quint64 length = cursor.read<quint32>();
        const bool isLong = length == 0xFFFFFFFFu;
        if (isLong) length = cursor.read<quint64>();
        const QByteArray unit = viewOf(sections.lines, quint64(cursor.position()), length);
        cursor.skip(length);
        if (cursor.failed()) break;
        if (const auto line = LineUnit(sections, unit, isLong).find(address, file)) return line;
    }
    return {};
}

} // namespace

std::optional<int> lineInFile(const void *returnAddress, const char *file)
{
    Dl_info info;
    link_map *module = nullptr;
    if (!dladdr1(returnAddress, &info, reinterpret_cast<void **>(&module), RTLD_DL_LINKMAP) || !module) return {};
    // The program itself has no name in the list.
    QFile image(module->l_name && *module->l_name ? QFile::decodeName(module->l_name)
                                                  : QStringLiteral("/proc/self/exe"));
    if (!image.open(QIODevice::ReadOnly)) return {};
    const uchar *bytes = image.map(0, image.size());
    if (!bytes) return {};
    const QByteArray view = QByteArray::fromRawData(reinterpret_cast<const char *>(bytes), image.size());
    // The call ends in front of where it returns to.
    const quint64 address = quint64(reinterpret_cast<quintptr>(returnAddress)) - quint64(module->l_addr) - 1;
    return findLine(findSections(view), address, fileName(file));
}

} // namespace support
