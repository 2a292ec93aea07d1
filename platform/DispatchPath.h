// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dispatch.h"

namespace platform {

/// A chain of published members as a person writes it: `body.children(0).tagName`, `@r.text`, `VisualEditControl.#118`.
struct Path {
    struct Step {
        QString name; ///< a member's name, or "#" and its number
        bool hasArguments = false;
        Arguments arguments;
    };
    QString root; ///< the name behind a leading "@", "" for the object that the caller starts from
    std::vector<Step> steps;

    /// Reads a path at `position` and moves behind it; it ends before a blank. `named` gives what an `@NAME` among the
    /// arguments stands for. Raises `invalidCall` for what is none.
    static Path read(const QString &text, qsizetype &position, const std::function<Value(const QString &)> &named);

    /// The object of which the last step is a member. Only for a path that has steps.
    ObjectRef owner(const Value &start) const;
    Value get(const Value &start) const;
    void put(const Value &start, const Value &value) const;
    /// Calls the last step with its own arguments and `more` behind them.
    CallResult call(const Value &start, const Arguments &more) const;
};

} // namespace platform
