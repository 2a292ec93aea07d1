// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Published.h"
#include "control/Vellum5.h"
#include "engine/dom/RawTree.h"
#include "scripting/Check.h"
#include "scripting/Forms.h"
#include "scripting/Interpreter.h"

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

using namespace scripting;

/// What the script language does where things go wrong, and how it works forms.
class tst_scriptLanguage : public QObject
{
    Q_OBJECT

    QStringList mPrinted, mFailures;
    QString mName;

    /// Runs a form with the lines a script has for it, and gives its result.
    int work(const QString &name, const QString &lines)
    {
        mPrinted.clear();
        mFailures.clear();
        Forms forms({[this](const QString &text) { mPrinted << text; },
                     [this](const QString &message) { mFailures << message; }, [](const QString &file) { return file; }});
        if (!lines.isNull()) forms.expect(name, lines);
        QDialog form;
        form.setObjectName(QStringLiteral("frmSample"));
        QVBoxLayout layout(&form);
        QLineEdit text;
        text.setObjectName(QStringLiteral("txtName"));
        QCheckBox check(QStringLiteral("Caption"));
        check.setObjectName(QStringLiteral("chkWhole"));
        QPushButton ok(QStringLiteral("OK"));
        ok.setObjectName(QStringLiteral("cmdOK"));
        connect(&ok, &QPushButton::clicked, &form, &QDialog::accept);
        for (QWidget *widget : {static_cast<QWidget *>(&text), static_cast<QWidget *>(&check), static_cast<QWidget *>(&ok)})
            layout.addWidget(widget);
        text.setFocus();
        const int result = form.exec();
        mName = text.text();
        for (QWidget *widget : {static_cast<QWidget *>(&text), static_cast<QWidget *>(&check), static_cast<QWidget *>(&ok)})
            widget->setParent(nullptr);
        return result;
    }

private Q_SLOTS:
    void initTestCase() { publishControl(); }

    void aFailureIsTold_data()
    {
        QTest::addColumn<QString>("script");
        for (const char *script :
             {"nonsense", "echo a\nexpect b", "echo ab\nexpect-like a", "echo a\nexpect", "echo a\nexpect-has b",
              "echo a\nexpect-not a", "fails echo a", "get Nonsense", "same @a @b", "key Nonsense", "on Nonsense off",
              "on CommandClick CommandName=\"x\"", "get DOM.body.nonsense", "typelib Nonsense",
              "on CommandClick do nonsense\nrun Bold", "clipboard IMAGE missing.png"})
            QTest::newRow(script) << QString::fromLatin1(script);
    }
    void aFailureIsTold()
    {
        QFETCH(QString, script);
        QCOMPARE(Interpreter(Interpreter::Options()).run(script, QStringLiteral("case")), 1);
    }

    /// What goes round the door is in no record.
    void checkSeesWhatTheLogDoesNotTell()
    {
        Interpreter in{Interpreter::Options()};
        QCOMPARE(in.run("html <P id=\"x\">a</P>\ntype b\ncheck", "case"), 0);
        const QString title = QStringLiteral("t");
        dom::RawTree::setAttribute(*in.control().DOM()->getElementById("x"), dom::Atom("title"), &title);
        QVERIFY(checkDocument(in).startsWith("the log replays to another tree"));
        QCOMPARE(in.run("check", "case"), 1);
    }
    void checkSeesWhatTheTextCannotCarry()
    {
        Interpreter in{Interpreter::Options()};
        QCOMPARE(in.run("html <P id=\"x\">a</P>\ncheck", "case"), 0);
        dom::Document &document = *in.control().DOM();
        const auto comment = base::make<dom::Comment>(document, QStringLiteral("a-->b"));
        dom::RawTree::insert(*document.body(), *comment, nullptr);
        QVERIFY(checkDocument(in).startsWith("the text parses back to another tree"));
    }

