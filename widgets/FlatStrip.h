// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <vector>

/// The strip of flat tabs below an editor. Tabs are known by keys, which are found whatever their case; a tab may be
/// hidden without losing its place. Exactly one tab is the selected one once there are any; it may be a hidden one.
class FlatStrip : public QWidget
{
    Q_OBJECT
public:
    explicit FlatStrip(QWidget *parent = nullptr);
    ~FlatStrip() override;

    /// Adds a visible tab behind the others; the first one becomes the selected. `&` in the caption stands before the
    /// letter that picks the tab with Alt. A key that is there already gets the new caption.
    void addTab(const QString &key, const QString &caption);
    /// Unknown keys: nothing happens, "" and False are answered.
    void setTabCaption(const QString &key, const QString &caption);
    QString tabCaption(const QString &key) const;
    void setTabVisible(const QString &key, bool visible);
    bool isTabVisible(const QString &key) const;

    /// The key of the selected tab, "" while there is none.
    QString SelectedTab() const;
    /// Shows a tab as the selected one, without `Change`. An unknown key changes nothing.
    void setSelectedTab(const QString &key);

    /// Counted from 1, hidden tabs included; 0 for an unknown key.
    int tabIndex(const QString &key) const;
    QStringList tabKeys() const;
    int tabCount() const { return int(mTabs.size()); }
    /// The tab's place in pixels; empty for a hidden or unknown one.
    QRect tabRect(const QString &key) const;

    /// Of the strip behind the tabs; an invalid colour gives back the palette's.
    QColor BackColor() const;
    void setBackColor(const QColor &color);
    /// Lays out and paints anew.
    void Refresh();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// A person has picked another tab, which is the selected one by now. The number counts from 1.
    void Change(int NewTab);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    friend class FlatStripAccessible;
    friend class FlatStripTabAccessible;
    struct Tab
    {
        QString key;
        QString caption;
        QRect rect;
        int shortcut = 0;
        bool visible = true;
    };

    int indexOf(const QString &key) const; // from 0, -1 for none
    int tabAt(const QPoint &point) const;
    int tabWidth(const Tab &tab) const;
    void layOut();
    void bindShortcut(Tab &tab);
    void pick(int index);
    void select(int index);
    void setHot(int index);
    int stripHeight() const;
    void paintTab(QPainter &painter, const Tab &tab, bool selected, bool hot) const;

    std::vector<Tab> mTabs;
    int mSelected = -1;
    int mHot = -1;
    QColor mBackColor;
};
