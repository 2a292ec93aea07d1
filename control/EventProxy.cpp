// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/EventProxy.h"

#include "support/InstanceCounts.h"

EventProxy::EventProxy(QObject *parent)
    : QObject(parent), mCounter(std::make_unique<support::InstanceCounter>(support::Component::EventProxy))
{
}

EventProxy::~EventProxy() = default;
