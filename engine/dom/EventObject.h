// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"

namespace dom {

/// What a handler is told of an event, and what it answers. Coordinates are client pixels of the view.
class EventObject final : public base::RefCounted
{
public:
    Ref<Element> srcElement; ///< may be Nothing
    int button = 0;          ///< 1 left, 2 right, 4 middle
    int x = 0;
    int y = 0;
    int keyCode = 0; ///< 0, written by a handler, swallows the key
    bool ctrlKey = false;
    bool shiftKey = false;
    bool altKey = false;
    bool cancelBubble = false;
    bool returnValue = true;
};

} // namespace dom
