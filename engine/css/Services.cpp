// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Services.h"

#include "base/Fault.h"
#include "engine/dom/Assignment.h"
#include "engine/dom/Names.h"

#include <QFile>
#include <QStringDecoder>
#include <QUrl>
#include <algorithm>

namespace css {

using dom::Element;
namespace names = dom::names;

namespace {

constexpr qint64 maxSheetBytes = 16 << 20;
constexpr qsizetype maxImportDepth = 16;

bool isSheetLink(const Element &element)
{
    const QString *rel = element.attribute(names::rel);
    return rel && hasWord(*rel, u"stylesheet", Qt::CaseInsensitive) &&
           !hasWord(*rel, u"alternate", Qt::CaseInsensitive);
}

bool isCss(const Element &element)
{
    const QString *type = element.attribute(names::type);
    return !type || type->trimmed().isEmpty() ||
           type->trimmed().startsWith(QLatin1String("text/css"), Qt::CaseInsensitive);
}

QString textOf(const Element &element)
{
    QString text;
    for (const dom::Node *child = element.firstChild(); child; child = child->nextSibling())
        if (child->isText() || child->isComment()) text += static_cast<const dom::CharacterData *>(child)->data();
    return text;
}

/// The whole content as one text, as one assignment.
void setTextOf(Element &element, const QString &text)
{
    dom::Assignment assignment(element);
    dom::Node *first = element.firstChild();
    if (first && first->isText()) {
        while (first->nextSibling())
            first->nextSibling()->removeNode();
        first->setNodeValue(text);
    } else {
        while (element.lastChild())
            element.lastChild()->removeNode();
        if (!text.isEmpty()) element.appendChild(*element.document().createTextNode(text));
    }
    assignment.done();
}

} // namespace

QString decodeSheet(const QByteArray &bytes)
{
    auto encoding = QStringConverter::encodingForData(bytes);
    if (!encoding && bytes.startsWith("@charset \"")) {
        const qsizetype end = bytes.indexOf('"', 10);
        const QByteArray name = end > 0 ? bytes.mid(10, std::min<qsizetype>(end - 10, 64)) : QByteArray();
        encoding = QStringConverter::encodingForName(name.constData());
        if (encoding == QStringConverter::Utf16 || encoding == QStringConverter::Utf16LE ||
            encoding == QStringConverter::Utf16BE)
            encoding = QStringConverter::Utf8; // it was read as ASCII, so it can't be
    }
    QStringDecoder decoder(encoding.value_or(QStringConverter::Utf8));
    QString text = decoder(bytes);
    if (!encoding && decoder.hasError()) text = QString::fromLatin1(bytes);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return text;
}

std::optional<QString> FileSheetLoader::load(const QString &url)
{
    const QUrl parsed(url);
    QString path;
    if (parsed.scheme().compare(QLatin1String("file"), Qt::CaseInsensitive) == 0)
        path = parsed.toLocalFile();
    else if (url.startsWith(u'/') && !url.startsWith(QLatin1String("//")))
        path = url;
    if (path.isEmpty()) return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maxSheetBytes) return {};
    return decodeSheet(file.read(maxSheetBytes));
}

Services::Services(dom::Document &document, SheetLoader *loader)
    : mDocument(&document), mLoader(loader ? loader : &mFiles), mOwned(std::make_unique<StyleEngine>(document)),
      mEngine(*mOwned)
{
    start();
}

Services::Services(StyleEngine &engine, SheetLoader *loader)
    : mDocument(&engine.document()), mLoader(loader ? loader : &mFiles), mEngine(engine)
{
    start();
}

void Services::start()
{
    mDocument->styles = this;
    mDocument->addObserver(this);
    mEngine.runtimeBlock = [](const Element &element) -> base::Ref<DeclarationBlock> {
        const Element::RareData *rare = element.rareDataIfAny();
        if (!rare || !rare->runtimeStyle) return {};
        const auto &style = static_cast<const StyleObject &>(*rare->runtimeStyle);
        auto block = style.block();
        return block->isEmpty() ? base::Ref<DeclarationBlock>() : block;
    };
    mEngine.setSheetSource([this] { return activeSheets(); });
}

