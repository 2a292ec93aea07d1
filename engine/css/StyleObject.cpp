// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleObject.h"

#include "engine/css/Services.h"
#include "engine/dom/Document.h"

namespace css {

static const QString styleName = QStringLiteral("style");

void StyleObject::ref()
{
    if (mElement)
        mElement->ref();
    else
        mRule->ref();
}

void StyleObject::deref()
{
    if (mElement)
        mElement->deref();
    else
        mRule->deref();
}

ValueMode StyleObject::mode() const
{
    return mElement && mElement->document().isQuirks() ? ValueMode::Quirks : ValueMode::Strict;
}

base::Ref<DeclarationBlock> StyleObject::block() const
{
    static const base::Ref<DeclarationBlock> *const none =
        new base::Ref<DeclarationBlock>(base::make<DeclarationBlock>());
    switch (mKind) {
    case Kind::Rule:
        return mRule->mRule->block;
    case Kind::Runtime:
        return mRuntime ? mRuntime : *none;
    case Kind::Inline:
        break;
    }
    static const dom::Atom style(styleName);
    const QString *text = mElement->attribute(style);
    if (!text || text->isEmpty()) return *none;
    if (Services *services = Services::of(*mElement)) return services->engine().inlineBlock(*text);
    return DeclarationBlock::parse(*text, mode());
}

void StyleObject::write(const base::Ref<DeclarationBlock> &block)
{
    if (mKind == Kind::Rule) {
        mRule->write(block);
    } else if (mKind == Kind::Runtime) {
        mRuntime = block->isEmpty() ? base::Ref<DeclarationBlock>() : block;
        if (Services *services = Services::of(*mElement)) services->runtimeChanged(*mElement, block->isEmpty());
    } else if (block->isEmpty()) {
        mElement->removeAttribute(styleName);
    } else {
        mElement->setAttribute(styleName, block->text());
    }
}

QString StyleObject::cssText() const
{
    return block()->text();
}

void StyleObject::setCssText(const QString &text)
{
    write(DeclarationBlock::parse(text, mode()));
}

QString StyleObject::getAttribute(const QString &name) const
{
    if (name.compare(QLatin1String("cssText"), Qt::CaseInsensitive) == 0) return cssText();
    const QString shown = mShown ? mShown->value(name) : QString();
    return shown.isNull() ? block()->value(name) : shown;
}

void StyleObject::showAs(const QString &name, const QString &value)
{
    mShown = mShown ? mShown->copy() : base::make<DeclarationBlock>();
    mShown->setValue(name, value);
    if (Services *services = Services::of(*mElement)) services->runtimeStyle(*mElement)->setAttribute(name, value);
}

QString StyleObject::property(const QString &name) const
{
    const QString value = getAttribute(name);
    return value.isNull() ? QStringLiteral("") : value;
}

void StyleObject::setAttribute(const QString &name, const QString &value)
{
    if (name.compare(QLatin1String("cssText"), Qt::CaseInsensitive) == 0) return setCssText(value);
    if (mShown && mShown->remove(name) && mElement->rareData().runtimeStyle)
        static_cast<StyleObject &>(*mElement->rareData().runtimeStyle).removeAttribute(name);
    const base::Ref<DeclarationBlock> before = block();
    auto after = before->copy();
    after->setValue(name, value);
    if (after->text() != before->text()) write(after);
}

void StyleObject::setAttribute(const QString &name, const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
        return setAttribute(name, value.toBool() ? QStringLiteral("true") : QStringLiteral("false"));
    case QMetaType::Double:
    case QMetaType::Float:
        return setAttribute(name, QString::number(value.toDouble(), 'g', 10));
    default:
        return setAttribute(name, value.toString());
    }
}

bool StyleObject::removeAttribute(const QString &name)
{
    auto after = block()->copy();
    if (!after->remove(name)) return false;
    write(after);
    return true;
}

bool StyleObject::isProperty(const QString &name)
{
    QString plain = name.toLower();
    plain.remove(u'-');
    return isKnownProperty(canonicalName(name)) || plain == QLatin1String("csstext") ||
           (plain.startsWith(QLatin1String("textdecoration")) &&
            (plain.endsWith(QLatin1String("none")) || plain.endsWith(QLatin1String("underline")) ||
             plain.endsWith(QLatin1String("overline")) || plain.endsWith(QLatin1String("linethrough")) ||
             plain.endsWith(QLatin1String("blink"))));
}

QStringList StyleObject::propertyNames()
{
    QStringList names{QStringLiteral("cssText"),
                      QStringLiteral("textDecorationNone"),
                      QStringLiteral("textDecorationUnderline"),
                      QStringLiteral("textDecorationOverline"),
                      QStringLiteral("textDecorationLineThrough"),
                      QStringLiteral("textDecorationBlink")};
    for (const QString &name : css::propertyNames())
        names << scriptName(name);
    return names;
}

} // namespace css
