// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Services.h"
#include "engine/html/Parser.h"
#include "engine/layout/Drawing.h"
#include "engine/layout/EngineStyles.h"
#include "engine/layout/LayoutTree.h"
#include "engine/paint/Painter.h"
#include "platform/FileText.h"

#include <QDir>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Pictures from files, decoded when they are asked for.
class PageFiles final : public layout::ImageSource
{
public:
    QSize imageSize(const QString &url) override { return QImageReader(QUrl(url).toLocalFile()).size(); }
    bool hasOnlyRatio(const QString &url) override { return url.endsWith(QLatin1String(".svg")) && layout::drawingHasOnlyRatio(fileBytes(QUrl(url).toLocalFile())); }
    QPixmap imagePixmap(const QString &url) override { return QPixmap(QUrl(url).toLocalFile()); }
};

/// A folder that record.mjs has recorded: its page, laid out at 1000 by 800.
struct RecordedPage {
    explicit RecordedPage(const QString &folder)
        : entry(folder + "/" + QJsonDocument::fromJson(fileBytes(folder + "/meta.json")).object()["entry"].toString()),
          document(html::parseDocument(platform::decodeFileText(fileBytes(entry)).text))
    {
        document->setBaseURL(QUrl::fromLocalFile(entry).toString());
        services = std::make_unique<css::Services>(*document);
        styles = std::make_unique<layout::EngineStyles>(services->engine());
        tree = std::make_unique<layout::LayoutTree>(*document, *styles);
        tree->setImageSource(&files);
        tree->setViewport({1000, 800});
    }
    /// The first screen.
    QImage picture() const
    {
        QImage image(tree->viewport(), QImage::Format_RGB32);
        QPainter painter(&image);
        paint::Painter(*tree, {}).paint(painter);
        return image;
    }
    static QStringList foldersIn(const QString &root)
    {
        QStringList folders;
        for (const QString &name : QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
            if (QFile::exists(root + "/" + name + "/expected.json.gz")) folders << root + "/" + name;
        return folders;
    }

    QString entry;
    decltype(html::parseDocument(QString())) document;
    PageFiles files;
    std::unique_ptr<css::Services> services;
    std::unique_ptr<layout::EngineStyles> styles;
    std::unique_ptr<layout::LayoutTree> tree;
};
