// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <VellumKit5/Recovery>

#include <QDialog>
#include <functional>
#include <vector>

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

/// Offers the documents that an earlier run left without saving: each by its file, the time of its last change and how it
/// begins, to be recovered or discarded. What isn't decided is offered again the next time.
class RecoveryDialog : public QDialog
{
    Q_OBJECT
public:
    /// `recover` takes the document over; false if it can't.
    RecoveryDialog(std::vector<FoundJournal> found, std::function<bool(FoundJournal &)> recover, QWidget *parent = nullptr);

private:
    void show(int row);
    void recover();
    void discard();
    void takeRow();
    static QString nameOf(const FoundJournal &journal);

    std::vector<FoundJournal> mFound; // in the order of the rows
    std::function<bool(FoundJournal &)> mRecover;
    QListWidget *mList;
    QPlainTextEdit *mPreview;
    QLabel *mPlace;
    QPushButton *mRecoverButton;
    QPushButton *mDiscardButton;
};
