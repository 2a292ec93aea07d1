// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/Journal.h"
#include "engine/changes/JournalFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using changes::Journal;
using changes::JournalFile;
using changes::JournalState;
using changes::JournalWriter;
using Condition = changes::Journal::Condition;

class tst_journal : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void givesBackWhatWasWritten();
    void aLoadOfTheSurfaceForgetsEarlierRecords();
    void theStoresTextCanServeTheSurface();
    void editsOfTheStoreAddUp();
    void manyEditsOfALongStoreAreReadQuickly();
    void aTailTornAtAnyByteIsCutAtTheLastWholeEntry();
    void aTailOfZerosIsTorn();
    void aChangedByteInTheMiddleIsDamage();
    void aMissingEntryIsDamage();
    void anEntryThatMakesNoSenseIsDamage();
    void anOlderVersionIsRead();
    void foreignBytesAreRefused_data();
    void foreignBytesAreRefused();
    void aNewerVersionIsRefused();
    void randomBytesDoNoHarm();

    void aNamelessFileLeavesNothing();
    void aNameComesWithAllThatWasWritten();
    void onlyTheOwnerReadsIt();
    void aFileInUseCannotBeOpened();
    void aFileOfAnEndedProcessCanBeOpened();
    void aCopyLivesOnWhenTheFileIsRemoved();
    void aFullDiskLeavesTheFileAsItWas();
    void aFolderThatCannotBeMadeIsAnError();
    void theWorkerSyncs();
};

namespace {

QByteArray textRecord(char letter)
{
    changes::Writer writer;
    changes::Record::writeHead(writer, changes::Kind::TextIn, {}, nullptr, nullptr);
    changes::Primitive p;
    p.op = changes::Op::Text;
    p.node = 7;
    p.offset = 3;
    p.newText = QLatin1Char(letter);
    p.write(writer);
    return writer.take();
}

JournalState someState()
{
    JournalState state;
    state.view = 2;
    state.editMode = 0;
    state.bodyMode = true;
    state.surfaceAhead = true;
    state.sourceAhead = false;
    state.dirty = true;
    state.tracked = true;
    state.baseUrl = QStringLiteral("file:///home/\u4e2d/");
    return state;
}

/// The entries of a journal with one of each kind, the head first.
std::vector<QByteArray> pieces()
{
    JournalWriter writer;
    const QString page = QStringLiteral("<p>page \U0001F600</p>");
    return {JournalWriter::head(),
            writer.document(QStringLiteral("/tmp/\u00e4 \u4e2d.html")),
            writer.store("<p>store \xe2\x82\xac</p>"),
            writer.surface(&page, QStringLiteral("file:///base/")),
            writer.state(someState()),
            writer.record(textRecord('a')),
            writer.storeEdit(3, 5, "STORE"),
            writer.record(textRecord('b'))};
}

QByteArray joined(const std::vector<QByteArray> &pieces)
{
    QByteArray bytes;
    for (const QByteArray &piece : pieces) bytes += piece;
    return bytes;
}

} // namespace

void tst_journal::givesBackWhatWasWritten()
{
    const QByteArray bytes = joined(pieces());
    const Journal journal = Journal::read(bytes);
    QCOMPARE(journal.condition, Condition::Whole);
    QCOMPARE(journal.version, 2u);
    QCOMPARE(journal.documentName, QStringLiteral("/tmp/\u00e4 \u4e2d.html"));
    QCOMPARE(journal.store, QByteArray("<p>STORE \xe2\x82\xac</p>"));
    QVERIFY(journal.hasSurface);
    QCOMPARE(journal.surface, QStringLiteral("<p>page \U0001F600</p>"));
    QCOMPARE(journal.surfaceBaseUrl, QStringLiteral("file:///base/"));
    QVERIFY(journal.state == someState());
    QCOMPARE(journal.records.size(), size_t(2));
    QCOMPARE(journal.records[0], textRecord('a'));
    QCOMPARE(journal.records[1], textRecord('b'));
    QVERIFY(journal.edited);
    QCOMPARE(journal.length, qint64(bytes.size()));
    QCOMPARE(journal.nextSequence, 7u);
}

void tst_journal::aLoadOfTheSurfaceForgetsEarlierRecords()
{
    JournalWriter writer;
    const QString first = QStringLiteral("one"), second = QStringLiteral("two");
    JournalState state;
    state.tracked = true;
    QByteArray bytes = joined({JournalWriter::head(), writer.store("one"), writer.surface(&first, {}), writer.state(state),
                               writer.record(textRecord('a'))});
    QVERIFY(Journal::read(bytes).state.surfaceAhead);
    bytes += writer.surface(&second, {});
    Journal journal = Journal::read(bytes);
    QCOMPARE(journal.surface, second);
    QVERIFY(journal.records.empty());
    QVERIFY(!journal.state.surfaceAhead);
    QVERIFY(journal.edited);
    bytes += writer.record(textRecord('b'));
    journal = Journal::read(bytes);
    QCOMPARE(journal.records.size(), size_t(1));
    QCOMPARE(journal.records[0], textRecord('b'));
}

