// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/PagePrinter.h"

#include "engine/dom/Names.h"
#include "engine/layout/Queries.h"
#include "engine/paint/Painter.h"

#include <QPagedPaintDevice>
#include <QPaintEngine>
#include <QTextLayout>
#include <QUrl>

namespace surface {

namespace {

constexpr double perMillimetre = 96 / 25.4;
constexpr double perPoint = 96 / 72.0;
constexpr double usualMargin = 48;
constexpr double leastArea = 48;       // of content, whatever the margins are
constexpr double leastSurroundings = 28; // what a page number needs
constexpr double mostShrinking = 2;

} // namespace

QString PagePrinter::titleOf(const dom::Document &document)
{
    for (const dom::Element *element : document.elementsNamed(dom::names::title))
        for (const dom::Node *child = element->firstChild(); child; child = child->nextSibling())
            if (child->isText()) return child->nodeValue().simplified();
    return {};
}

PagePrinter::PagePrinter(dom::Document &document, layout::ImageSource *images, const PrintSettings &settings,
                         const std::function<void(dom::Document &copy)> &prepare)
    : mSettings(settings), mCopy(document, images), mTitle(titleOf(document))
{
    if (prepare) prepare(mCopy.document());
    readPageRules();
    layOut();
    gatherLinks();
}

PagePrinter::~PagePrinter() = default;

void PagePrinter::readPageRules()
{
    const css::Medium medium{QStringLiteral("print"), mCopy.styles().engine().medium().viewport};
    mCopy.styles().engine().setMedium(medium);
    for (const css::ActiveSheet &sheet : mCopy.styles().activeSheets())
        if (sheet.media.suits(medium)) mRules.add(sheet.sheet->rules, medium);
    const css::PageStyle style = mSettings.followsDocument ? mRules.styleFor(0) : css::PageStyle();
    mPaper = mSettings.paper.size(QPageSize::Point) * perPoint;
    bool landscape = mSettings.orientation == QPageLayout::Landscape;
    if (style.size) {
        mPaper = *style.size;
        landscape = false;
    } else if (style.direction != css::PageStyle::Direction::Unset) {
        landscape = style.direction == css::PageStyle::Direction::Landscape;
        if (mPaper.width() > mPaper.height()) mPaper.transpose();
    }
    if (landscape) mPaper.transpose();
}

QMarginsF PagePrinter::marginsOf(int page) const
{
    QMarginsF margins(usualMargin, usualMargin, usualMargin, usualMargin);
    if (mSettings.margins) {
        margins = *mSettings.margins * perMillimetre;
    } else if (mSettings.followsDocument) {
        const css::PageStyle style = mRules.styleFor(page);
        if (style.left) margins.setLeft(style.left->resolve(mPaper.width()));
        if (style.right) margins.setRight(style.right->resolve(mPaper.width()));
        if (style.top) margins.setTop(style.top->resolve(mPaper.height()));
        if (style.bottom) margins.setBottom(style.bottom->resolve(mPaper.height()));
    }
    if (mSettings.pageNumbers) margins.setBottom(std::max(margins.bottom(), leastSurroundings));
    if (mSettings.title) margins.setTop(std::max(margins.top(), leastSurroundings));
    // Some content stays, however large the margins are.
    const double across = std::max(0.0, mPaper.width() - leastArea), down = std::max(0.0, mPaper.height() - leastArea);
    margins.setLeft(std::clamp(margins.left(), 0.0, across / 2));
    margins.setRight(std::clamp(margins.right(), 0.0, across / 2));
    margins.setTop(std::clamp(margins.top(), 0.0, down / 2));
    margins.setBottom(std::clamp(margins.bottom(), 0.0, down / 2));
    return margins;
}

QRectF PagePrinter::contentRect(int page) const
{
    // Left and right pages may lie differently; they are as wide as each other.
    const QMarginsF own = marginsOf(page), usual = marginsOf(2);
    return QRectF(own.left(), own.top(), mPaper.width() - usual.left() - usual.right(), mPaper.height() - own.top() - own.bottom());
}

// A page that is wider than the paper is made smaller, as far as it can still be read.
void PagePrinter::layOut()
{
    const QSizeF area = contentRect(2).size();
    layout::LayoutTree *tree = &mCopy.layOut(area);
    const double wanted = tree->root().overflowRight.toDouble();
    if (wanted > area.width() + 1) {
        mScale = std::min(wanted / area.width(), mostShrinking);
        tree->setViewport((area * mScale).toSize());
        tree->update();
    }
    const auto height = [this](int page) { return layout::Unit::from(contentRect(page).height() * mScale); };
    mPaginator = std::make_unique<layout::Paginator>(*tree, layout::PageSpace{height(0), height(1), height(2)});
    mPaginator->run();
}

void PagePrinter::gatherLinks()
{
    mLinks.resize(std::size_t(pageCount()));
    layout::Queries queries(mCopy.tree());
    for (dom::Element *element : mCopy.document().elementsNamed(dom::names::a)) {
        const QString *href = element->attribute(dom::names::href);
        if (!href || href->trimmed().startsWith(u'#')) continue;
        const QUrl target(mCopy.document().resolve(href->trimmed()));
        const QString scheme = target.scheme();
        if (scheme != QLatin1String("http") && scheme != QLatin1String("https") && scheme != QLatin1String("mailto") &&
            scheme != QLatin1String("ftp") && scheme != QLatin1String("file"))
            continue;
        std::vector<QRectF> rects = queries.clientRects(*element);
        for (const dom::Node *node = element->next(element); node; node = node->next(element))
            if (node->isElement() && node->asElement()->is(dom::names::img)) rects.push_back(queries.borderBox(*node->asElement()));
        for (const QRectF &rect : rects) {
            const int page = mPaginator->space().pageAt(layout::Unit::from(rect.top()));
            if (!rect.isEmpty() && page < pageCount()) mLinks[std::size_t(page)].push_back({target, rect});
        }
    }
}

QPageLayout PagePrinter::pageLayout() const
{
    const QPageSize size(mPaper / perPoint, QPageSize::Point, QString(), QPageSize::FuzzyOrientationMatch);
    // A named size knows only one direction.
    const bool turned = mPaper.width() > mPaper.height() && size.size(QPageSize::Point).width() < size.size(QPageSize::Point).height();
    QPageLayout layout(size, turned ? QPageLayout::Landscape : QPageLayout::Portrait, QMarginsF());
    layout.setMode(QPageLayout::FullPageMode); // margins are ours, not the device's
    return layout;
}

// ---- Painting ----

void PagePrinter::paintPart(QPainter &painter, const QRectF &part, QPointF at, const QColor &background)
{
    paint::Options options;
    options.scroll = part.topLeft();
    options.clip = part;
    options.background = background;
    options.backgrounds = mSettings.backgrounds;
    painter.save();
    painter.translate(at);
    paint::Painter(mCopy.tree(), options).paint(painter);
    painter.restore();
}

void PagePrinter::paintPage(QPainter &painter, int page)
{
    mPaginator->turnTo(page);
    const QRectF content = contentRect(page);
    const layout::PageSpace &space = mPaginator->space();
    const double top = space.top(page).toDouble();
    painter.save();
    painter.translate(content.topLeft());
    painter.scale(1 / mScale, 1 / mScale);
    paintPart(painter, QRectF(0, top, content.width() * mScale, space.height(page).toDouble()), {}, Qt::transparent);
    for (const layout::Paginator::Head &head : mPaginator->heads(page)) {
        const QRectF source = head.source.toRectF().intersected(QRectF(0, 0, content.width() * mScale, 1e9));
        if (!source.isEmpty()) paintPart(painter, source, QPointF(source.x(), head.top.toDouble() - top), Qt::white);
    }
    paintLinks(painter, page);
    painter.restore();
    paintSurroundings(painter, page);
}

// A PDF knows a link by the text that is drawn with its target: a blank as large as the link.
void PagePrinter::paintLinks(QPainter &painter, int page)
{
    if (!painter.paintEngine() || painter.paintEngine()->type() != QPaintEngine::Pdf) return;
    const double top = mPaginator->space().top(page).toDouble();
    for (const Link &link : mLinks[std::size_t(page)]) {
        QFont font(QStringLiteral("Liberation Sans"));
        font.setPixelSize(std::clamp(int(link.rect.height() * 0.85), 1, 500));
        font.setLetterSpacing(QFont::AbsoluteSpacing, std::max(0.0, link.rect.width() - QFontMetricsF(font).horizontalAdvance(u' ')));
        QTextLayout layout(QString(u'\u00a0'), font);
        QTextLayout::FormatRange range;
        range.start = 0;
        range.length = 1;
        range.format.setAnchor(true);
        range.format.setAnchorHref(link.target.toString(QUrl::FullyEncoded));
        layout.setFormats({range});
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        layout.draw(&painter, QPointF(link.rect.x(), link.rect.y() - top));
    }
}

void PagePrinter::paintSurroundings(QPainter &painter, int page)
{
    if (!mSettings.pageNumbers && !mSettings.title) return;
    const QRectF content = contentRect(page);
    painter.save();
    QFont font(QStringLiteral("Liberation Sans"));
    font.setPixelSize(12);
    painter.setFont(font);
    painter.setPen(QColor(0x44, 0x44, 0x44));
    const QRectF above(content.x(), 0, content.width(), content.top());
    const QRectF below(content.x(), content.bottom(), content.width(), mPaper.height() - content.bottom());
    if (mSettings.title && !mTitle.isEmpty())
        painter.drawText(above, Qt::AlignCenter, QFontMetricsF(font).elidedText(mTitle, Qt::ElideRight, above.width()));
    if (mSettings.pageNumbers) painter.drawText(below, Qt::AlignCenter, QStringLiteral("%1 / %2").arg(page + 1).arg(pageCount()));
    painter.restore();
}

bool PagePrinter::print(QPagedPaintDevice &device, const PrintProgress &progress)
{
    const int first = std::clamp(mSettings.fromPage, 1, pageCount()) - 1;
    const int last = mSettings.toPage > 0 ? std::clamp(mSettings.toPage, first + 1, pageCount()) - 1 : pageCount() - 1;
    QPainter painter;
    for (int page = first; page <= last; ++page) {
        if (progress && !progress(page - first + 1, last - first + 1)) return false;
        if (page == first ? !painter.begin(&device) : !device.newPage()) return false;
        painter.save();
        painter.scale(device.logicalDpiX() / 96.0, device.logicalDpiY() / 96.0);
        paintPage(painter, page);
        painter.restore();
    }
    return painter.end();
}

} // namespace surface
