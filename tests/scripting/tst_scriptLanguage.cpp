// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Published.h"
#include "scripting/Forms.h"
#include "scripting/Interpreter.h"

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
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
};

QTEST_MAIN(tst_scriptLanguage)
#include "tst_scriptLanguage.moc"