void tst_journal::theStoresTextCanServeTheSurface()
{
    JournalWriter writer;
    const QByteArray bytes = joined({JournalWriter::head(), writer.store("abc"), writer.storeEdit(1, 1, "\xc3\xa4"),
                                     writer.surface(nullptr, {}), writer.storeEdit(0, 1, "")});
    const Journal journal = Journal::read(bytes);
    QCOMPARE(journal.surface, QStringLiteral("a\u00e4c")); // as the store stood then
    QCOMPARE(journal.store, QByteArray("\xc3\xa4""c"));
}

void tst_journal::editsOfTheStoreAddUp()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    JournalWriter writer;
    QByteArray text("The quick brown fox jumps over the lazy dog");
    QByteArray bytes = JournalWriter::head() + writer.store(text);
    for (int i = 0; i < 500; ++i) {
        const auto at = random.bounded(qint64(text.size()) + 1);
        const auto removed = random.bounded(std::min<qint64>(5, text.size() - at) + 1);
        const QByteArray inserted(random.bounded(6), char('a' + i % 26));
        bytes += writer.storeEdit(uint64_t(at), uint64_t(removed), inserted);
        text.replace(at, removed, inserted);
    }
    const Journal journal = Journal::read(bytes);
    QCOMPARE(journal.condition, Condition::Whole);
    QCOMPARE(journal.store, text);
}

void tst_journal::manyEditsOfALongStoreAreReadQuickly()
{
    JournalWriter writer;
    const QByteArray text(5 << 20, 'x');
    QByteArray bytes = JournalWriter::head() + writer.store(text);
    for (uint64_t i = 0; i < 100000; ++i) bytes += writer.storeEdit((1u << 20) + i, 0, "y");
    const Journal journal = Journal::read(bytes); // moving all behind each edit would be half a terabyte
    QCOMPARE(journal.store, text.left(1 << 20) + QByteArray(100000, 'y') + text.mid(1 << 20));
}

void tst_journal::aTailTornAtAnyByteIsCutAtTheLastWholeEntry()
{
    const std::vector<QByteArray> all = pieces();
    const QByteArray bytes = joined(all);
    qsizetype whole = all[0].size();
    size_t count = 0;
    for (qsizetype length = whole; length <= bytes.size(); ++length) {
        while (count + 1 < all.size() && whole + all[count + 1].size() <= length) whole += all[++count].size();
        const Journal journal = Journal::read(bytes.left(length));
        QCOMPARE(journal.condition, length == whole ? Condition::Whole : Condition::Torn);
        QCOMPARE(journal.length, qint64(whole));
        QCOMPARE(journal.nextSequence, uint32_t(count));
        QCOMPARE(journal.records.size(), size_t(count >= 7 ? 2 : count >= 5 ? 1 : 0));
        QCOMPARE(journal.store.contains("STORE"), count >= 6);
    }
    for (qsizetype length = 0; length < all[0].size(); ++length)
        QCOMPARE(Journal::read(bytes.left(length)).condition, Condition::Foreign);
}

void tst_journal::aTailOfZerosIsTorn()
{
    // What a loss of power leaves where the length of a file reached the disk and its last blocks didn't.
    const QByteArray bytes = joined(pieces());
    const Journal journal = Journal::read(bytes + QByteArray(5000, '\0'));
    QCOMPARE(journal.condition, Condition::Torn);
    QCOMPARE(journal.length, qint64(bytes.size()));
    QCOMPARE(journal.records.size(), size_t(2));
}

void tst_journal::aChangedByteInTheMiddleIsDamage()
{
    const std::vector<QByteArray> all = pieces();
    const QByteArray bytes = joined(all);
    const qsizetype last = bytes.size() - all.back().size();
    for (qsizetype at = all[0].size(); at < bytes.size(); ++at) {
        QByteArray changed = bytes;
        changed[at] = char(changed[at] ^ 0x10);
        // In the last entry it can't be told from a tail that was being written.
        QCOMPARE(Journal::read(changed).condition, at < last ? Condition::Damaged : Condition::Torn);
    }
}

void tst_journal::aMissingEntryIsDamage()
{
    std::vector<QByteArray> all = pieces();
    all.erase(all.begin() + 5);
    QCOMPARE(Journal::read(joined(all)).condition, Condition::Damaged);
}

