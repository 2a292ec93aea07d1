// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Property.h"

#include <QHash>

namespace css {

namespace {

struct Row
{
    const char *name;
    bool inherited;
    Grammar grammar;
    const char *words;
};

const Row rows[] = {
#define CSS_ROW(name, text, inherited, grammar, words) {text, inherited, Grammar::grammar, words},
    CSS_PROPERTIES(CSS_ROW)
#undef CSS_ROW
};

using Id = PropertyId;

struct ShorthandRow
{
    Shorthand id;
    const char *name;
    std::vector<PropertyId> longhands;
};

std::vector<ShorthandRow> makeShorthands()
{
    const std::vector<Id> widths{Id::BorderTopWidth, Id::BorderRightWidth, Id::BorderBottomWidth, Id::BorderLeftWidth};
    const std::vector<Id> styles{Id::BorderTopStyle, Id::BorderRightStyle, Id::BorderBottomStyle, Id::BorderLeftStyle};
    const std::vector<Id> colors{Id::BorderTopColor, Id::BorderRightColor, Id::BorderBottomColor, Id::BorderLeftColor};
    std::vector<Id> border = widths;
    border.insert(border.end(), styles.begin(), styles.end());
    border.insert(border.end(), colors.begin(), colors.end());
    std::vector<Id> all;
    for (size_t i = 0; i < propertyCount; ++i)
        if (Id(i) != Id::Direction && Id(i) != Id::UnicodeBidi) all.push_back(Id(i));
    using S = Shorthand;
    return {
        {S::Margin, "margin", {Id::MarginTop, Id::MarginRight, Id::MarginBottom, Id::MarginLeft}},
        {S::Padding, "padding", {Id::PaddingTop, Id::PaddingRight, Id::PaddingBottom, Id::PaddingLeft}},
        {S::Border, "border", border},
        {S::BorderWidth, "border-width", widths},
        {S::BorderStyle, "border-style", styles},
        {S::BorderColor, "border-color", colors},
        {S::BorderTop, "border-top", {Id::BorderTopWidth, Id::BorderTopStyle, Id::BorderTopColor}},
        {S::BorderRight, "border-right", {Id::BorderRightWidth, Id::BorderRightStyle, Id::BorderRightColor}},
        {S::BorderBottom, "border-bottom", {Id::BorderBottomWidth, Id::BorderBottomStyle, Id::BorderBottomColor}},
        {S::BorderLeft, "border-left", {Id::BorderLeftWidth, Id::BorderLeftStyle, Id::BorderLeftColor}},
        {S::BorderRadius,
         "border-radius",
         {Id::BorderTopLeftRadius, Id::BorderTopRightRadius, Id::BorderBottomRightRadius, Id::BorderBottomLeftRadius}},
        {S::Background,
         "background",
         {Id::BackgroundColor, Id::BackgroundImage, Id::BackgroundRepeat, Id::BackgroundAttachment,
          Id::BackgroundPositionX, Id::BackgroundPositionY, Id::BackgroundSize, Id::BackgroundOrigin,
          Id::BackgroundClip}},
        {S::BackgroundPosition, "background-position", {Id::BackgroundPositionX, Id::BackgroundPositionY}},
        {S::Font,
         "font",
         {Id::FontStyle, Id::FontVariant, Id::FontWeight, Id::FontStretch, Id::FontSize, Id::LineHeight,
          Id::FontFamily}},
        {S::ListStyle, "list-style", {Id::ListStyleType, Id::ListStylePosition, Id::ListStyleImage}},
        {S::Outline, "outline", {Id::OutlineWidth, Id::OutlineStyle, Id::OutlineColor}},
        {S::Overflow, "overflow", {Id::OverflowX, Id::OverflowY}},
        {S::TextDecoration,
         "text-decoration",
         {Id::TextDecorationLine, Id::TextDecorationStyle, Id::TextDecorationColor, Id::TextDecorationThickness}},
        {S::Flex, "flex", {Id::FlexGrow, Id::FlexShrink, Id::FlexBasis}},
        {S::FlexFlow, "flex-flow", {Id::FlexDirection, Id::FlexWrap}},
        {S::Columns, "columns", {Id::ColumnWidth, Id::ColumnCount}},
        {S::ColumnRule, "column-rule", {Id::ColumnRuleWidth, Id::ColumnRuleStyle, Id::ColumnRuleColor}},
        {S::Gap, "gap", {Id::RowGap, Id::ColumnGap}},
        {S::PlaceContent, "place-content", {Id::AlignContent, Id::JustifyContent}},
        {S::PlaceItems, "place-items", {Id::AlignItems, Id::JustifyItems}},
        {S::PlaceSelf, "place-self", {Id::AlignSelf, Id::JustifySelf}},
        {S::GridRow, "grid-row", {Id::GridRowStart, Id::GridRowEnd}},
        {S::GridColumn, "grid-column", {Id::GridColumnStart, Id::GridColumnEnd}},
        {S::GridArea, "grid-area", {Id::GridRowStart, Id::GridColumnStart, Id::GridRowEnd, Id::GridColumnEnd}},
        {S::GridTemplate, "grid-template", {Id::GridTemplateRows, Id::GridTemplateColumns, Id::GridTemplateAreas}},
        {S::Grid,
         "grid",
         {Id::GridTemplateRows, Id::GridTemplateColumns, Id::GridTemplateAreas, Id::GridAutoRows, Id::GridAutoColumns,
          Id::GridAutoFlow}},
        {S::MarginInline, "margin-inline", {Id::MarginInlineStart, Id::MarginInlineEnd}},
        {S::MarginBlock, "margin-block", {Id::MarginTop, Id::MarginBottom}},
        {S::PaddingInline, "padding-inline", {Id::PaddingInlineStart, Id::PaddingInlineEnd}},
        {S::PaddingBlock, "padding-block", {Id::PaddingTop, Id::PaddingBottom}},
        {S::Inset, "inset", {Id::Top, Id::Right, Id::Bottom, Id::Left}},
        {S::InsetInline, "inset-inline", {Id::InsetInlineStart, Id::InsetInlineEnd}},
        {S::InsetBlock, "inset-block", {Id::Top, Id::Bottom}},
        {S::All, "all", all},
    };
}

const std::vector<ShorthandRow> &shorthands()
{
    static const auto *const table = new std::vector<ShorthandRow>(makeShorthands());
    return *table;
}

struct Tables
{
    std::vector<PropertyInfo> infos;
    QHash<QString, PropertyId> ids;
    QHash<QString, Shorthand> shorthandIds;
    QHash<QString, QString> canonical; // lower case without hyphens -> canonical
    QStringList names;

