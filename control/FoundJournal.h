// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QDateTime>
#include <QString>
#include <memory>
#include <vector>

class Vellum5;

/// A document that a process left in its journal when it ended without saving or closing it. As long as the object lives
/// no other process finds the same; one that is neither recovered nor discarded is found again the next time.
class VELLUMKIT_EXPORT FoundJournal
{
public:
    /// All journals in `RecoveryJournal::folder()` whose process is gone, the youngest first; those of running processes,
    /// and of this one, aren't touched. One that can't be read is among them once, with its problem, and is kept aside.
    static std::vector<FoundJournal> find();

    FoundJournal(FoundJournal &&) noexcept;
    FoundJournal &operator=(FoundJournal &&) noexcept;
    ~FoundJournal();

    bool isReadable() const;
    /// Why it can't be read, as a sentence for the user; "" if it can.
    QString problem() const;
    /// As the host that wrote it told; "" if it told none, or the journal can't be read.
    QString documentName() const;
    /// Of the last edit.
    QDateTime time() const;
    /// The journal's own name; "" once it was recovered or discarded.
    QString fileName() const;
    /// The whole document, as `DocumentHTML` would have given it.
    QString text() const;
    /// The beginning of what a reader of the document sees, its white space evened out.
    QString preview(int characters = 600) const;

    /// Gives the document back to a control, in the view that it was edited in, and goes on with its journal there,
    /// whether the control's is on or not: it stays until the document is saved or closed. The document stands there
    /// when the load that this starts has ended; `Change` is raised then. False, with the journal where it was, if it
    /// can't be read or the control can't take it.
    bool recover(Vellum5 &Control);
    /// Removes the journal.
    void discard();

private:
    struct Parts;
    explicit FoundJournal(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> mParts;
};
