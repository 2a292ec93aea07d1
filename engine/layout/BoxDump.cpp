// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/BoxDump.h"

#include "engine/dom/CharacterData.h"
#include "engine/layout/BoxStyle.h"

#include <QJsonArray>
#include <set>

namespace layout {

namespace {

double hundredths(double value) { return std::round(value * 100) / 100; }

QString displayName(css::Display display)
{
    static const char *const names[] = {"none", "inline", "block", "list-item", "inline-block", "table", "inline-table", "table-row-group",
        "table-header-group", "table-footer-group", "table-row", "table-column-group", "table-column", "table-cell", "table-caption",
        "flow-root", "flex", "inline-flex", "grid", "inline-grid", "contents"};
    return QString::fromLatin1(names[std::size_t(display)]);
}

QString positionName(css::Position position)
{
    static const char *const names[] = {"", "relative", "absolute", "fixed", "sticky"};
    return QString::fromLatin1(names[std::size_t(position)]);
}

void addRow(LayoutTree &tree, Queries &queries, dom::Element &element, const QString &path, QJsonArray &rows)
{
    const StyleRef style = tree.styles().styleFor(element);
    const auto rects = queries.clientRects(element);
    const QRectF box = queries.borderBox(element);
    const QRect offset = queries.offsetBox(element);
    const css::Float side = style ? style->floating() : css::Float::None;
    rows.append(QJsonArray{path, element.name().text(), offset.x(), offset.y(), offset.width(), offset.height(), hundredths(box.x()),
                           hundredths(box.y()), hundredths(box.width()), hundredths(box.height()),
                           style ? displayName(style->display()) : QStringLiteral("none"),
                           style ? positionName(style->position()) : QString(),
                           side == css::Float::Left ? QStringLiteral("left") : side == css::Float::Right ? QStringLiteral("right") : QString(),
                           int(rects.size())});
}

void addText(Queries &queries, const dom::Node &node, const QString &parentPath, int index, QJsonArray &text)
{
    const QString data = node.nodeValue();
    if (QStringView(data).trimmed().isEmpty()) return;
    std::vector<QRectF> rects;
    for (const TextFragment &fragment : queries.textFragments(node))
        if (fragment.rect.width() > 0) rects.push_back(fragment.rect);
    if (rects.empty()) return;
    std::set<int> tops;
    for (const QRectF &rect : rects) tops.insert(int(std::floor(rect.top() + 0.5)));
    const QRectF &first = rects.front(), &last = rects.back();
    text.append(QJsonArray{parentPath, index, int(data.size()), int(tops.size()), hundredths(first.x()), hundredths(first.y()),
                           hundredths(first.height()), hundredths(last.right()), hundredths(last.bottom())});
}

} // namespace

QJsonObject boxDump(LayoutTree &tree)
{
    Queries queries(tree);
    QJsonArray rows, text;
    dom::Element *root = tree.document().documentElement();
    // Paths are extended on the way down and cut on the way up.
    std::vector<std::pair<dom::Node *, QString>> open;
    const auto visit = [&](auto &&self, dom::Element &element, const QString &path) -> void {
        addRow(tree, queries, element, path, rows);
        int child = 0, index = 0;
        for (dom::Node *node = element.firstChild(); node; node = node->nextSibling(), ++index) {
            if (dom::Element *inner = node->asElement())
                self(self, *inner, path + QLatin1Char('.') + QString::number(child++));
            else if (node->isText())
                addText(queries, *node, path, index, text);
        }
    };
    if (root) visit(visit, *root, QStringLiteral("0"));
    const QSize page = tree.pageSize();
    return {{QStringLiteral("mode"), tree.document().isQuirks() ? QStringLiteral("BackCompat") : QStringLiteral("CSS1Compat")},
            {QStringLiteral("scroll"), QJsonArray{page.width(), page.height()}},
            {QStringLiteral("rows"), rows},
            {QStringLiteral("text"), text}};
}

// ---- The tree as text ----

namespace {

void dumpBox(const Box &box, int depth, QStringList &lines)
{
    static const char *const kinds[] = {"text", "br", "inline", "block", "replaced", "table", "section", "row", "cell", "column"};
    QString line = QString(std::min(depth, 60), QLatin1Char(' ')) + QLatin1String(kinds[std::size_t(box.kind())]);
    if (box.isAnonymous()) line += QLatin1String(" anonymous");
    if (const dom::Element *element = box.element()) line += QLatin1Char(' ') + element->name().text();
    if (box.isText()) {
        const auto &text = static_cast<const TextBox &>(box);
        line += QStringLiteral(" [%1,%2)").arg(text.start).arg(text.end);
    }
    if (const BlockBox *block = box.asBlock()) {
        const Point at = block->position();
        line += QStringLiteral(" (%1,%2 %3x%4)").arg(at.x.raw).arg(at.y.raw).arg(block->width.raw).arg(block->height.raw);
        if (const ColumnSet *columns = block->columns())
            for (const ColumnPiece &piece : columns->pieces)
                line += QStringLiteral(" <%1-%2 %3,%4>").arg(piece.from.raw).arg(piece.to.raw).arg(piece.shift.x.raw).arg(piece.shift.y.raw);
        if (block->inlineContent) {
            const InlineContent &content = *block->inlineContent;
            for (const Line &l : content.lines) {
                line += QStringLiteral("\n%1 line %2 +%3 base %4 [%5,%6)").arg(QString(std::min(depth, 60), QLatin1Char(' '))).arg(l.top.raw).arg(l.height.raw).arg(l.baseline.raw).arg(l.start).arg(l.end);
                for (const Fragment *f = content.begin(l); f != content.end(l); ++f)
                    line += QStringLiteral(" {%1 %2,%3 %4x%5 %6-%7}").arg(int(f->type)).arg(f->x.raw).arg(f->y.raw).arg(f->width.raw).arg(f->height.raw).arg(f->start).arg(f->end);
            }
        }
    }
    lines << line;
    for (const Box *child = box.firstChild(); child; child = child->next()) dumpBox(*child, depth + 1, lines);
}

} // namespace

QString LayoutTree::dump()
{
    QStringList lines;
    dumpBox(root(), 0, lines);
    return lines.join(QLatin1Char('\n'));
}

QString LayoutTree::compareWithFresh()
{
    const QStringList mine = dump().split(QLatin1Char('\n'));
    // The nodes' places for boxes hold ours; a fresh build takes its own and gives them back.
    std::unique_ptr<BlockBox> kept = std::move(mRoot);
    std::vector<std::pair<dom::Node *, void *>> slots_;
    for (dom::Node *node = &mDocument; node; node = node->next()) {
        slots_.emplace_back(node, node->layoutSlot);
        node->layoutSlot = nullptr;
    }
    const WorkCounters work = mWork;
    buildAll();
    const QStringList fresh = dump().split(QLatin1Char('\n'));
    mRoot.reset();
    for (const auto &[node, slot] : slots_) node->layoutSlot = slot;
    mRoot = std::move(kept);
    mWork = work;
    // An outer box differs with an inner one: the first few differences tell which it is.
    QStringList differences;
    for (qsizetype i = 0; i < std::max(mine.size(), fresh.size()) && differences.size() < 8; ++i) {
        const QString a = i < mine.size() ? mine[i] : QString(), b = i < fresh.size() ? fresh[i] : QString();
        if (a != b) differences << QStringLiteral("line %1: incremental \"%2\", fresh \"%3\"").arg(i).arg(a, b);
    }
    return differences.join(QLatin1Char('\n'));
}

} // namespace layout