void tst_journal::anEntryThatMakesNoSenseIsDamage()
{
    JournalWriter writer;
    const QByteArray start = JournalWriter::head() + writer.store("abc");
    JournalWriter edit = writer;
    QCOMPARE(Journal::read(start + edit.storeEdit(4, 0, "x")).condition, Condition::Damaged);
    edit = writer;
    QCOMPARE(Journal::read(start + edit.storeEdit(1, 3, "x")).condition, Condition::Damaged);
    edit = writer;
    QCOMPARE(Journal::read(start + edit.storeEdit(~0ull, 1, "x")).condition, Condition::Damaged);
    edit = writer;
    QCOMPARE(Journal::read(start + edit.record("")).condition, Condition::Damaged);
    edit = writer;
    QCOMPARE(Journal::read(start + edit.record(QByteArray("\x00\x00\x09", 3))).condition, Condition::Damaged);
}

void tst_journal::anOlderVersionIsRead()
{
    QByteArray bytes = joined(pieces());
    bytes.replace(0, JournalWriter::head().size(), JournalWriter::head(1));
    const Journal journal = Journal::read(bytes);
    QCOMPARE(journal.condition, Condition::Whole);
    QCOMPARE(journal.version, 1u);
    QCOMPARE(journal.records.size(), size_t(2));
}

void tst_journal::foreignBytesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("<html><body>a page that somebody put here</body></html>");
    QTest::newRow("part of a head") << JournalWriter::head().left(7);
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("version 0") << JournalWriter::head(0);
}

void tst_journal::foreignBytesAreRefused()
{
    QFETCH(QByteArray, bytes);
    const Journal journal = Journal::read(bytes);
    QCOMPARE(journal.condition, Condition::Foreign);
    QVERIFY(!journal.isReadable());
}

void tst_journal::aNewerVersionIsRefused()
{
    const Journal journal = Journal::read(JournalWriter::head(JournalWriter::version + 1) + "whatever it holds");
    QCOMPARE(journal.condition, Condition::Newer);
    QCOMPARE(journal.version, JournalWriter::version + 1);
    QVERIFY(!journal.isReadable());
}

void tst_journal::randomBytesDoNoHarm()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const QByteArray bytes = joined(pieces());
    for (int i = 0; i < 2000; ++i) {
        QByteArray changed = bytes;
        for (int n = random.bounded(1, 6); n > 0; --n)
            changed[random.bounded(int(JournalWriter::head().size()), int(changed.size()))] = char(random.bounded(256));
        const Journal journal = Journal::read(changed);
        QVERIFY(journal.length <= changed.size());
        QVERIFY(journal.records.size() <= 2);
    }
}

// Files

namespace {

QStringList filesIn(const QTemporaryDir &folder)
{
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
}

} // namespace

void tst_journal::aNamelessFileLeavesNothing()
{
    QTemporaryDir folder;
    QString error;
    const auto file = JournalFile::create(folder.path(), error);
    QVERIFY2(file, qPrintable(error));
    QVERIFY(file->append("bytes", error));
    QCOMPARE(file->readAll(), QByteArray("bytes"));
    QCOMPARE(file->name(), QString());
    QCOMPARE(filesIn(folder), QStringList());
}

void tst_journal::aNameComesWithAllThatWasWritten()
{
    QTemporaryDir folder;
    QString error;
    const auto file = JournalFile::create(folder.filePath(QStringLiteral("a/b")), error);
    QVERIFY2(file, qPrintable(error));
    QVERIFY(file->append("one ", error));
    QVERIFY(file->append("two", error));
    QVERIFY2(file->giveName(error), qPrintable(error));
    QFile there(file->name());
    QVERIFY(there.open(QFile::ReadOnly));
    QCOMPARE(there.readAll(), QByteArray("one two"));
    QVERIFY(file->name().endsWith(JournalFile::suffix()));
    QVERIFY(file->append(" three", error));
    QVERIFY(there.seek(0));
    QCOMPARE(there.readAll(), QByteArray("one two three"));
}

void tst_journal::onlyTheOwnerReadsIt()
{
    QTemporaryDir folder;
    QString error;
    const mode_t old = ::umask(0);
    const QString below = folder.filePath(QStringLiteral("recovery"));
    const auto file = JournalFile::create(below, error);
    const bool named = file && file->giveName(error);
    ::umask(old);
    QVERIFY2(named, qPrintable(error));
    constexpr auto mine = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    QCOMPARE(QFile::permissions(file->name()), mine);
    QCOMPARE(QFile::permissions(below), mine | QFile::ExeOwner | QFile::ExeUser);
}

