// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/Engine.h"

#include <QHash>
#include <QPixmap>
#include <memory>

class QSvgRenderer;

namespace surface {

/// The images of a document. Files, resources and `data:` addresses load; nothing comes from the network. Sizes are read
/// from a file's head, so that laying out a page decodes no picture; the picture is decoded when it is first painted.
class ImageStore final : public layout::ImageSource
{
public:
    QSize imageSize(const QString &url) override;
    QPixmap imagePixmap(const QString &url) override;
    bool isVector(const QString &url) override;
    void paintVector(QPainter &painter, const QString &url, const QRectF &target) override;
    bool hasOnlyRatio(const QString &url) override;

private:
    struct Entry {
        QSize size;
        QPixmap pixmap;
        bool decoded = false, onlyRatio = false;
        std::shared_ptr<QSvgRenderer> drawing; ///< of a picture made of lines
    };
    Entry &entry(const QString &url);
    QHash<QString, Entry> mEntries;
};

} // namespace surface
