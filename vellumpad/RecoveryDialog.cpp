// SPDX-License-Identifier: GPL-3.0-or-later
#include "RecoveryDialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

RecoveryDialog::RecoveryDialog(std::vector<FoundJournal> found, std::function<bool(FoundJournal &)> recover, QWidget *parent)
    : QDialog(parent), mFound(std::move(found)), mRecover(std::move(recover)), mList(new QListWidget), mPreview(new QPlainTextEdit),
      mPlace(new QLabel)
{
    setObjectName(QStringLiteral("RecoveryDialog"));
    setWindowTitle(tr("Recover Documents"));
    auto *intro = new QLabel(tr("VellumPad ended before these documents were saved. What was typed is still there."));
    intro->setWordWrap(true);
    auto *listLabel = new QLabel(tr("D&ocuments:"));
    listLabel->setBuddy(mList);
    mList->setObjectName(QStringLiteral("Documents"));
    mList->setAccessibleName(tr("Documents"));
    for (const FoundJournal &journal : mFound)
        mList->addItem(tr("%1 - last changed %2")
                           .arg(nameOf(journal), QLocale().toString(journal.time(), QLocale::ShortFormat)));
    auto *previewLabel = new QLabel(tr("&Preview:"));
    previewLabel->setBuddy(mPreview);
    mPreview->setObjectName(QStringLiteral("Preview"));
    mPreview->setAccessibleName(tr("Preview"));
    mPreview->setReadOnly(true);
    mPreview->setTabChangesFocus(true);
    mPreview->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    mPlace->setObjectName(QStringLiteral("Place"));
    mPlace->setTextFormat(Qt::PlainText); // a file's name may look like anything
    mPlace->setWordWrap(true);

    auto *buttons = new QDialogButtonBox;
    mRecoverButton = buttons->addButton(tr("&Recover"), QDialogButtonBox::ActionRole);
    mDiscardButton = buttons->addButton(tr("&Discard"), QDialogButtonBox::ActionRole);
    QPushButton *later = buttons->addButton(tr("Decide &Later"), QDialogButtonBox::RejectRole);
    mRecoverButton->setObjectName(QStringLiteral("Recover"));
    mDiscardButton->setObjectName(QStringLiteral("Discard"));
    later->setObjectName(QStringLiteral("Later"));
    later->setAutoDefault(false);
    mDiscardButton->setAutoDefault(false); // what Enter does must lose nothing
    mRecoverButton->setDefault(true);

    auto *layout = new QVBoxLayout(this);
    for (QWidget *widget : {static_cast<QWidget *>(intro), static_cast<QWidget *>(listLabel), static_cast<QWidget *>(mList),
                            static_cast<QWidget *>(mPlace), static_cast<QWidget *>(previewLabel),
                            static_cast<QWidget *>(mPreview), static_cast<QWidget *>(buttons)})
        layout->addWidget(widget);
    resize(560, 460);

    connect(mList, &QListWidget::currentRowChanged, this, &RecoveryDialog::show);
    connect(mList, &QListWidget::itemDoubleClicked, this, &RecoveryDialog::recover);
    connect(mRecoverButton, &QPushButton::clicked, this, &RecoveryDialog::recover);
    connect(mDiscardButton, &QPushButton::clicked, this, &RecoveryDialog::discard);
    connect(later, &QPushButton::clicked, this, &QDialog::reject);
    mList->setCurrentRow(0);
    mList->setFocus();
}

QString RecoveryDialog::nameOf(const FoundJournal &journal)
{
    if (!journal.isReadable()) return QFileInfo(journal.fileName()).fileName();
    return journal.documentName().isEmpty() ? tr("Untitled") : QFileInfo(journal.documentName()).fileName();
}

void RecoveryDialog::show(int row)
{
    const bool any = row >= 0 && row < int(mFound.size());
    mRecoverButton->setEnabled(any && mFound[size_t(row)].isReadable());
    mDiscardButton->setEnabled(any);
    mPlace->setText(any ? QDir::toNativeSeparators(mFound[size_t(row)].documentName()) : QString());
    if (!any)
        mPreview->clear();
    else
        mPreview->setPlainText(mFound[size_t(row)].isReadable() ? mFound[size_t(row)].preview() : mFound[size_t(row)].problem());
}

void RecoveryDialog::recover()
{
    const int row = mList->currentRow();
    if (row < 0 || !mFound[size_t(row)].isReadable()) return;
    if (mRecover(mFound[size_t(row)])) takeRow();
}

void RecoveryDialog::discard()
{
    const int row = mList->currentRow();
    if (row < 0) return;
    mFound[size_t(row)].discard();
    takeRow();
}

void RecoveryDialog::takeRow()
{
    const int row = mList->currentRow();
    mFound.erase(mFound.begin() + row);
    {
        const QSignalBlocker quiet(mList); // the rows and the journals are one only afterwards
        delete mList->takeItem(row);
    }
    if (mFound.empty()) {
        accept();
        return;
    }
    mList->setCurrentRow(std::min(row, int(mFound.size()) - 1));
    show(mList->currentRow());
    mList->setFocus();
}
