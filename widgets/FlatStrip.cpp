// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/FlatStrip.h"

#include "widgets/FlatStripAccessible.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QShortcutEvent>
#include <QStyle>

namespace {

constexpr int sidePadding = 10; // logical pixels, as all here
constexpr int linePadding = 4;
constexpr int startMargin = 4;

QColor mixed(const QColor &one, const QColor &other, double share)
{
    const auto mix = [share](int a, int b) { return int(a + (b - a) * share + 0.5); };
    return QColor(mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue()));
}

} // namespace

FlatStrip::FlatStrip(QWidget *parent) : QWidget(parent)
{
    FlatStripAccessible::install();
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedHeight(stripHeight());
}

FlatStrip::~FlatStrip() = default;

int FlatStrip::indexOf(const QString &key) const
{
    for (size_t i = 0; i < mTabs.size(); ++i) {
        if (mTabs[i].key.compare(key, Qt::CaseInsensitive) == 0) return int(i);
    }
    return -1;
}

void FlatStrip::addTab(const QString &key, const QString &caption)
{
    if (indexOf(key) >= 0) return setTabCaption(key, caption);
    Tab tab;
    tab.key = key;
    tab.caption = caption;
    bindShortcut(tab);
    mTabs.push_back(tab);
    if (mSelected < 0) mSelected = 0;
    Refresh();
}

void FlatStrip::bindShortcut(Tab &tab)
{
    if (tab.shortcut) releaseShortcut(tab.shortcut);
    const QKeySequence keys = QKeySequence::mnemonic(tab.caption);
    tab.shortcut = keys.isEmpty() ? 0 : grabShortcut(keys, Qt::WindowShortcut);
    if (tab.shortcut) setShortcutEnabled(tab.shortcut, tab.visible);
}

void FlatStrip::setTabCaption(const QString &key, const QString &caption)
{
    const int index = indexOf(key);
    if (index < 0) return;
    Tab &tab = mTabs[size_t(index)];
    tab.caption = caption;
    bindShortcut(tab);
    Refresh();
}

QString FlatStrip::tabCaption(const QString &key) const
{
    const int index = indexOf(key);
    return index < 0 ? QString() : mTabs[size_t(index)].caption;
}

void FlatStrip::setTabVisible(const QString &key, bool visible)
{
    const int index = indexOf(key);
    if (index < 0 || mTabs[size_t(index)].visible == visible) return;
    Tab &tab = mTabs[size_t(index)];
    tab.visible = visible;
    if (tab.shortcut) setShortcutEnabled(tab.shortcut, visible);
    Refresh();
}

bool FlatStrip::isTabVisible(const QString &key) const
{
    const int index = indexOf(key);
    return index >= 0 && mTabs[size_t(index)].visible;
}

QString FlatStrip::SelectedTab() const
{
    return mSelected < 0 ? QString() : mTabs[size_t(mSelected)].key;
}

void FlatStrip::setSelectedTab(const QString &key)
{
    const int index = indexOf(key);
    if (index >= 0) select(index);
}

int FlatStrip::tabIndex(const QString &key) const
{
    return indexOf(key) + 1;
}

QStringList FlatStrip::tabKeys() const
{
    QStringList keys;
    for (const Tab &tab : mTabs)
        keys << tab.key;
    return keys;
}

QRect FlatStrip::tabRect(const QString &key) const
{
    const int index = indexOf(key);
    return index < 0 ? QRect() : mTabs[size_t(index)].rect;
}

QColor FlatStrip::BackColor() const
{
    return mBackColor.isValid() ? mBackColor : palette().color(QPalette::Window);
}

void FlatStrip::setBackColor(const QColor &color)
{
    mBackColor = color;
    update();
}

void FlatStrip::Refresh()
{
    setFixedHeight(stripHeight());
    layOut();
    updateGeometry();
    update();
}

int FlatStrip::stripHeight() const
{
    return fontMetrics().height() + 2 * linePadding + 2;
}

QSize FlatStrip::sizeHint() const
{
    int width = 2 * startMargin;
    for (const Tab &tab : mTabs)
        width += tab.visible ? tabWidth(tab) : 0;
    return QSize(width, stripHeight());
}

QSize FlatStrip::minimumSizeHint() const
{
    return QSize(0, stripHeight());
}

int FlatStrip::tabWidth(const Tab &tab) const
{
    return fontMetrics().size(Qt::TextShowMnemonic, tab.caption).width() + 2 * sidePadding;
}

void FlatStrip::layOut()
{
    int all = 0;
    for (const Tab &tab : mTabs)
        all += tab.visible ? tabWidth(tab) : 0;
    const int place = std::max(0, width() - 2 * startMargin);
    // In a strip too narrow for all, each tab gives the same share; its caption is cut with dots.
    const double share = all > place && all > 0 ? double(place) / all : 1;
    double at = startMargin;
    for (Tab &tab : mTabs) {
        tab.rect = QRect();
        if (!tab.visible) continue;
        const double next = at + tabWidth(tab) * share;
        const QRect logical(int(at), 0, int(next) - int(at), stripHeight() - 2);
        tab.rect = QStyle::visualRect(layoutDirection(), rect(), logical);
        at = next;
    }
}

int FlatStrip::tabAt(const QPoint &point) const
{
    for (size_t i = 0; i < mTabs.size(); ++i) {
        if (mTabs[i].rect.contains(point)) return int(i);
    }
    return -1;
}

