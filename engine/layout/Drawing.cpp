// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Drawing.h"

#include <QXmlStreamReader>

namespace layout {

bool drawingHasOnlyRatio(const QByteArray &svg)
{
    QXmlStreamReader reader(svg);
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("svg")) return false;
    const QXmlStreamAttributes attributes = reader.attributes();
    const auto isSaid = [&](QLatin1String name) {
        const auto value = attributes.value(name).trimmed();
        return !value.isEmpty() && !value.endsWith(QLatin1Char('%')) && value != QLatin1String("auto");
    };
    return attributes.hasAttribute(QLatin1String("viewBox")) && !isSaid(QLatin1String("width")) && !isSaid(QLatin1String("height"));
}

} // namespace layout
