// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleEngine.h"
#include "engine/css/StyleSheetObject.h"
#include "engine/dom/DocumentServices.h"

#include <optional>
#include <unordered_map>

namespace css {

/// Supplies the text of linked and imported sheets.
class SheetLoader
{
public:
    virtual ~SheetLoader() = default;
    /// Nothing where there is none or it isn't allowed. At once: what must be waited for answers nothing now, and the
    /// sheet is asked for again after `Services::reloadSheets`.
    virtual std::optional<QString> load(const QString &url) = 0;
};

/// Reads local files only ("file:" addresses and absolute paths), in the encoding they declare, UTF-8 without one.
class FileSheetLoader final : public SheetLoader
{
public:
    std::optional<QString> load(const QString &url) override;
};

/// The bytes of a style sheet as text: by its byte order mark, its `@charset`, or UTF-8, and Windows-1252 where it
/// isn't.
QString decodeSheet(const QByteArray &bytes);

/// Styles and sheets of one document: makes itself the document's `styles` and holds its style engine. It holds the
/// document, so who made it ends it.
class Services final : public dom::StyleServices, private dom::MutationObserver
{
public:
    /// `loader` isn't owned and must outlive the services; null: local files.
    explicit Services(dom::Document &document, SheetLoader *loader = nullptr);
    /// With an engine of the caller's, which must outlive the services.
    explicit Services(StyleEngine &engine, SheetLoader *loader = nullptr);
    ~Services() override;

    StyleEngine &engine() { return mEngine; }

    StyleObject *style(dom::Element &element) override;
    StyleObject *runtimeStyle(dom::Element &element) override;
    /// STYLE and LINK sheets in document order, created ones behind them; live.
    uint32_t styleSheetCount(dom::Document &document) override;
    /// Null for an index that isn't there.
    StyleSheetObject *styleSheet(dom::Document &document, uint32_t index) override;
    /// Without a name a sheet behind the others that touches neither tree nor log; with one a LINK at HEAD's end,
    /// through the door.
    StyleSheetObject *createStyleSheet(dom::Document &document, const QString &href) override;
    /// Takes a created sheet away again. Whether it was one of the document's.
    bool removeCreatedSheet(StyleSheetObject &sheet);
    /// Reads linked sheets anew; what was written to them in memory goes.
    void reloadSheets();
    /// What the cascade takes for the medium, in its order: enabled sheets and those that they import.
    std::vector<ActiveSheet> activeSheets();

    /// Attached elements that have a runtime style, in no order.
    const std::vector<dom::Element *> &elementsWithRuntimeStyle() const { return mRuntime; }

    // For style objects and sheets.
    void runtimeChanged(dom::Element &element, bool isEmpty);
    void sheetWritten(StyleSheetObject &sheet);
    dom::Document &document() const { return *mDocument; }
    static Services *of(const dom::Element &element);

private:
    void start();
    void refreshSheets();
    void refreshOne(StyleSheetObject &sheet);
    void addActive(std::vector<ActiveSheet> &list, const base::Ref<StyleSheet> &sheet, const QString &base,
                   const MediaList &media, QStringList &chain);
    base::Ref<StyleSheet> imported(const QString &url);

    void inserted(dom::Node &node) override;
    void removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before) override;
    void aboutToMove(dom::Node &) override {}
    void moved(dom::Node &, dom::ParentNode &, dom::Node *) override {}

    base::Ref<dom::Document> mDocument;
    FileSheetLoader mFiles;
    SheetLoader *mLoader;
    std::unique_ptr<StyleEngine> mOwned;
    StyleEngine &mEngine;
    std::unordered_map<dom::Element *, base::Ref<StyleSheetObject>> mOfElements;
    std::vector<base::Ref<StyleSheetObject>> mSheets; ///< the list as it was last made
    std::vector<base::Ref<StyleSheetObject>> mCreated;
    QHash<QString, base::Ref<StyleSheet>> mImports;
    std::vector<dom::Element *> mRuntime;
};

} // namespace css
