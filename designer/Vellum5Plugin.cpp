// SPDX-License-Identifier: GPL-3.0-or-later
#include "designer/Vellum5Plugin.h"

#include <VellumKit5/Vellum5>

namespace {

/// On a form that is being designed the control stays empty.
class DesignContainer : public HostContainer
{
    bool UserMode() const override { return false; }
};

} // namespace

QWidget *Vellum5Plugin::createWidget(QWidget *parent)
{
    static DesignContainer container;
    PropertyBag bag;
    return new Vellum5(bag, parent, &container);
}
