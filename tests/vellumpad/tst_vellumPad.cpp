// SPDX-License-Identifier: GPL-3.0-or-later
#include "vellumpad/MainWindow.h"

#include <VellumKit5/Recovery>
#include <VellumKit5/Settings>

#include <QAccessible>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

/// VellumPad as somebody uses it: its menus, keys, dialogs and files.
class tst_vellumPad : public QObject
{
    Q_OBJECT

    QTemporaryDir mFolder;
    std::unique_ptr<MainWindow> mWindow;
    QStringList mAsked; // the texts of the boxes that came
    QString mProblem;

    QString path(const QString &name) const { return mFolder.filePath(name); }
    void write(const QString &name, const QByteArray &bytes)
    {
        QFile file(path(name));
        QVERIFY(file.open(QFile::WriteOnly));
        file.write(bytes);
    }
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Another program writes the file, later than anybody could before.
    void writeMeanwhile(const QString &name, const QByteArray &bytes)
    {
        write(name, bytes);
        QFile file(path(name));
        QVERIFY(file.open(QFile::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(100), QFileDevice::FileModificationTime));
    }

    MainWindow &window() { return *mWindow; }
    QAction *action(const QString &name) { return mWindow->findChild<QAction *>(name); }
    void settle()
    {
        for (int i = 0; i < 5 || (i < 1000 && window().control().Loading() && window().control().EditView() == 0); ++i)
            QApplication::processEvents();
    }
    void open(const QString &name)
    {
        QVERIFY(window().openFile(path(name)));
        settle();
        QVERIFY(!window().isWindowModified());
    }
    void keys(const QKeySequence &sequence)
    {
        QWidget *target = QApplication::focusWidget();
        const QKeyCombination key = sequence[0];
        QTest::keyClick(target ? target : mWindow.get(), key.key(), key.keyboardModifiers());
        settle();
    }
    void type(const QString &text)
    {
        QVERIFY(QApplication::focusWidget());
        QTest::keyClicks(QApplication::focusWidget(), text);
        settle();
    }
    /// What to do in the modal windows that come, one after the other.
    void answer(const QList<std::function<void(QWidget &)>> &answers)
    {
        auto *timer = new QTimer(this);
        auto left = std::make_shared<QList<std::function<void(QWidget &)>>>(answers);
        connect(timer, &QTimer::timeout, this, [this, timer, left] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || mWorked.contains(modal)) return;
            if (left->isEmpty()) {
                mProblem = QStringLiteral("nobody expected %1").arg(modal->windowTitle());
                modal->close();
                return;
            }
            const auto next = left->takeFirst();
            if (auto *box = qobject_cast<QMessageBox *>(modal)) mAsked << box->text();
            // Not from here: a timer doesn't fire while it fires, and this window may open another one.
            mWorked << modal;
            QTimer::singleShot(0, modal, [this, modal, next] {
                next(*modal);
                mWorked.removeAll(modal);
            });
        });
        timer->start(5);
        mAnswering = timer;
        mLeft = left;
    }
    /// Presses a button of a message box by the keyboard or the mouse.
    static std::function<void(QWidget &)> press(QMessageBox::StandardButton button)
    {
        return [button](QWidget &modal) {
            auto *box = qobject_cast<QMessageBox *>(&modal);
            QVERIFY(box && box->button(button));
            QTest::mouseClick(box->button(button), Qt::LeftButton);
        };
    }
    static std::function<void(QWidget &)> name(const QString &file)
    {
        return [file](QWidget &modal) {
            auto *dialog = qobject_cast<QFileDialog *>(&modal);
            QVERIFY(dialog);
            auto *edit = dialog->findChild<QLineEdit *>();
            QVERIFY(edit);
            edit->setText(file);
            auto *buttons = dialog->findChild<QDialogButtonBox *>();
            QVERIFY(buttons);
            for (const auto button : {QDialogButtonBox::Save, QDialogButtonBox::Open})
                if (buttons->button(button)) QTest::mouseClick(buttons->button(button), Qt::LeftButton);
        };
    }
    static void escape(QWidget &modal) { QTest::keyClick(&modal, Qt::Key_Escape); }
    QPointer<QTimer> mAnswering;
    QList<QWidget *> mWorked; // modal windows that are being answered
    std::shared_ptr<QList<std::function<void(QWidget &)>>> mLeft;

    /// Whether all that was to be asked was asked, and nothing else.
    bool allAsked()
    {
        delete mAnswering;
        const bool all = mLeft && mLeft->isEmpty() && mProblem.isEmpty();
        if (!all) qWarning("%s", qPrintable(mProblem.isEmpty() ? QStringLiteral("a question didn't come") : mProblem));
        mProblem.clear();
        mLeft.reset();
        // There is no window manager that would bring the window back to the front.
        if (mWindow->isVisible()) QApplication::setActiveWindow(mWindow.get());
        settle();
        return all;
    }
    QMenu *menu(const QString &title)
    {
        for (QAction *entry : mWindow->menuBar()->actions())
            if (entry->text() == title) return entry->menu();
        return nullptr;
    }
    QMenu *recentMenu()
    {
        QMenu *file = menu("&File");
        Q_EMIT file->aboutToShow();
        for (QAction *entry : file->actions())
            if (entry->menu()) return entry->menu();
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        support::SettingsStore::instance().setFolder(path("settings"));
        RecoveryJournal::setFolder(path("recovery"));
    }
    void init()
    {
        RecentFiles().clear();
        mAsked.clear();
        mWindow = std::make_unique<MainWindow>();
        mWindow->QWidget::show();
        QApplication::setActiveWindow(mWindow.get());
        QVERIFY(QTest::qWaitForWindowActive(mWindow.get()));
        settle();
    }
    void cleanup()
    {
        mWindow.reset();
        QVERIFY(!QGuiApplication::overrideCursor() || (QApplication::processEvents(), !QGuiApplication::overrideCursor()));
    }

    void aNewWindowTakesTyping()
    {
        QCOMPARE(window().windowTitle(), QString("Untitled[*] - VellumPad"));
        QVERIFY(!window().isWindowModified());
        QVERIFY(!action("EditUndo")->isEnabled());
        type("Hello");
        QVERIFY(window().control().DocumentHTML().contains("Hello"));
        QVERIFY(window().isWindowModified());
        QVERIFY(action("EditUndo")->isEnabled());
        QVERIFY(!action("EditRedo")->isEnabled());
        keys(QKeySequence::Undo);
        QVERIFY(!window().control().DocumentHTML().contains("Hello"));
        QVERIFY(action("EditRedo")->isEnabled());
        auto *bar = window().findChild<QToolBar *>();
        QTest::mouseClick(bar->widgetForAction(action("EditRedo")), Qt::LeftButton);
        settle();
        QVERIFY(window().control().DocumentHTML().contains("Hello"));
    }

    void menusOpenByTheirLetters()
    {
        for (const auto &[key, title] : {std::pair(Qt::Key_F, "&File"), {Qt::Key_E, "&Edit"}, {Qt::Key_V, "&View"}}) {
            QTest::keyClick(&window(), key, Qt::AltModifier);
            QTRY_VERIFY(menu(title)->isVisible());
            QTest::keyClick(menu(title), Qt::Key_Escape);
            QTRY_VERIFY(!menu(title)->isVisible());
            QTest::keyClick(&window(), Qt::Key_Escape);
        }
        // No letter twice in a menu, no key twice in the window.
        QStringList shortcuts;
        for (const char *title : {"&File", "&Edit", "&View"}) {
            QStringList letters;
            for (QAction *entry : menu(title)->actions()) {
                if (entry->isSeparator()) continue;
                const qsizetype at = entry->text().indexOf('&');
                QVERIFY2(at >= 0, qPrintable(entry->text()));
                letters << entry->text().mid(at + 1, 1).toLower();
                if (!entry->shortcut().isEmpty()) shortcuts << entry->shortcut().toString();
            }
            QCOMPARE(QSet<QString>(letters.begin(), letters.end()).size(), letters.size());
        }
        QCOMPARE(QSet<QString>(shortcuts.begin(), shortcuts.end()).size(), shortcuts.size());
    }

    void viewsSwitchByKeysAndTakeTheFocus()
    {
        for (const int view : {1, 0, 2, 0}) {
            keys(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + view)));
            QCOMPARE(window().control().EditView(), view);
            QVERIFY(action(view == 0 ? "ViewNormal" : view == 1 ? "ViewSource" : "ViewPreview")->isChecked());
            QVERIFY(QApplication::focusWidget());
            QVERIFY(window().control().isAncestorOf(QApplication::focusWidget()));
        }
        type("x");
        QVERIFY(window().control().DocumentHTML().contains("x</P>"));
    }

    void whatIsTypedInTheSourceCounts()
    {
        keys(QKeySequence(Qt::CTRL | Qt::Key_2));
        QVERIFY(!window().isWindowModified());
        type("x");
        QVERIFY(window().isWindowModified());
        write("a.html", "<P>a</P>");
        answer({press(QMessageBox::Discard)});
        action("FileNew")->trigger();
        QVERIFY(allAsked());
        settle();
        QVERIFY(!window().isWindowModified());
        open("a.html"); // in the source view too
        QCOMPARE(window().control().DocumentHTML(), QString("<P>a</P>"));
    }

    void takingBackWhatWasSavedCounts()
    {
        write("a.html", "<P>a</P>");
        open("a.html");
        keys(QKeySequence(Qt::CTRL | Qt::Key_2));
        type("z");
        keys(QKeySequence::Save);
        QVERIFY(!window().isWindowModified());
        keys(QKeySequence::Undo);
        QVERIFY(window().control().DocumentHTML() != QString::fromUtf8(read("a.html")));
        QVERIFY(window().isWindowModified());
    }

    void savingKeepsEncodingAndLineEnds()
    {
        write("latin.html", "<html><head><meta charset=\"windows-1252\"></head>\r\n<body><p>\xE9</p></body></html>\r\n");
        open("latin.html");
        QVERIFY(window().windowTitle().startsWith("latin.html"));
        keys(QKeySequence(Qt::Key_End));
        type("x");
        keys(QKeySequence::Save);
        QVERIFY(!window().isWindowModified());
        const QByteArray saved = read("latin.html");
        QVERIFY2(saved.contains("\xE9x"), saved.constData());
        QVERIFY(!QByteArray(saved).replace("\r\n", "").contains('\n'));
    }
    void aPageThatNobodyTouchedIsSavedAsItWas()
    {
        const QByteArray text = "<html><body bgcolor=white>\n<p>a<p>b\n</body>";
        write("same.html", text);
        open("same.html");
        keys(QKeySequence::Save);
        QCOMPARE(read("same.html"), text);
    }

    void saveAsAsksForANameAndGivesASuffix()
    {
        type("new");
        answer({name(path("page"))});
        keys(QKeySequence::Save); // has no name yet
        QVERIFY(allAsked());
        QCOMPARE(window().fileName(), path("page.html"));
        QVERIFY(read("page.html").contains("new"));
        QVERIFY(!window().isWindowModified());
        QVERIFY(window().control().BaseURL().endsWith(mFolder.path() + "/"));
        answer({[](QWidget &modal) { escape(modal); }});
        keys(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
        QVERIFY(allAsked());
        QCOMPARE(window().fileName(), path("page.html"));
        answer({name(path("other.htm"))});
        keys(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
        QVERIFY(allAsked());
        QCOMPARE(window().fileName(), path("other.htm"));
        QCOMPARE(read("other.htm"), read("page.html"));
        QCOMPARE(RecentFiles().names(), QStringList({path("other.htm"), path("page.html")}));
    }
    void saveAsAsksBeforeItReplaces()
    {
        write("there.html", "old");
        type("x");
        answer({name(path("there.html")), press(QMessageBox::No), [](QWidget &modal) { escape(modal); }});
        keys(QKeySequence::Save);
        QVERIFY(allAsked());
        QCOMPARE(read("there.html"), QByteArray("old"));
        QVERIFY(window().isWindowModified());
    }

    void openAsksForAFile()
    {
        write("o.html", "<P>opened</P>");
        answer({name(path("o.html"))});
        keys(QKeySequence::Open);
        QVERIFY(allAsked());
        settle();
        QCOMPARE(window().fileName(), path("o.html"));
        QCOMPARE(window().control().DOM()->body()->innerHTML(), QString("<P>opened</P>"));
        answer({[](QWidget &modal) { escape(modal); }});
        keys(QKeySequence::Open);
        QVERIFY(allAsked());
        QCOMPARE(window().fileName(), path("o.html"));
    }

    void recentFilesComeNewestFirst()
    {
        QVERIFY(!recentMenu()->isEnabled());
        for (int i = 0; i < RecentFiles::limit + 2; ++i) {
            write(QString("r&%1.html").arg(i), "<P>r</P>");
            open(QString("r&%1.html").arg(i));
        }
        open("r&5.html");
        QMenu *menu = recentMenu();
        QVERIFY(menu->isEnabled());
        QCOMPARE(menu->actions().size(), qsizetype(RecentFiles::limit + 2)); // and a line, and what clears it
        QVERIFY2(menu->actions()[0]->text().startsWith("&1 r&&5.html"), qPrintable(menu->actions()[0]->text()));
        QVERIFY2(menu->actions()[1]->text().startsWith("&2 r&&11.html"), qPrintable(menu->actions()[1]->text()));
        menu->actions()[1]->trigger();
        settle();
        QCOMPARE(window().fileName(), path("r&11.html"));
        // One that has gone says so and leaves the list.
        QVERIFY(QFile::remove(path("r&5.html")));
        answer({press(QMessageBox::Ok)});
        recentMenu()->actions()[1]->trigger();
        QVERIFY(allAsked());
        QCOMPARE(window().fileName(), path("r&11.html"));
        QVERIFY(!RecentFiles().names().contains(path("r&5.html")));
        recentMenu()->actions().last()->trigger();
        QVERIFY(!recentMenu()->isEnabled());
    }

    void changesAreNotLostUnasked_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"FileNew", "FileOpen", "recent", "drop", "close"}) QTest::newRow(way) << way;
    }
    void changesAreNotLostUnasked()
    {
        QFETCH(QString, way);
        write("other.html", "<P>other</P>");
        write("mine.html", "<P>mine</P>");
        open("other.html");
        open("mine.html");
        const auto leave = [&] {
            if (way == "recent") return recentMenu()->actions()[1]->trigger();
            if (way == "close") return (void)window().close();
            if (way != "drop") return action(way)->trigger();
            QMimeData data;
            data.setUrls({QUrl::fromLocalFile(path("other.html"))});
            QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&window(), &enter);
            QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&window(), &drop);
        };
        type("x");
        const QString text = window().control().DocumentHTML();
        answer({press(QMessageBox::Cancel)});
        leave();
        QVERIFY(allAsked());
        QVERIFY2(mAsked.value(0).contains("mine.html"), qPrintable(mAsked.value(0)));
        QCOMPARE(window().control().DocumentHTML(), text);
        QVERIFY(window().isWindowModified());
        QVERIFY(window().isVisible());
        answer({[](QWidget &modal) { escape(modal); }}); // is staying, too
        leave();
        QVERIFY(allAsked());
        QVERIFY(window().isWindowModified());
        QCOMPARE(read("mine.html"), QByteArray("<P>mine</P>"));

        QList<std::function<void(QWidget &)>> answers{press(QMessageBox::Save)};
        if (way == "FileOpen") answers << name(path("other.html"));
        answer(answers);
        leave();
        QVERIFY(allAsked());
        settle();
        QVERIFY(read("mine.html").contains("x"));
        if (way == "close") {
            QVERIFY(!window().isVisible());
            return;
        }
        QVERIFY(!window().isWindowModified());
        QCOMPARE(window().fileName(), way == "FileNew" ? QString() : path("other.html"));

        open("mine.html");
        const QByteArray before = read("mine.html");
        type("y");
        answers[0] = press(QMessageBox::Discard);
        answer(answers);
        leave();
        QVERIFY(allAsked());
        QCOMPARE(read("mine.html"), before);
        QCOMPARE(window().fileName(), way == "FileNew" ? QString() : path("other.html"));
    }

    void savingOverAnothersChangesAsks()
    {
        write("disk.html", "<P>first</P>");
        open("disk.html");
        type("x");
        writeMeanwhile("disk.html", "<P>theirs</P>");
        answer({press(QMessageBox::Cancel)});
        keys(QKeySequence::Save);
        QVERIFY(allAsked());
        QVERIFY(mAsked.value(0).contains("changed by another program"));
        QCOMPARE(read("disk.html"), QByteArray("<P>theirs</P>"));
        QVERIFY(window().isWindowModified());
        answer({press(QMessageBox::Save)});
        keys(QKeySequence::Save);
        QVERIFY(allAsked());
        QVERIFY(read("disk.html").contains("first"));
        QVERIFY(!window().isWindowModified());
        keys(QKeySequence::Save); // nobody else since: nothing to ask
        QVERIFY(mProblem.isEmpty());
    }

    void comingBackToAChangedFileOffersToOpenIt()
    {
        write("back.html", "<P>first</P>");
        open("back.html");
        QWidget elsewhere;
        const auto comeBack = [&] {
            elsewhere.show();
            QApplication::setActiveWindow(&elsewhere);
            QApplication::processEvents();
            QApplication::setActiveWindow(&window());
            settle();
        };
        comeBack();
        QVERIFY(mAsked.isEmpty());
        writeMeanwhile("back.html", "<P>theirs</P>");
        answer({press(QMessageBox::Yes)});
        comeBack();
        QVERIFY(allAsked());
        settle();
        QCOMPARE(window().control().DOM()->body()->innerHTML(), QString("<P>theirs</P>"));
        QVERIFY(!window().isWindowModified());
        type("x");
        write("back.html", "<P>again</P>");
        answer({press(QMessageBox::No)});
        comeBack();
        QVERIFY(allAsked());
        QVERIFY(mAsked.last().contains("lost"));
        QVERIFY(window().control().DocumentHTML().contains("x"));
        comeBack(); // was told once
        keys(QKeySequence::Save);
        QVERIFY(read("back.html").contains("theirs"));
    }

    void aWriteThatFailsKeepsTheChanges()
    {
        write("fail.html", "<P>a</P>");
        open("fail.html");
        type("x");
        QVERIFY(QFile::remove(path("fail.html")));
        QVERIFY(QDir().mkpath(path("fail.html"))); // a folder in its place
        answer({press(QMessageBox::Ok)});
        keys(QKeySequence::Save);
        QVERIFY(allAsked());
        QVERIFY(window().isWindowModified());
        QVERIFY(window().control().DocumentHTML().contains("x"));
    }
    void aFileThatIsNotThereSaysSo()
    {
        answer({press(QMessageBox::Ok)});
        QVERIFY(!window().openFile(path("missing.html")));
        QVERIFY(allAsked());
        QCOMPARE(window().fileName(), QString());
    }

    void theSampleIsNobodysFile()
    {
        window().openSample();
        settle();
        QVERIFY(window().control().DocumentHTML().contains("<h1>"));
        QVERIFY(!window().isWindowModified());
        QCOMPARE(window().fileName(), QString());
        QVERIFY(RecentFiles().names().isEmpty());
        answer({name(path("sample.html"))});
        keys(QKeySequence::Save);
        QVERIFY(allAsked());
        QVERIFY(read("sample.html").contains("<h1>"));
    }

    void aLoadShowsTheWaitingPointer()
    {
        write("big.html", "<P>" + QByteArray(100000, 'x') + "</P>");
        QVERIFY(!QGuiApplication::overrideCursor());
        QVERIFY(window().openFile(path("big.html")));
        QVERIFY(QGuiApplication::overrideCursor());
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        settle();
        QVERIFY(!QGuiApplication::overrideCursor());
        QVERIFY(!window().control().Loading());
    }

    void everythingHasAName()
    {
        for (QToolButton *button : window().findChild<QToolBar *>()->findChildren<QToolButton *>()) {
            if (!button->defaultAction()) continue; // what unfolds a bar that is too long
            QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(button);
            QVERIFY(accessible);
            QVERIFY(!accessible->text(QAccessible::Name).isEmpty());
            QVERIFY2(button->toolTip().contains('('), qPrintable(button->toolTip())); // its keys
            QVERIFY(!button->icon().isNull());
        }
        for (QWidget *widget : {static_cast<QWidget *>(window().menuBar()), static_cast<QWidget *>(&window().control())})
            QVERIFY(QAccessible::queryAccessibleInterface(widget));
        QVERIFY(!QAccessible::queryAccessibleInterface(&window().control())->text(QAccessible::Name).isEmpty());
    }

    void picturesOfEverything_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<bool>("reversed");
        QTest::newRow("light") << false << false;
        QTest::newRow("dark") << true << false;
        QTest::newRow("reversed") << false << true;
    }
    /// To be looked at; what is asserted is only that nothing is cut off.
    void picturesOfEverything()
    {
        QFETCH(bool, dark);
        QFETCH(bool, reversed);
        const QPalette before = QApplication::palette();
        if (dark) {
            QPalette palette(QColor(53, 53, 53), QColor(42, 42, 42));
            palette.setColor(QPalette::Base, QColor(35, 35, 35));
            palette.setColor(QPalette::Text, Qt::white);
            QApplication::setPalette(palette);
        }
        if (reversed) QApplication::setLayoutDirection(Qt::RightToLeft);
        window().openSample();
        settle();
        const QDir folder(QStringLiteral(BINARY_DIR "/pictures"));
        QVERIFY(folder.mkpath("."));
        const auto picture = [&](QWidget &widget, const QString &name) {
            const QString file = folder.filePath(QStringLiteral("%1-%2.png").arg(QTest::currentDataTag(), name));
            QVERIFY(widget.grab().save(file));
        };
        for (int view = 0; view < 3; ++view) {
            keys(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + view)));
            picture(window(), QStringList({"normal", "source", "preview"})[view]);
        }
        keys(QKeySequence(Qt::CTRL | Qt::Key_1));
        for (const char *title : {"&File", "&Edit", "&View"}) {
            menu(title)->popup(QPoint(10, 10));
            QVERIFY(menu(title)->width() >= menu(title)->sizeHint().width());
            picture(*menu(title), QString(title).mid(1).toLower());
            menu(title)->close();
        }
        type("x");
        answer({[&](QWidget &modal) {
            picture(modal, "question");
            escape(modal);
        }});
        action("FileNew")->trigger();
        QVERIFY(allAsked());
        answer({[&](QWidget &modal) {
            picture(modal, "saveas");
            escape(modal);
        }});
        action("FileSaveAs")->trigger();
        QVERIFY(allAsked());
        for (QToolButton *button : window().findChild<QToolBar *>()->findChildren<QToolButton *>())
            if (button->isVisible()) QVERIFY(button->parentWidget()->rect().contains(button->geometry()));
        QApplication::setLayoutDirection(Qt::LeftToRight);
        QApplication::setPalette(before);
    }
};

QTEST_MAIN(tst_vellumPad)
#include "tst_vellumPad.moc"