void FlatStrip::select(int index)
{
    if (mSelected == index) return;
    mSelected = index;
    update();
    QAccessibleEvent changed(this, QAccessible::Selection);
    changed.setChild(index);
    QAccessible::updateAccessibility(&changed);
    if (hasFocus()) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        focus.setChild(index);
        QAccessible::updateAccessibility(&focus);
    }
}

void FlatStrip::pick(int index)
{
    if (index < 0 || index == mSelected || !mTabs[size_t(index)].visible) return;
    select(index);
    Q_EMIT Change(index + 1);
}

void FlatStrip::setHot(int index)
{
    if (mHot == index) return;
    mHot = index;
    update();
}

void FlatStrip::paintTab(QPainter &painter, const Tab &tab, bool selected, bool hot) const
{
    const QPalette &colors = palette();
    const QColor line = mixed(BackColor(), colors.color(QPalette::WindowText), 0.35);
    const QRectF place = QRectF(tab.rect).adjusted(0.5, -1, -0.5, -0.5);
    if (selected || hot) {
        // Hangs from the editor above: no line at the top, round corners at the bottom.
        constexpr double radius = 3;
        QPainterPath path(place.topLeft());
        path.lineTo(place.left(), place.bottom() - radius);
        path.quadTo(place.bottomLeft(), place.bottomLeft() + QPointF(radius, 0));
        path.lineTo(place.right() - radius, place.bottom());
        path.quadTo(place.bottomRight(), place.bottomRight() - QPointF(0, radius));
        path.lineTo(place.topRight());
        if (selected) {
            painter.setPen(line);
            painter.setBrush(colors.color(QPalette::Base));
        } else {
            painter.setPen(Qt::NoPen);
            painter.setBrush(mixed(BackColor(), colors.color(QPalette::WindowText), 0.1));
        }
        painter.drawPath(path);
    }
    QColor text = selected ? colors.color(QPalette::Text) : colors.color(QPalette::WindowText);
    // A back colour of the host's own may be as dark or as light as the palette's text.
    const bool onDark = qGray(BackColor().rgb()) < 128;
    if (!selected && mBackColor.isValid() && onDark == (qGray(text.rgb()) < 128)) text = onDark ? Qt::white : Qt::black;
    if (!isEnabled()) text = colors.color(QPalette::Disabled, QPalette::WindowText);
    painter.setPen(text);
    const QRect inner = tab.rect.adjusted(sidePadding / 2, 0, -sidePadding / 2, 0);
    const QString caption = fontMetrics().elidedText(tab.caption, Qt::ElideRight, inner.width(), Qt::TextShowMnemonic);
    const bool underline = style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this);
    painter.drawText(inner, Qt::AlignCenter | (underline ? Qt::TextShowMnemonic : Qt::TextHideMnemonic), caption);
    if (selected && hasFocus()) {
        QPen pen(colors.color(QPalette::Highlight), 1);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(place.adjusted(2, 4, -2, -2), 2, 2);
    }
}

void FlatStrip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), BackColor());
    painter.setPen(mixed(BackColor(), palette().color(QPalette::WindowText), 0.35));
    painter.drawLine(QPointF(0, 0.5), QPointF(width(), 0.5));
    for (size_t i = 0; i < mTabs.size(); ++i) {
        if (!mTabs[i].rect.isEmpty()) paintTab(painter, mTabs[i], int(i) == mSelected, int(i) == mHot && isEnabled());
    }
}

void FlatStrip::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void FlatStrip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    pick(tabAt(event->position().toPoint()));
}

void FlatStrip::mouseMoveEvent(QMouseEvent *event)
{
    setHot(tabAt(event->position().toPoint()));
}

void FlatStrip::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    setHot(-1);
}

void FlatStrip::keyPressEvent(QKeyEvent *event)
{
    const int count = tabCount();
    int from = mSelected, step = 0;
    switch (event->key()) {
    case Qt::Key_Left:
        step = isRightToLeft() ? 1 : -1;
        break;
    case Qt::Key_Right:
        step = isRightToLeft() ? -1 : 1;
        break;
    case Qt::Key_Home:
        from = -1;
        step = 1;
        break;
    case Qt::Key_End:
        from = count;
        step = -1;
        break;
    default:
        return QWidget::keyPressEvent(event);
    }
    for (int i = from + step; i >= 0 && i < count; i += step) {
        if (mTabs[size_t(i)].visible) return pick(i);
    }
}

void FlatStrip::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    update();
    if (mSelected < 0) return;
    QAccessibleEvent focus(this, QAccessible::Focus);
    focus.setChild(mSelected);
    QAccessible::updateAccessibility(&focus);
}

void FlatStrip::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    update();
}

bool FlatStrip::event(QEvent *event)
{
    if (event->type() == QEvent::Shortcut) {
        const int id = static_cast<QShortcutEvent *>(event)->shortcutId();
        for (size_t i = 0; i < mTabs.size(); ++i) {
            if (mTabs[i].shortcut == id && id) {
                pick(int(i));
                return true;
            }
        }
    }
    return QWidget::event(event);
}

void FlatStrip::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::LayoutDirectionChange:
        Refresh();
        break;
    case QEvent::PaletteChange:
    case QEvent::EnabledChange:
        update();
        break;
    default:
        break;
    }
}
