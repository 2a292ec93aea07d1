// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleBuilder.h"

#include <QUrl>
#include <algorithm>

/// Fields that are lists: images and backgrounds, shadows, generated content.
namespace css {

using Id = PropertyId;

Image StyleBuilder::image(const Value &value, const DeclarationBlock *block)
{
    if (value.kind == Value::Kind::Raw) return {Image::Kind::Other, value.text};
    if (value.kind != Value::Kind::Url || value.text.isEmpty()) return {};
    const QString &base = block && !block->baseURL().isEmpty() ? block->baseURL() : mContext.baseURL;
    return {Image::Kind::Url, base.isEmpty() ? value.text : QUrl(base).resolved(QUrl(value.text)).toString()};
}

std::vector<Shadow> StyleBuilder::shadows(const Value &value)
{
    std::vector<Shadow> result;
    for (const Value &item : value.items) {
        if (item.items.size() < 6) continue;
        Shadow shadow;
        shadow.x = fixed(item.items[0]);
        shadow.y = fixed(item.items[1]);
        shadow.blur = fixed(item.items[2]);
        shadow.spread = fixed(item.items[3]);
        shadow.color = color(item.items[4]);
        shadow.inset = item.items[5].word == 1;
        result.push_back(shadow);
    }
    return result;
}

void StyleBuilder::setContent(const Value &value)
{
    RareGroup &rare = mStyle->writeRare();
    rare.hasContent = value.kind == Value::Kind::List;
    rare.contentNone = value.isWord(1);
    rare.content.clear();
    for (const Value &item : value.items) {
        ContentItem piece;
        switch (item.kind) {
        case Value::Kind::String:
            piece.text = item.text;
            break;
        case Value::Kind::Url:
            piece.kind = ContentItem::Kind::Url;
            piece.text = image(item, winner(Id::Content).block).text;
            break;
        case Value::Kind::Word:
            piece.kind = ContentItem::Kind(int(ContentItem::Kind::OpenQuote) + item.word);
            break;
        default:
            if (item.text == QLatin1String("attr")) {
                mUsedAttribute = true;
                if (mContext.element) piece.text = mContext.element->getAttribute(item.items[0].text);
                break;
            }
            const bool nested = item.text == QLatin1String("counters");
            piece.kind = nested ? ContentItem::Kind::Counters : ContentItem::Kind::Counter;
            piece.text = item.items[0].text;
            if (nested && item.items.size() > 1) piece.separator = item.items[1].text;
            const size_t style = nested ? 2 : 1;
            if (item.items.size() > style)
                for (const auto &[word, number] : propertyInfo(Id::ListStyleType).words)
                    if (item.items[style].text.compare(word, Qt::CaseInsensitive) == 0)
                        piece.listStyle = ListStyleType(number);
        }
        rare.content.push_back(std::move(piece));
    }
}

void StyleBuilder::applyLayer(Id id, BackgroundLayer &layer, size_t index)
{
    if (!isDeclared(id)) return;
    const Winner &won = winner(id);
    if (const ComputedStyle *from = sourceOf(id, *won.value)) {
        const auto &others = from->background().layers;
        const BackgroundLayer &other = others[index % others.size()];
        if (id == Id::BackgroundRepeat) layer.repeatX = other.repeatX, layer.repeatY = other.repeatY;
        if (id == Id::BackgroundAttachment) layer.attachment = other.attachment;
        if (id == Id::BackgroundPositionX) layer.x = other.x;
        if (id == Id::BackgroundPositionY) layer.y = other.y;
        if (id == Id::BackgroundOrigin) layer.origin = other.origin;
        if (id == Id::BackgroundClip) layer.clip = other.clip;
        if (id == Id::BackgroundImage) layer.image = other.image;
        if (id == Id::BackgroundSize)
            layer.sizing = other.sizing, layer.width = other.width, layer.height = other.height;
        return;
    }
    const Value &value = won.value->items[index % won.value->items.size()];
    if (id == Id::BackgroundImage) layer.image = image(value, won.block);
    if (id == Id::BackgroundAttachment) layer.attachment = BackgroundAttachment(value.word);
    if (id == Id::BackgroundPositionX) layer.x = length(value);
    if (id == Id::BackgroundPositionY) layer.y = length(value);
    if (id == Id::BackgroundOrigin) layer.origin = BackgroundBox(value.word);
    if (id == Id::BackgroundClip) layer.clip = BackgroundBox(value.word);
    if (id == Id::BackgroundRepeat && value.items.size() == 2) {
        layer.repeatX = BackgroundRepeat(value.items[0].word);
        layer.repeatY = BackgroundRepeat(value.items[1].word);
    }
    if (id == Id::BackgroundSize) {
        layer.sizing = value.kind == Value::Kind::Word ? BackgroundLayer::Sizing(value.word % 3)
                                                       : BackgroundLayer::Sizing::Explicit;
        if (value.items.size() == 2) {
            layer.width = length(value.items[0]);
            layer.height = length(value.items[1]);
        }
    }
}

void StyleBuilder::applyBackground()
{
    bool any = false;
    for (const uint8_t index : mSet)
        any = any || (Id(index) >= Id::BackgroundImage && Id(index) <= Id::BackgroundClip);
    if (!any) return;
    size_t count = 1;
    if (isDeclared(Id::BackgroundImage)) {
        const Value &value = *winner(Id::BackgroundImage).value;
        const ComputedStyle *from = sourceOf(Id::BackgroundImage, value);
        count = from ? from->background().layers.size() : value.items.size();
    }
    std::vector<BackgroundLayer> layers(std::clamp<size_t>(count, 1, 64));
    for (size_t i = 0; i < layers.size(); ++i)
        for (const Id id :
             {Id::BackgroundImage, Id::BackgroundRepeat, Id::BackgroundAttachment, Id::BackgroundPositionX,
              Id::BackgroundPositionY, Id::BackgroundSize, Id::BackgroundOrigin, Id::BackgroundClip})
            applyLayer(id, layers[i], i);
    if (layers != mStyle->background().layers) mStyle->writeBackground().layers = std::move(layers);
}

} // namespace css
