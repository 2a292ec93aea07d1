// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/PrintDialogs.h"

#include "engine/surface/HTMLEditor.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProgressDialog>
#include <QVBoxLayout>

namespace surface {

namespace {

constexpr double usualMargin = 12.7; // millimetres
constexpr double largestMargin = 200;

/// What the printer was set to, in our words.
PrintSettings settingsOf(const QPrinter &printer, PrintSettings settings)
{
    const QPageLayout layout = printer.pageLayout();
    settings.paper = layout.pageSize();
    settings.orientation = layout.orientation();
    const bool range = printer.printRange() == QPrinter::PageRange;
    settings.fromPage = range ? printer.fromPage() : 0;
    settings.toPage = range ? printer.toPage() : 0;
    return settings;
}

void setUp(QPrinter &printer, const PrintSettings &settings)
{
    printer.setPageSize(settings.paper);
    printer.setPageOrientation(settings.orientation);
}

} // namespace

// ---- Options ----

PrintOptionsPanel::PrintOptionsPanel(const PrintSettings &settings, QWidget *parent)
    : QWidget(parent), mPageNumbers(new QCheckBox(tr("Page &numbers"))), mTitle(new QCheckBox(tr("&Title at the top"))),
      mBackgrounds(new QCheckBox(tr("&Backgrounds"))), mOwnMargins(new QCheckBox(tr("&Margins of the document")))
{
    setObjectName(QStringLiteral("PrintOptions"));
    setWindowTitle(tr("Page"));
    mPageNumbers->setObjectName(QStringLiteral("PageNumbers"));
    mTitle->setObjectName(QStringLiteral("Title"));
    mBackgrounds->setObjectName(QStringLiteral("Backgrounds"));
    mOwnMargins->setObjectName(QStringLiteral("OwnMargins"));
    mPageNumbers->setChecked(settings.pageNumbers);
    mTitle->setChecked(settings.title);
    mBackgrounds->setChecked(settings.backgrounds);
    mOwnMargins->setChecked(!settings.margins);
    // Flat, since it stands below the pages of the preview, too.
    auto *column = new QVBoxLayout(this);
    auto *switches = new QHBoxLayout, *margins = new QHBoxLayout;
    column->addLayout(switches);
    column->addLayout(margins);
    column->addStretch();
    for (QCheckBox *box : {mPageNumbers, mTitle, mBackgrounds, mOwnMargins}) switches->addWidget(box);
    switches->addStretch();
    const QMarginsF wanted = settings.margins.value_or(QMarginsF(usualMargin, usualMargin, usualMargin, usualMargin));
    const double values[] = {wanted.left(), wanted.top(), wanted.right(), wanted.bottom()};
    const QString names[] = {tr("&Left:"), tr("T&op:"), tr("&Right:"), tr("Botto&m:")};
    const char *const objects[] = {"MarginLeft", "MarginTop", "MarginRight", "MarginBottom"};
    for (int i = 0; i < 4; ++i) {
        mMargins[i] = new QDoubleSpinBox;
        mMargins[i]->setObjectName(QLatin1String(objects[i]));
        mMargins[i]->setRange(0, largestMargin);
        mMargins[i]->setDecimals(1);
        mMargins[i]->setSuffix(tr(" mm"));
        mMargins[i]->setValue(values[i]);
        auto *label = new QLabel(names[i]);
        label->setBuddy(mMargins[i]);
        margins->addWidget(label);
        margins->addWidget(mMargins[i]);
        connect(mMargins[i], &QDoubleSpinBox::valueChanged, this, &PrintOptionsPanel::changed);
    }
    margins->addStretch();
    updateMargins();
    connect(mOwnMargins, &QCheckBox::toggled, this, &PrintOptionsPanel::updateMargins);
    for (QCheckBox *box : {mPageNumbers, mTitle, mBackgrounds, mOwnMargins}) connect(box, &QCheckBox::toggled, this, &PrintOptionsPanel::changed);
}

void PrintOptionsPanel::updateMargins()
{
    for (QDoubleSpinBox *margin : mMargins) margin->setEnabled(!mOwnMargins->isChecked());
}

void PrintOptionsPanel::apply(PrintSettings &settings) const
{
    settings.pageNumbers = mPageNumbers->isChecked();
    settings.title = mTitle->isChecked();
    settings.backgrounds = mBackgrounds->isChecked();
    settings.margins.reset();
    if (!mOwnMargins->isChecked())
        settings.margins = QMarginsF(mMargins[0]->value(), mMargins[1]->value(), mMargins[2]->value(), mMargins[3]->value());
}

// ---- Printing ----

bool printWithProgress(HTMLEditor &surface, QPrinter &printer, const PrintSettings &settings)
{
    QProgressDialog box(QObject::tr("Printing..."), QObject::tr("Cancel"), 0, 0, &surface);
    box.setObjectName(QStringLiteral("PrintProgress"));
    box.setWindowModality(Qt::WindowModal);
    box.setMinimumDuration(700); // most documents are done by then
    return surface.print(printer, settings, [&box](int page, int pages) {
        box.setMaximum(pages + 1);
        box.setLabelText(QObject::tr("Printing page %1 of %2...").arg(page).arg(pages));
        box.setValue(page);
        return !box.wasCanceled();
    });
}

bool printWithDialog(HTMLEditor &surface, PrintSettings &settings)
{
    QPrinter printer(QPrinter::HighResolution);
    setUp(printer, settings);
    printer.setDocName(surface.documentTitle());
    QPrintDialog dialog(&printer, &surface);
    dialog.setObjectName(QStringLiteral("Print"));
    dialog.setOption(QAbstractPrintDialog::PrintPageRange);
    auto *options = new PrintOptionsPanel(settings, &dialog);
    dialog.setOptionTabs({options});
    if (dialog.exec() != QDialog::Accepted) return false;
    options->apply(settings);
    const PrintSettings chosen = settingsOf(printer, settings);
    settings.paper = chosen.paper;
    settings.orientation = chosen.orientation;
    return printWithProgress(surface, printer, chosen);
}

void showPrintPreview(HTMLEditor &surface, PrintSettings &settings)
{
    QPrinter printer(QPrinter::HighResolution);
    setUp(printer, settings);
    printer.setDocName(surface.documentTitle());
    QPrintPreviewDialog dialog(&printer, &surface);
    dialog.setObjectName(QStringLiteral("PrintPreview"));
    dialog.resize(1000, 800);
    auto *options = new PrintOptionsPanel(settings);
    if (auto *column = qobject_cast<QVBoxLayout *>(dialog.layout())) column->addWidget(options);
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog, [&](QPrinter *target) {
        options->apply(settings);
        const PrintSettings chosen = settingsOf(*target, settings);
        settings.paper = chosen.paper;
        settings.orientation = chosen.orientation;
        surface.print(*target, chosen);
    });
    auto *pages = dialog.findChild<QPrintPreviewWidget *>();
    if (pages) QObject::connect(options, &PrintOptionsPanel::changed, pages, &QPrintPreviewWidget::updatePreview);
    dialog.exec();
}

} // namespace surface
