// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/FontCache.h"

#include <QFontDatabase>
#include <QGlyphRun>
#include <QPainterPath>
#include <QTextLayout>
#include <QtEndian>

namespace layout {

namespace {

constexpr double shapingSize = 64;

int16_t int16At(const QByteArray &table, int at)
{
    return at + 2 <= table.size() ? qFromBigEndian<int16_t>(table.constData() + at) : int16_t(0);
}
uint16_t uint16At(const QByteArray &table, int at)
{
    return uint16_t(int16At(table, at));
}

struct Twin {
    const char *name;
    const char *family;
};
// The generic names, as browsers have them set. There is no font for `cursive` and `fantasy`.
constexpr Twin generics[] = {
    {"serif", "Liberation Serif"},
    {"sans-serif", "Liberation Sans"},
    {"monospace", "DejaVu Sans Mono"},
    {"system-ui", "DejaVu Sans"},
};
// Families that have a metric twin among the free fonts, and the names that fontconfig has for a kind of font.
constexpr Twin twins[] = {
    {"times", "Liberation Serif"},    {"times new roman", "Liberation Serif"}, {"tinos", "Liberation Serif"},
    {"arial", "Liberation Sans"},     {"helvetica", "Liberation Sans"},        {"arimo", "Liberation Sans"},
    {"courier", "Liberation Mono"},   {"courier new", "Liberation Mono"},      {"cousine", "Liberation Mono"},
    {"arial narrow", "Liberation Sans Narrow"},
    {"serif", "DejaVu Serif"},        {"sans", "DejaVu Sans"},                 {"monospace", "DejaVu Sans Mono"},
    {"system-ui", "DejaVu Sans"},
};

} // namespace

FontFace::FontFace(const QString &family, int weight, bool italic) : mFamily(family), mFont(family)
{
    mFont.setPixelSize(int(shapingSize));
    mFont.setHintingPreference(QFont::PreferNoHinting);
    mFont.setWeight(QFont::Weight(std::clamp(weight, 1, 1000)));
    mFont.setItalic(italic);
    mFont.setStyleStrategy(QFont::StyleStrategy(QFont::NoFontMerging | QFont::PreferMatch));
    mRaw = QRawFont::fromFont(mFont);
    readTables();
}

void FontFace::readTables()
{
    mUnitsPerEm = std::max(16, int(mRaw.unitsPerEm()));
    const QByteArray hhea = mRaw.fontTable("hhea"), os2 = mRaw.fontTable("OS/2"), post = mRaw.fontTable("post"), head = mRaw.fontTable("head");
    mAscent = int16At(hhea, 4);
    mDescent = -int16At(hhea, 6);
    mLineGap = int16At(hhea, 8);
    const bool typographic = os2.size() > 72 && (uint16At(os2, 62) & 0x80);
    if (typographic || (mAscent == 0 && mDescent == 0)) {
        mAscent = int16At(os2, 68);
        mDescent = -int16At(os2, 70);
        mLineGap = int16At(os2, 72);
    }
    if (mAscent == 0 && mDescent == 0) { // a bitmap font, or none at all
        mAscent = int(mRaw.ascent() / shapingSize * mUnitsPerEm);
        mDescent = int(mRaw.descent() / shapingSize * mUnitsPerEm);
    }
    mAverageWidth = int16At(os2, 2);
    mBoxWidth = int16At(head, 40) - int16At(head, 36);
    mXHeight = os2.size() >= 88 ? int16At(os2, 86) : 0;
    mXHeightIsDrawn = mXHeight <= 0;
    if (mXHeightIsDrawn) { // a round letter's, which reaches a little higher than a flat one
        const double drawn = -mRaw.pathForGlyph(glyph('o')).boundingRect().top();
        mXHeight = int(std::lround(drawn * mUnitsPerEm / shapingSize));
    }
    if (mXHeight <= 0) mXHeight = int(mRaw.xHeight() / shapingSize * mUnitsPerEm);
    if (mXHeight <= 0) mXHeight = mAscent / 2;
    mUnderlinePosition = -int16At(post, 8);
    mUnderlineThickness = std::max<int>(int16At(post, 10), mUnitsPerEm / 20);
    mKerns = !mRaw.fontTable("kern").isEmpty() || !mRaw.fontTable("GPOS").isEmpty() || !mRaw.fontTable("GSUB").isEmpty();
}

QRawFont FontFace::rawAt(double pixels) const
{
    const int key = int(std::lround(pixels * 64));
    const auto it = mSized.constFind(key);
    if (it != mSized.cend()) return *it;
    QRawFont font = mRaw;
    font.setPixelSize(pixels);
    mSized.insert(key, font);
    return font;
}

uint32_t FontFace::glyph(char32_t character) const
{
    const auto glyphs = mRaw.glyphIndexesForString(QString::fromUcs4(&character, 1));
    return glyphs.isEmpty() ? 0 : glyphs[0];
}

double FontFace::advance(uint32_t glyph) const
{
    const auto it = mAdvances.constFind(glyph);
    if (it != mAdvances.cend()) return *it;
    const auto advances = mRaw.advancesForGlyphIndexes({glyph});
    // Fonts are made in whole units; the step of 64ths that Qt rounds to is finer at this size.
    const double units = advances.isEmpty() ? 0 : std::round(advances[0].x() * mUnitsPerEm / shapingSize);
    mAdvances.insert(glyph, units);
    return units;
}

// Latin up to its extension A, and the punctuation that word processors write.
int FontFace::tableIndex(char16_t character)
{
    if (character < 0x180) return character; // a soft hyphen among them, which shows only at a line's end
    if (character >= 0x2010 && character < 0x2040) {
        const bool invisible = character >= 0x2028 && character <= 0x202F;
        return invisible || character == 0x2011 ? -1 : 0x180 + (character - 0x2010);
    }
    return -1;
}

char16_t FontFace::tableCharacter(int index)
{
    return index < 0x180 ? char16_t(index) : char16_t(index - 0x180 + 0x2010);
}

const FontFace::Entry &FontFace::learn(int index) const
{
    Entry &e = mEntries[std::size_t(index)];
    char16_t c = tableCharacter(index);
    if (c == '\t' || c == '\n' || c == '\r' || c == 0xA0) c = ' ';
    const bool invisible = c == 0xAD || c == 0x2060;
    const uint32_t g = glyph(invisible ? ' ' : c);
    e.glyph = uint16_t(g);
    e.advance = invisible ? int16_t(0) : int16_t(advance(g));
    e.known = true;
    return e;
}

int16_t FontFace::learnPair(int first, int second) const
{
    Row &row = mRows[std::size_t(first)];
    if (!row) {
        row = std::make_unique<std::array<int16_t, tableSize>>();
        row->fill(unknown);
    }
    int16_t &value = (*row)[std::size_t(second)];
    value = 0;
    if (!mKerns || first < 0x20 || second < 0x20 || first == 0xAD || second == 0xAD) return value;
    const Entry &a = entry(first), &b = entry(second);
    if (!a.glyph || !b.glyph) return value;
    QString text;
    text.append(QChar(tableCharacter(first))).append(QChar(tableCharacter(second)));
    QTextLayout shaped(text, mFont);
    shaped.beginLayout();
    shaped.createLine();
    shaped.endLayout();
    QList<quint32> glyphs;
    QList<QPointF> positions;
    for (const QGlyphRun &run : shaped.glyphRuns()) {
        glyphs += run.glyphIndexes();
        positions += run.positions();
    }
    const bool spaced = first == ' ' || first == 0xA0 || second == ' ' || second == 0xA0;
    if (glyphs.size() != 2 || (!spaced && (glyphs[0] != a.glyph || glyphs[1] != b.glyph))) {
        if (!spaced) value = ligature;
        return value;
    }
    const double distance = (positions[1].x() - positions[0].x()) * mUnitsPerEm / shapingSize;
    value = int16_t(std::lround(distance) - a.advance);
    return value;
}

Font::Font(const FontFace &face, double pixels, std::vector<const FontFace *> rest)
    : mFace(face), mRest(std::move(rest)), mSize(pixels),
      // COMPAT: glyphs are scaled to whole 64ths of a pixel, cut off; at 14.4 px a line would be a pixel longer.
      mScaledSize(std::floor(pixels * 64) / 64), mScale(mScaledSize / face.unitsPerEm())
{
    mAscent = Unit::px(int(std::lround(face.ascent() * mScale)));
    mDescent = Unit::px(int(std::lround(face.descent() * mScale)));
    mLineGap = Unit::px(int(std::lround(face.lineGap() * mScale)));
}

const FontFace &Font::faceFor(char32_t character) const
{
    if (mFace.glyph(character)) return mFace;
    const auto it = mFallback.constFind(character);
    if (it != mFallback.cend()) return **it;
    const FontFace *found = nullptr;
    for (const FontFace *face : mRest) {
        if (face->glyph(character)) {
            found = face;
            break;
        }
    }
    if (!found) found = FontCache::instance().fallback(character);
    if (!found) found = &mFace;
    mFallback.insert(character, found);
    return *found;
}

FontCache &FontCache::instance()
{
    static FontCache cache;
    return cache;
}

FontCache::FontCache()
{
    const QStringList families = QFontDatabase::families();
    for (const QString &family : families) {
        const QString plain = family.section(QLatin1String(" ["), 0, 0); // a foundry may follow
        // fontconfig lists its generic names as families; what they mean is a browser's business.
        static const QStringList generic{QStringLiteral("serif"), QStringLiteral("sans"), QStringLiteral("sans serif"),
                                         QStringLiteral("sans-serif"), QStringLiteral("monospace")};
        if (!generic.contains(plain.toLower())) mInstalled.insert(plain.toCaseFolded(), plain);
    }
}

QString FontCache::resolveFamily(const QString &name) const
{
    const QString folded = name.toCaseFolded();
    const auto it = mInstalled.constFind(folded);
    if (it != mInstalled.cend()) return *it;
    const auto stands = [this](const QString &asked, const auto &row) {
        return asked == QLatin1String(row.name) && mInstalled.contains(QString::fromLatin1(row.family).toCaseFolded());
    };
    for (const Twin &row : generics)
        if (stands(name, row)) return QString::fromLatin1(row.family);
    for (const Twin &row : twins)
        if (stands(folded, row)) return QString::fromLatin1(row.family);
    return {};
}

const FontFace &FontCache::face(const QString &family, int weight, bool italic)
{
    // The installed families have a regular and a bold cut; asking in steps of the two keeps the faces few.
    const int cut = weight >= 600 ? 700 : 400;
    const QString key = family + QLatin1Char('\n') + QString::number(cut) + (italic ? QLatin1Char('i') : QLatin1Char('r'));
    auto &face = mFaces[key];
    if (!face) face = std::make_shared<FontFace>(family, cut, italic);
    return *face;
}

const Font &FontCache::font(const QStringList &families, double pixels, int weight, bool italic)
{
    const QString key = families.join(QLatin1Char('\n')) + QLatin1Char('\r') + QString::number(pixels, 'g', 9) +
                        QLatin1Char(' ') + QString::number(weight >= 600 ? 700 : 400) + (italic ? QLatin1Char('i') : QLatin1Char('r'));
    auto &font = mFonts[key];
    if (font) return *font;
    std::vector<const FontFace *> faces;
    for (const QString &family : families) {
        const QString resolved = resolveFamily(family);
        if (!resolved.isEmpty()) faces.push_back(&face(resolved, weight, italic));
    }
    const QString standard = resolveFamily(QStringLiteral("serif"));
    const QString last = standard.isEmpty() ? QFontDatabase::systemFont(QFontDatabase::GeneralFont).family() : standard;
    faces.push_back(&face(last, weight, italic));
    const FontFace &first = *faces.front();
    faces.erase(faces.begin());
    font = std::make_shared<Font>(first, std::max(0.0, pixels), std::move(faces));
    return *font;
}

const FontFace *FontCache::fallback(char32_t character)
{
    auto it = mFallbackFamilies.find(character);
    if (it == mFallbackFamilies.end()) {
        QString found;
        QStringList wishes{QStringLiteral("DejaVu Sans"), QStringLiteral("DejaVu Serif"), QStringLiteral("DejaVu Sans Mono")};
        wishes += mInstalled.values();
        int tries = 0;
        for (const QString &family : std::as_const(wishes)) {
            if (!mInstalled.contains(family.toCaseFolded()) || ++tries > 60) continue;
            if (face(family, 400, false).glyph(character)) {
                found = family;
                break;
            }
        }
        it = mFallbackFamilies.insert(character, found);
    }
    return it->isEmpty() ? nullptr : &face(*it, 400, false);
}

// What a font doesn't say browsers measure on a letter that FreeType has fitted to whole pixels: up from 3/8 of one.
double Font::xHeight() const
{
    const double height = mFace.xHeight() * mScale;
    return mFace.isXHeightDrawn() ? std::floor(height + 0.625) : height;
}

css::FontUnits measureFont(const css::FontGroup &group, double size)
{
    const Font &font = FontCache::instance().font(group.families, size, group.weight, group.style != css::FontStyle::Normal);
    css::FontUnits units{size / 2, size / 2};
    if (font.xHeight() > 0) units.ex = font.xHeight();
    if (font.zeroWidth() > 0) units.ch = font.zeroWidth();
    return units;
}

} // namespace layout
