// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/Observer.h"
#include "engine/layout/Counters.h"
#include "engine/layout/Engine.h"
#include "engine/layout/StyleSource.h"
#include "engine/layout/TableLayout.h"

namespace layout {

/// The boxes of one document, kept right as it changes.
///
/// A change only marks what it touches: a text its block, an insertion or removal the places where boxes must be made
/// anew. `update` does the work that waits; every question (see Queries) calls it first, so an answer is always exact.
class LayoutTree final : public dom::MutationObserver, public css::StyleListener
{
public:
    /// Both must outlive the tree. Observes the document at once; builds nothing until the first update.
    LayoutTree(dom::Document &document, StyleSource &styles);
    ~LayoutTree() override;

    dom::Document &document() const { return mDocument; }
    StyleSource &styles() const { return mStyles; }
    /// CSS pixels. The width is that of the view without its scroll bar.
    void setViewport(QSize size);
    QSize viewport() const { return mViewport; }
    /// Where the page is scrolled to, CSS pixels: sticky boxes show by it. Lays nothing out.
    void setViewScroll(QPointF scroll);
    /// Boxes that are shown elsewhere than where they are laid out, in no order.
    std::vector<BlockBox *> movedBoxes();
    /// Null: all images are missing. Not owned.
    void setImageSource(ImageSource *images);
    ImageSource *images() const { return mImages; }
    /// An image of that resolved URL has come, or gone: boxes that show it are laid out again.
    void imageChanged(const QString &url);
    /// Markers or generated content show it, once it is there.
    void notePicture(const QString &url) { mPictures.insert(url); }

    bool needsUpdate() const;
    void update();
    /// The box of the viewport, whose child is the root element's; up to date.
    BlockBox &root();
    /// Scroll width and height of the page, CSS pixels, the viewport at least.
    QSize pageSize();
    const WorkCounters &work() const { return mWork; }
    /// Counts up with every update that changed something: a painted picture of an older one is stale.
    uint64_t version() const { return mVersion; }
    /// What an element shows for `marker`, or "" (a list's numbers are counted when one is asked).
    QString markerText(BlockBox &item);
    Counters &counters() { return mCounters; }

    /// One line a box: kind, name, geometry, lines. Two trees that lay out the same give the same text.
    QString dump();
    /// The first difference between this tree and one built anew, "" if there is none.
    QString compareWithFresh();

    // dom::MutationObserver
    void inserted(dom::Node &node) override;
    void aboutToRemove(dom::Node &node) override;
    void removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before) override;
    void textReplaced(dom::CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added) override;
    void attributeChanged(dom::Element &element, dom::Atom name, const QString *old) override;
    void heldOpenChanged(dom::Element &element) override;
    // css::StyleListener
    void styleChanged(dom::Element &element, css::Difference difference) override;
    void stylesInvalidated() override;

    /// Marks a box and everything above it.
    void markDirty(Box &box);
    void boxGone(Box &box);
    /// A box was made: one that moves is remembered.
    void boxMade(BlockBox &box);

private:
    friend class BoxBuilder;
    struct Pending { // boxes around this place are to be made anew
        dom::ParentNode *parent;
        dom::Node *at; // null: the parent's end
    };
    void note(dom::ParentNode &parent, dom::Node *at);
    void forget(dom::Node &node);
    void buildPending();
    void buildAll();
    void dropAll();
    void reattachElement(dom::Element &element);
    void restyle(dom::Element &element);
    void noteCounters(const dom::Element &element, const css::ComputedStyle &style);
    void recount();
    void recount(Box &box, dom::Element &element);
    Unit availableHeight() const { return Unit::px(mViewport.height()); }

    dom::Document &mDocument;
    StyleSource &mStyles;
    ImageSource *mImages = nullptr;
    QSet<QString> mPictures;
    QSize mViewport{1000, 800};
    std::unique_ptr<BlockBox> mRoot;
    std::vector<Pending> mPending;
    Counters mCounters;
    std::vector<dom::NodeId> mShowCounters; // elements whose generated content shows some
    std::vector<dom::NodeId> mMoved; // elements whose boxes move; some may have gone or settled since
    QPointF mViewScroll;
    bool mRecount = false;
    bool mRebuildAll = true;
    bool mUpdating = false;
    bool mStylesWait = false;
    WorkCounters mWork;
    uint64_t mVersion = 0;
};

} // namespace layout