    Tables()
    {
        for (size_t i = 0; i < propertyCount; ++i) {
            const Row &row = rows[i];
            PropertyInfo info{QString::fromLatin1(row.name), row.inherited, row.grammar, {}};
            int number = 0;
            for (const QString &word : QString::fromLatin1(row.words).split(u' ', Qt::SkipEmptyParts)) {
                const qsizetype equals = word.indexOf(u'=');
                if (equals < 0) {
                    info.words.emplace_back(word, number++);
                    continue;
                }
                for (const auto &[known, value] : std::vector<std::pair<QString, int>>(info.words))
                    if (known == word.mid(equals + 1)) info.words.emplace_back(word.left(equals), value);
            }
            ids.insert(info.name, PropertyId(i));
            names << info.name;
            infos.push_back(std::move(info));
        }
        for (const ShorthandRow &row : shorthands()) {
            shorthandIds.insert(QString::fromLatin1(row.name), row.id);
            names << QString::fromLatin1(row.name);
        }
        for (const QString &name : std::as_const(names))
            canonical.insert(squeezed(name), name);
        canonical.insert(QStringLiteral("stylefloat"), QStringLiteral("float"));
        canonical.insert(QStringLiteral("cssfloat"), QStringLiteral("float"));
        canonical.insert(QStringLiteral("wordwrap"), QStringLiteral("overflow-wrap"));
        canonical.insert(QStringLiteral("breakbefore"), QStringLiteral("page-break-before"));
        canonical.insert(QStringLiteral("breakafter"), QStringLiteral("page-break-after"));
        canonical.insert(QStringLiteral("breakinside"), QStringLiteral("page-break-inside"));
        canonical.insert(QStringLiteral("backgroundposition"), QStringLiteral("background-position"));
        canonical.insert(QStringLiteral("gridgap"), QStringLiteral("gap"));
        canonical.insert(QStringLiteral("gridrowgap"), QStringLiteral("row-gap"));
        canonical.insert(QStringLiteral("gridcolumngap"), QStringLiteral("column-gap"));
        for (const char *prefix : {"webkit", "moz", "ms", "o"})
            for (const char *name :
                 {"box-sizing",     "border-radius",   "box-shadow",      "transform",         "transform-origin",
                  "column-count",   "column-width",    "column-gap",      "columns",           "flex",
                  "flex-direction", "flex-wrap",       "flex-flow",       "align-items",       "align-self",
                  "flex-grow",      "flex-shrink",     "flex-basis",
                  "align-content",  "justify-content", "order",           "hyphens",           "user-select",
                  "tab-size",       "background-size", "background-clip", "background-origin", "filter",
                  "column-rule",    "column-rule-width", "column-rule-style", "column-rule-color", "column-fill",
                  "column-span"})
                prefixed.insert(QStringLiteral("-%1-%2").arg(QLatin1String(prefix), QLatin1String(name)),
                                QString::fromLatin1(name));
    }
    static QString squeezed(const QString &name)
    {
        QString result = name.toLower();
        result.remove(u'-');
        return result;
    }
    QHash<QString, QString> prefixed;
};

const Tables &tables()
{
    static const auto *const tables = new Tables;
    return *tables;
}

} // namespace

const PropertyInfo &propertyInfo(PropertyId id)
{
    return tables().infos[size_t(id)];
}

PropertyId propertyId(const QString &name)
{
    if (name.startsWith(QLatin1String("--"))) return PropertyId::Custom;
    return tables().ids.value(name, PropertyId::Unknown);
}

Shorthand shorthandId(const QString &name)
{
    return tables().shorthandIds.value(name, Shorthand::None);
}

QString shorthandName(Shorthand shorthand)
{
    return shorthand == Shorthand::None ? QString() : QString::fromLatin1(shorthands()[size_t(shorthand) - 1].name);
}

const std::vector<PropertyId> &longhandsOf(Shorthand shorthand)
{
    static const std::vector<PropertyId> none;
    return shorthand == Shorthand::None ? none : shorthands()[size_t(shorthand) - 1].longhands;
}

QString canonicalName(const QString &name)
{
    const QString trimmed = name.trimmed();
    if (trimmed.startsWith(QLatin1String("--"))) return trimmed;
    const QString lower = trimmed.toLower();
    if (lower.startsWith(u'-')) return tables().prefixed.value(lower, lower);
    const auto found = tables().canonical.constFind(Tables::squeezed(lower));
    return found == tables().canonical.constEnd() ? lower : *found;
}

QString physicalName(const QString &lower)
{
    static const QHash<QString, QString> names{{"margin-block-start", "margin-top"},
                                               {"margin-block-end", "margin-bottom"},
                                               {"padding-block-start", "padding-top"},
                                               {"padding-block-end", "padding-bottom"},
                                               {"inset-block-start", "top"},
                                               {"inset-block-end", "bottom"},
                                               {"border-block-start", "border-top"},
                                               {"border-block-end", "border-bottom"},
                                               {"inline-size", "width"},
                                               {"block-size", "height"},
                                               {"min-inline-size", "min-width"},
                                               {"min-block-size", "min-height"},
                                               {"max-inline-size", "max-width"},
                                               {"max-block-size", "max-height"}};
    return names.value(lower, lower);
}

bool isKnownProperty(const QString &canonical)
{
    return propertyId(canonical) != PropertyId::Unknown || shorthandId(canonical) != Shorthand::None;
}

QString scriptName(const QString &canonical)
{
    if (canonical == QLatin1String("float")) return QStringLiteral("styleFloat");
    QString result;
    bool capital = false;
    for (const QChar c : canonical) {
        if (c == u'-') {
            capital = !result.isEmpty();
            continue;
        }
        result += capital ? c.toUpper() : c;
        capital = false;
    }
    return result;
}

const QStringList &propertyNames()
{
    return tables().names;
}

} // namespace css
