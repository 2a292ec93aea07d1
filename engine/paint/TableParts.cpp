// SPDX-License-Identifier: GPL-3.0-or-later
// What lies under the cells of a table (CSS 2.1, 17.5.1).
#include "engine/layout/BoxStyle.h"
#include "engine/layout/TableLayout.h"
#include "engine/paint/Painter.h"

namespace paint {

using namespace layout;

namespace {

bool hasBackground(const BlockBox &box)
{
    return !box.anonymous && (qAlpha(box.style().background().color) || box.style().background().hasImage());
}

} // namespace

// Groups of columns, columns, sections and rows, in that order, each only where a cell stands: the spacing between cells
// shows the table's own background.
void Painter::paintTableParts(BlockBox &box, Point origin)
{
    auto &table = static_cast<TableBox &>(box);
    const TableRow *seen = table.rowAt(Unit::from(mClip.top()) - origin.y);
    const uint32_t first = seen ? uint32_t(seen - table.rows.data()) : 0;
    for (const TableCell &cell : table.cells) {
        if (cell.row + cell.rowSpan <= first) continue;
        const TableRow &row = table.rows[cell.row];
        if ((origin.y + row.top).toDouble() > mClip.bottom()) break;
        const Point sectionAt = origin + row.section->position(), rowAt = sectionAt + row.box->position(), at = rowAt + cell.box->position();
        const QRectF area = Rect{at.x, at.y, cell.box->width, cell.box->height}.toRectF();
        if (!area.intersects(mClip)) continue;
        const auto paintPart = [&](const BlockBox &part, Point partAt) {
            if (!hasBackground(part)) return;
            mPainter->save();
            mPainter->setClipRect(snapped(area), Qt::IntersectClip);
            paintBackground(part.style(), snapped(Rect{partAt.x, partAt.y, part.width, part.height}.toRectF()), {}, {});
            mPainter->restore();
        };
        const BlockBox *column = cell.column < table.columns.size() ? table.columns[cell.column].box : nullptr;
        if (column) {
            const BlockBox *group = column->parent() && column->parent()->kind() == BoxKind::TableColumn ? column->parent()->asBlock() : nullptr;
            const Point groupAt = group ? origin + group->position() : origin;
            if (group) paintPart(*group, groupAt);
            paintPart(*column, groupAt + column->position());
        }
        paintPart(*row.section, sectionAt);
        paintPart(*row.box, rowAt);
    }
}

} // namespace paint