Services::~Services()
{
    mEngine.setSheetSource({});
    mEngine.runtimeBlock = {};
    mDocument->removeObserver(this);
    if (mDocument->styles == this) mDocument->styles = nullptr;
    for (auto &[element, sheet] : mOfElements)
        sheet->mServices = nullptr;
    for (auto &sheet : mCreated)
        sheet->mServices = nullptr;
}

Services *Services::of(const Element &element)
{
    return static_cast<Services *>(element.document().styles);
}

StyleObject *Services::style(Element &element)
{
    auto &slot = element.rareData().style;
    if (!slot) slot = base::Ref<base::RefCounted>(new StyleObject(element, StyleObject::Kind::Inline));
    return static_cast<StyleObject *>(slot.get());
}

StyleObject *Services::runtimeStyle(Element &element)
{
    auto &slot = element.rareData().runtimeStyle;
    if (!slot) slot = base::Ref<base::RefCounted>(new StyleObject(element, StyleObject::Kind::Runtime));
    return static_cast<StyleObject *>(slot.get());
}

void Services::runtimeChanged(Element &element, bool isEmpty)
{
    if (!element.isConnected()) return;
    const auto found = std::find(mRuntime.begin(), mRuntime.end(), &element);
    if (isEmpty && found != mRuntime.end()) mRuntime.erase(found);
    if (!isEmpty && found == mRuntime.end()) mRuntime.push_back(&element);
    mEngine.styleOfElementChanged(element);
}

void Services::inserted(dom::Node &node)
{
    for (dom::Node *at = &node; at; at = at->next(&node)) {
        Element *element = at->asElement();
        const Element::RareData *rare = element ? element->rareDataIfAny() : nullptr;
        if (rare && rare->runtimeStyle && !static_cast<const StyleObject &>(*rare->runtimeStyle).block()->isEmpty())
            mRuntime.push_back(element);
    }
}

void Services::removed(dom::Node &node, dom::ParentNode &, dom::Node *)
{
    if (!mRuntime.empty()) std::erase_if(mRuntime, [&node](const Element *element) { return node.contains(*element); });
    for (auto at = mOfElements.begin(); at != mOfElements.end();) {
        if (!node.contains(*at->first)) {
            ++at;
            continue;
        }
        at->second->mOwner = nullptr;
        at = mOfElements.erase(at);
    }
}

// The list of sheets

void Services::refreshOne(StyleSheetObject &sheet)
{
    Element &owner = *sheet.mOwner;
    if (sheet.mKind == StyleSheetObject::Kind::Style) {
        const QString text = isCss(owner) ? textOf(owner) : QString();
        if (sheet.mLoaded && text == sheet.mSource) return;
        sheet.mLoaded = true;
        sheet.mSource = text;
        sheet.load(text, QString());
        return;
    }
    const QString *href = owner.attribute(names::href);
    const QString address =
        href && !href->trimmed().isEmpty() && isCss(owner) ? mDocument->resolve(href->trimmed()) : QString();
    if (address == sheet.mAddress) return;
    sheet.mAddress = address;
    const std::optional<QString> text = address.isEmpty() ? std::nullopt : mLoader->load(address);
    sheet.mLoaded = text.has_value();
    sheet.load(text.value_or(QString()), address);
}

void Services::refreshSheets()
{
    std::vector<Element *> owners;
    for (Element *element : mDocument->elementsNamed(names::style))
        if (element->is(names::style)) owners.push_back(element);
    for (Element *element : mDocument->elementsNamed(names::link))
        if (element->is(names::link) && isSheetLink(*element)) owners.push_back(element);
    std::sort(owners.begin(), owners.end(), [](Element *a, Element *b) { return a->compareOrder(*b) < 0; });
    mSheets.clear();
    for (Element *owner : owners) {
        auto &sheet = mOfElements[owner];
        const auto kind = owner->is(names::link) ? StyleSheetObject::Kind::Link : StyleSheetObject::Kind::Style;
        if (!sheet) sheet = base::make<StyleSheetObject>(*this, kind, owner);
        refreshOne(*sheet);
        mSheets.push_back(sheet);
    }
    mSheets.insert(mSheets.end(), mCreated.begin(), mCreated.end());
}

uint32_t Services::styleSheetCount(dom::Document &)
{
    refreshSheets();
    return uint32_t(mSheets.size());
}

