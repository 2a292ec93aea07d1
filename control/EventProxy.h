// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QObject>
#include <memory>

namespace support {
class InstanceCounter;
}

/// What a host's toolbar listens to when it knows the control only by this object, which lives from the first question
/// for it to the control's end. It tells behind the control's own event.
class VELLUMKIT_EXPORT EventProxy : public QObject
{
    Q_OBJECT
public:
    explicit EventProxy(QObject *parent = nullptr);
    ~EventProxy() override;

Q_SIGNALS:
    /// Command states were refreshed.
    void ToolsRefreshed();

private:
    std::unique_ptr<support::InstanceCounter> mCounter;
};
