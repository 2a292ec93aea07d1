// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <VellumKit5/FileHelper>

#include <QByteArray>
#include <QObject>

#include <functional>

class Vellum5;
class QWidget;

/// The file behind a control's document: opens it, saves it in its own encoding and line ends, and knows whether the
/// user has changed the document and whether another program has changed the file meanwhile.
///
/// What goes wrong with a file is raised as `base::Error` with a text for the user; file, control and document are then
/// what they were.
class DocumentFile : public QObject
{
    Q_OBJECT
public:
    explicit DocumentFile(Vellum5 &control);

    /// Absolute; "" for a document that nobody has saved.
    const QString &name() const { return mName; }
    /// What the user knows the document by: the file's name without its folder.
    QString shownName() const;
    /// Whether the user has edited the document, in whatever view, since it was opened, saved or released. The control
    /// can't tell: for it, what is typed in the source view doesn't count, and a save isn't a load.
    bool hasChanges() const { return mChanged; }
    /// Asks before changes are lost; false if the user would rather stay, or `saveChanges` did.
    bool mayLeave(const std::function<bool()> &saveChanges, QWidget *parent = nullptr);
    void open(const QString &name);
    /// Whether bytes of the file that was opened had no meaning in its encoding.
    bool isLossy() const { return mLossy; }
    /// Writes what `DocumentHTML` gives. Asks before it overwrites what another program has written since; false if the
    /// answer was no. A box tells if the encoding had to be changed.
    bool save(const QString &name, QWidget *parent = nullptr);

    /// The document in the control is nobody's file.
    void release();
    /// The document in the control is the file's, with changes that nobody has saved.
    void adopt(const QString &name);

    /// Whether the file is there with a content that the user hasn't been told of, by `save` or `acceptDisk`.
    bool hasNewsOnDisk() const;
    /// The user has seen to what is there now: saving over it asks no more.
    void acceptDisk();

Q_SIGNALS:
    /// The document is another, or was saved or changed.
    void changed();

private:
    void take(const QString &name, bool hasChanges = false);
    Q_SLOT void edited();

    Vellum5 &mControl;
    QString mName;
    platform::FileFormat mFormat;
    QByteArray mOnDisk; ///< a hash of the file's content as it was opened or saved; empty where there is no file
    QByteArray mTold;   ///< of another content that the user was told of
    bool mLossy = false;
    bool mChanged = false;
};
