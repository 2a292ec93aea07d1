// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtUiPlugin/QDesignerCustomWidgetInterface>

/// Puts `Vellum5` into the form designer's widget box.
class Vellum5Plugin : public QObject, public QDesignerCustomWidgetInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QDesignerCustomWidgetInterface_iid)
    Q_INTERFACES(QDesignerCustomWidgetInterface)
public:
    QString name() const override { return QStringLiteral("Vellum5"); }
    QString group() const override { return QStringLiteral("Vellum"); }
    QString toolTip() const override { return tr("A WYSIWYG HTML editor"); }
    QString whatsThis() const override { return toolTip(); }
    QString includeFile() const override { return QStringLiteral("VellumKit5/Vellum5"); }
    QIcon icon() const override { return QIcon::fromTheme(QStringLiteral("text-html")); }
    bool isContainer() const override { return false; }
    QWidget *createWidget(QWidget *parent) override;
};
