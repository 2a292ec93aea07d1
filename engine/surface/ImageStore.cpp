// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/ImageStore.h"

#include "engine/layout/Drawing.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QUrl>

namespace surface {

namespace {

constexpr qint64 largestDrawing = 16 << 20; // bytes
constexpr int largestSide = 20000; // pixels; a picture beyond is a mistake or an attack

QByteArray dataOf(const QString &url)
{
    const qsizetype comma = url.indexOf(u',');
    if (comma < 0) return {};
    const QByteArray body = url.mid(comma + 1).toUtf8();
    return url.left(comma).endsWith(QLatin1String(";base64"), Qt::CaseInsensitive)
               ? QByteArray::fromBase64(QByteArray::fromPercentEncoding(body))
               : QByteArray::fromPercentEncoding(body);
}

QString localName(const QString &url)
{
    if (url.startsWith(QLatin1String("qrc:"))) return url.mid(3);
    // A resource of a library, named by the library's file: whatever the file, the library is this one.
    if (url.startsWith(QLatin1String("res:"), Qt::CaseInsensitive))
        return QStringLiteral(":/vellumkit/") + url.mid(url.lastIndexOf(u'/') + 1);
    if (url.startsWith(u':') || url.startsWith(u'/')) return url;
    const QUrl address(url);
    return address.isLocalFile() ? address.toLocalFile() : QString();
}

template <class Read> void withReader(const QString &url, Read read)
{
    if (url.startsWith(QLatin1String("data:"), Qt::CaseInsensitive)) {
        QByteArray bytes = dataOf(url);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer);
        read(reader);
        return;
    }
    const QString name = localName(url);
    if (name.isEmpty() || !QFileInfo(name).isFile()) return;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) return;
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    read(reader);
}

} // namespace

ImageStore::Entry &ImageStore::entry(const QString &url)
{
    const auto found = mEntries.find(url);
    if (found != mEntries.end()) return *found;
    Entry entry;
    withReader(url, [&entry](QImageReader &reader) {
        if (const QByteArray head = reader.device() ? reader.device()->peek(1024) : QByteArray(); head.contains("<svg") || head.contains("<!DOCTYPE svg")) {
            const QByteArray bytes = reader.device()->read(largestDrawing);
            entry.drawing = std::make_shared<QSvgRenderer>(bytes);
            if (!entry.drawing->isValid()) entry.drawing.reset();
            if (entry.drawing) entry.size = entry.drawing->defaultSize();
            entry.onlyRatio = entry.drawing && layout::drawingHasOnlyRatio(bytes);
            entry.decoded = true;
            return;
        }
        entry.size = reader.size();
        if (!entry.size.isValid() && reader.canRead()) { // a format that tells its size only when it is decoded
            entry.pixmap = QPixmap::fromImageReader(&reader);
            entry.decoded = true;
            entry.size = entry.pixmap.size();
        }
        if (entry.size.width() > largestSide || entry.size.height() > largestSide) entry = {};
    });
    return *mEntries.insert(url, entry);
}

QSize ImageStore::imageSize(const QString &url)
{
    const QSize size = entry(url).size;
    return size.isValid() ? size : QSize();
}

QPixmap ImageStore::imagePixmap(const QString &url)
{
    Entry &known = entry(url);
    if (!known.decoded && known.size.isValid()) {
        withReader(url, [&known](QImageReader &reader) { known.pixmap = QPixmap::fromImageReader(&reader); });
        known.decoded = true;
    }
    if (known.drawing && known.pixmap.isNull()) { // for who can't take lines
        QPixmap pixmap(known.size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        known.drawing->render(&painter);
        painter.end();
        known.pixmap = pixmap;
    }
    return known.pixmap;
}

bool ImageStore::isVector(const QString &url)
{
    return entry(url).drawing != nullptr;
}

bool ImageStore::hasOnlyRatio(const QString &url)
{
    return entry(url).onlyRatio;
}

void ImageStore::paintVector(QPainter &painter, const QString &url, const QRectF &target)
{
    const Entry &known = entry(url);
    if (!known.drawing || target.isEmpty()) return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    known.drawing->render(&painter, target);
    painter.restore();
}

} // namespace surface