void tst_journal::aFileInUseCannotBeOpened()
{
    QTemporaryDir folder;
    QString error;
    auto file = JournalFile::create(folder.path(), error);
    QVERIFY(file && file->append("bytes", error) && file->giveName(error));
    const QString name = file->name();
    QVERIFY(!JournalFile::open(name));
    file.reset();
    const auto again = JournalFile::open(name);
    QVERIFY(again);
    QCOMPARE(again->readAll(), QByteArray("bytes"));
    QVERIFY(!JournalFile::open(name));
    QVERIFY(!JournalFile::open(folder.filePath(QStringLiteral("none.journal"))));
}

void tst_journal::aFileOfAnEndedProcessCanBeOpened()
{
    QTemporaryDir folder;
    int ends[2];
    QCOMPARE(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        QString error;
        const auto file = JournalFile::create(folder.path(), error);
        const bool fine = file && file->append("told", error) && file->giveName(error);
        if (::write(ends[1], fine ? "y" : "n", 1) != 1) ::_exit(1);
        for (;;) ::pause();
    }
    char answer = 0;
    QCOMPARE(qint64(::read(ends[0], &answer, 1)), qint64(1));
    QCOMPARE(answer, 'y');
    const QStringList names = filesIn(folder);
    QCOMPARE(names.size(), 1);
    QVERIFY(!JournalFile::open(folder.filePath(names[0])));
    QCOMPARE(::kill(child, SIGKILL), 0);
    QCOMPARE(::waitpid(child, nullptr, 0), child);
    const auto file = JournalFile::open(folder.filePath(names[0]));
    QVERIFY(file);
    QCOMPARE(file->readAll(), QByteArray("told"));
    ::close(ends[0]);
    ::close(ends[1]);
}

void tst_journal::aCopyLivesOnWhenTheFileIsRemoved()
{
    QTemporaryDir folder;
    QString error;
    auto file = JournalFile::create(folder.path(), error);
    QVERIFY(file && file->append("one", error) && file->giveName(error));
    auto copy = file->copy(error);
    QVERIFY(copy);
    file->remove();
    QCOMPARE(filesIn(folder), QStringList());
    QVERIFY(copy->append(" two", error) && copy->giveName(error));
    QCOMPARE(filesIn(folder).size(), 1);
    QCOMPARE(copy->readAll(), QByteArray("one two"));
    // One whose name was taken away can have another one too.
    copy->remove();
    QVERIFY2(copy->giveName(error), qPrintable(error));
    QCOMPARE(filesIn(folder).size(), 1);
    QVERIFY(copy->append(" three", error));
    QVERIFY(!JournalFile::open(copy->name()));
    const QString name = copy->name();
    copy.reset();
    QCOMPARE(JournalFile::open(name)->readAll(), QByteArray("one two three"));
}

void tst_journal::aFullDiskLeavesTheFileAsItWas()
{
    QTemporaryDir folder;
    QString error;
    const auto file = JournalFile::create(folder.path(), error);
    QVERIFY(file && file->append(QByteArray(1000, 'a'), error) && file->giveName(error));
    rlimit old{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit narrow = old;
    narrow.rlim_cur = 1500;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &narrow), 0);
    const bool first = file->append(QByteArray(1000, 'b'), error);
    const bool second = file->append(QByteArray(400, 'c'), error);
    QString unused;
    const auto copy = file->copy(unused);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &old), 0);
    QVERIFY(!first);
    QVERIFY(!error.isEmpty());
    QVERIFY(second);
    QVERIFY(copy);
    QCOMPARE(file->size(), qint64(1400));
    QCOMPARE(QFileInfo(file->name()).size(), qint64(1400));
    QCOMPARE(file->readAll(), QByteArray(1000, 'a') + QByteArray(400, 'c'));
}

void tst_journal::aFolderThatCannotBeMadeIsAnError()
{
    QString error;
    QVERIFY(!JournalFile::create(QStringLiteral("/dev/null/recovery"), error));
    QVERIFY(!error.isEmpty());
}

void tst_journal::theWorkerSyncs()
{
    QTemporaryDir folder;
    QString error;
    const auto file = JournalFile::create(folder.path(), error);
    QVERIFY(file && file->append("bytes", error) && file->giveName(error));
    const int before = JournalFile::syncsDone();
    file->sync();
    QTRY_COMPARE(JournalFile::syncsDone(), before + 1);
    file->sync();
    QTRY_COMPARE(JournalFile::syncsDone(), before + 2);
}

QTEST_GUILESS_MAIN(tst_journal)
#include "tst_journal.moc"