    void aFormIsWorkedByItsControlsNames()
    {
        QCOMPARE(work("frmSample", "set txtName \"Ann\"\nget txtName\nset chkWhole true\nget chkWhole\npress cmdOK"),
                 int(QDialog::Accepted));
        QCOMPARE(mPrinted, QStringList({"\"Ann\"", "true"}));
        QCOMPARE(mFailures, QStringList());
        QCOMPARE(mName, QString("Ann"));
    }
    void aFormTakesKeys()
    {
        QCOMPARE(work("frmsample", "key Shift+A\nget txtName\nkey Escape"), int(QDialog::Rejected));
        QCOMPARE(mPrinted, QStringList("\"A\""));
        QCOMPARE(mFailures, QStringList());
    }
    void aFormThatNobodyExpectedIsCancelled()
    {
        QCOMPARE(work("frmOther", "press cmdOK"), int(QDialog::Rejected));
        QCOMPARE(mFailures.size(), qsizetype(1));
        QCOMPARE(work("frmSample", {}), int(QDialog::Rejected));
        QCOMPARE(mFailures.size(), qsizetype(1));
    }
    void aFormThatStaysOpenIsCancelled()
    {
        QCOMPARE(work("frmSample", "get txtName"), int(QDialog::Rejected));
        QCOMPARE(mFailures.size(), qsizetype(1));
        QCOMPARE(work("frmSample", "press cmdNone\npress cmdOK"), int(QDialog::Rejected));
        QCOMPARE(mFailures.size(), qsizetype(2));
    }

    /// Pops up a menu with the lines a script has for it; gives the tools that ran.
    void aMenuIsListedAndPicked()
    {
        QStringList picked;
        QMenu menu;
        menu.setObjectName("popContext");
        QAction *cut = menu.addAction("Cu&t\tCtrl+X");
        cut->setObjectName("EditCut");
        menu.addSeparator();
        QAction *bold = menu.addAction("&Bold");
        bold->setCheckable(true);
        bold->setChecked(true);
        bold->setEnabled(false);
        menu.addAction("Hidden")->setVisible(false);
        QMenu *more = menu.addMenu("&More");
        QAction *deep = more->addAction("Deep");
        deep->setObjectName("WidgetConvert");
        connect(cut, &QAction::triggered, this, [&] { picked << "cut"; });
        connect(deep, &QAction::triggered, this, [&] { picked << "deep"; });
        QStringList printed, failures, unexpected;
        Menus menus({[&](const QString &text) { printed << text; }, [&](const QString &text) { failures << text; },
                     [&](const QString &name) { unexpected << name; }});
        menus.expect("popcontext", "list\npick EditCut");
        menu.exec();
        QCOMPARE(printed, QStringList({"EditCut \"Cut\" enabled", "-", "Bold \"Bold\" disabled checked",
                                       "More \"More\" enabled", "  WidgetConvert \"Deep\" enabled"}));
        QCOMPARE(picked, QStringList("cut"));
        menus.expect("popContext", "pick WidgetConvert");
        menu.exec();
        QCOMPARE(picked, QStringList({"cut", "deep"}));
        QCOMPARE(failures, QStringList());
        menus.expect("popContext", "pick Bold");
        menu.exec();
        QCOMPARE(failures.size(), qsizetype(1));
        menus.expect("popContext", "pick Nothing");
        menu.exec();
        QCOMPARE(failures.size(), qsizetype(2));
        QCOMPARE(unexpected, QStringList());
        menus.expect("popOther", "list");
        menu.exec(); // nobody expected this one
        QCOMPARE(unexpected, QStringList("popContext"));
        QCOMPARE(picked.size(), qsizetype(2));
        menu.popup(QPoint(5, 5)); // without a loop of its own
        QTRY_COMPARE(unexpected.size(), qsizetype(2));
        QVERIFY(!menu.isVisible());
    }
};

QTEST_MAIN(tst_scriptLanguage)
#include "tst_scriptLanguage.moc"