StyleSheetObject *Services::styleSheet(dom::Document &, uint32_t index)
{
    refreshSheets();
    return index < mSheets.size() ? mSheets[index].get() : nullptr;
}

StyleSheetObject *Services::createStyleSheet(dom::Document &, const QString &href)
{
    base::faults::check("IHTMLDocument2", "createStyleSheet");
    if (href.trimmed().isEmpty()) {
        mCreated.push_back(base::make<StyleSheetObject>(*this, StyleSheetObject::Kind::Created, nullptr));
        mCreated.back()->mLoaded = true;
        mEngine.sheetsChanged();
        return mCreated.back().get();
    }
    base::Ref<Element> link = mDocument->createElement(QStringLiteral("link"));
    link->setAttribute(QStringLiteral("rel"), QStringLiteral("stylesheet"));
    link->setAttribute(QStringLiteral("type"), QStringLiteral("text/css"));
    link->setAttribute(QStringLiteral("href"), href);
    Element *place = mDocument->head() ? mDocument->head() : mDocument->documentElement();
    if (!place) return nullptr;
    place->appendChild(*link);
    refreshSheets();
    const auto found = mOfElements.find(link.get());
    return found == mOfElements.end() ? nullptr : found->second.get();
}

bool Services::removeCreatedSheet(StyleSheetObject &sheet)
{
    const base::Ref<StyleSheetObject> keep(&sheet);
    const bool was = std::erase(mCreated, keep) > 0;
    if (was) mEngine.sheetsChanged();
    return was;
}

void Services::reloadSheets()
{
    mImports.clear();
    for (auto &[element, sheet] : mOfElements)
        if (sheet->mKind == StyleSheetObject::Kind::Link) sheet->mAddress = QString();
    mEngine.sheetsChanged();
}

void Services::sheetWritten(StyleSheetObject &sheet)
{
    mEngine.sheetsChanged();
    if (sheet.mKind != StyleSheetObject::Kind::Style || !sheet.mOwner) return;
    const base::Ref<StyleSheetObject> keep(&sheet);
    const base::Ref<Element> owner(sheet.mOwner);
    sheet.mSource = sheet.mSheet->text();
    setTextOf(*owner, sheet.mSource);
}

base::Ref<StyleSheet> Services::imported(const QString &url)
{
    const auto found = mImports.constFind(url);
    if (found != mImports.constEnd()) return *found;
    const std::optional<QString> text = mLoader->load(url);
    base::Ref<StyleSheet> sheet;
    if (text) {
        sheet = StyleSheet::parse(*text, mEngine.valueMode());
        for (Rule &rule : sheet->rules)
            if (rule.style) rule.style->block->setBaseURL(url);
    }
    mImports.insert(url, sheet);
    return sheet;
}

void Services::addActive(std::vector<ActiveSheet> &list, const base::Ref<StyleSheet> &sheet, const QString &base,
                         const MediaList &media, QStringList &chain)
{
    for (const Rule &rule : sheet->rules) {
        if (rule.kind != Rule::Kind::Import || chain.size() >= maxImportDepth) continue;
        const QString url = base.isEmpty() ? rule.url : QUrl(base).resolved(QUrl(rule.url)).toString();
        if (chain.contains(url) || !rule.media.suits(mEngine.medium())) continue;
        if (const auto other = imported(url)) {
            chain << url;
            addActive(list, other, url, media, chain); // as deep as the chain may grow
            chain.removeLast();
        }
        // Sheets that import each other in every way could be asked for without end.
        if (list.size() > 1000) return;
    }
    list.push_back({sheet, base, media});
}

std::vector<ActiveSheet> Services::activeSheets()
{
    refreshSheets();
    std::vector<ActiveSheet> list;
    for (const auto &sheet : mSheets) {
        const Element *owner = sheet->owningElement();
        static const dom::Atom disabled("disabled");
        if (sheet->disabled() || (owner && owner->hasAttribute(disabled))) continue;
        QStringList chain;
        const QString base = sheet->baseURL().isEmpty() ? mDocument->base() : sheet->baseURL();
        addActive(list, sheet->sheet(), base, MediaList::parse(sheet->media()), chain);
    }
    return list;
}

} // namespace css
