// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What a control asks of the form that holds it. A host that is no form designer needs none.
class HostContainer
{
public:
    virtual ~HostContainer() = default;
    /// False while the form is being designed: the control stays empty.
    virtual bool UserMode() const { return true; }
    /// The extender's `Visible`; a control that was hidden isn't visible whatever it says. May fail; the control then takes it for True or False as the asker says.
    virtual bool Visible() const { return true; }
    /// A persistent property has a new value.
    virtual void PropertyChanged(const QString &Name) { Q_UNUSED(Name); }
};
