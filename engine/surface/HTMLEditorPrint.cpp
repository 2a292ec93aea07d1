// SPDX-License-Identifier: GPL-3.0-or-later
// Printing: what the surface offers of it.
#include "engine/surface/HTMLEditor.h"

#include "engine/surface/LoadedDocument.h"
#include "engine/surface/PagePrinter.h"
#include "engine/surface/PrintDialogs.h"

#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSaveFile>

namespace surface {

namespace {

constexpr int pdfResolution = 1200; // dots to the inch: fine enough that nothing is seen of the rounding

} // namespace

QString HTMLEditor::documentTitle() const
{
    if (!mLoaded) return {};
    return PagePrinter::titleOf(mLoaded->document());
}

bool HTMLEditor::print(QPagedPaintDevice &device, const PrintSettings &settings, const PrintProgress &progress)
{
    if (!mLoaded) return false;
    PagePrinter pages(mLoaded->document(), mLoaded->tree().images(), settings, beforePrint);
    if (!device.setPageLayout(pages.pageLayout())) device.setPageSize(pages.pageLayout().pageSize());
    return pages.print(device, progress);
}

bool HTMLEditor::printToPdf(const QString &fileName, const PrintSettings &settings, const PrintProgress &progress)
{
    if (!mLoaded) return false;
    // The name has the whole file or what it had before.
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) return false;
    QPdfWriter writer(&file);
    writer.setResolution(pdfResolution);
    writer.setTitle(documentTitle());
    writer.setCreator(QStringLiteral("VellumKit"));
    if (!print(writer, settings, progress)) return false;
    return file.commit();
}

bool HTMLEditor::printWithDialog()
{
    return mLoaded && surface::printWithDialog(*this, mPrintSettings);
}

bool HTMLEditor::printAtOnce()
{
    const QPrinterInfo usual = QPrinterInfo::defaultPrinter();
    if (!mLoaded || usual.isNull()) return false;
    QPrinter printer(usual, QPrinter::HighResolution);
    printer.setDocName(documentTitle());
    return printWithProgress(*this, printer, mPrintSettings);
}

bool HTMLEditor::showPrintPreview()
{
    if (!mLoaded) return false;
    surface::showPrintPreview(*this, mPrintSettings);
    return true;
}

} // namespace surface
