// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileText.h"

#include "platform/HtmlScan.h"
#include "platform/TextEncoding.h"

#include <QCoreApplication>
#include <QHash>
#include <QRegularExpression>

namespace platform {

namespace {

constexpr qsizetype declarationLimit = 1024;
constexpr char utf8Mark[] = "\xEF\xBB\xBF";

QString tr(const char *text)
{
    return QCoreApplication::translate("FileHelper", text);
}

/// A text that every part of the system can hold.
QString clean(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else if (c.isNull() || c.isSurrogate())
            text[i] = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

struct LineEndCounts
{
    qsizetype lf = 0, crLf = 0, cr = 0;
    bool mixed() const { return (lf > 0) + (crLf > 0) + (cr > 0) > 1; }
};

LineEndCounts countLineEnds(const QString &text)
{
    LineEndCounts counts;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n') ++counts.lf;
        if (text[i] != u'\r') continue;
        if (i + 1 < text.size() && text[i + 1] == u'\n')
            ++counts.crLf, ++i;
        else
            ++counts.cr;
    }
    return counts;
}

void noteLineEnds(const QString &text, FileFormat &format)
{
    const LineEndCounts counts = countLineEnds(text);
    format.mixedLineEnds = counts.mixed();
    if (counts.crLf > counts.lf && counts.crLf >= counts.cr)
        format.lineEnds = LineEnds::CrLf;
    else if (counts.cr > counts.lf)
        format.lineEnds = LineEnds::Cr;
    else
        format.lineEnds = LineEnds::Lf;
}

QString withLineEnds(QString text, const FileFormat &format)
{
    if (format.mixedLineEnds && countLineEnds(text).mixed()) return text;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    if (format.lineEnds == LineEnds::CrLf)
        text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    else if (format.lineEnds == LineEnds::Cr)
        text.replace(QLatin1Char('\n'), QLatin1Char('\r'));
    return text;
}

/// The encoding that a declaration means in a file that could be read so far as to find it: one of two-byte units is a
/// lie by then.
std::optional<QString> declaredEncoding(const QString &html)
{
    const auto declaration = findCharsetDeclaration(html, declarationLimit);
    if (!declaration) return {};
    const auto name = encoding::byLabel(declaration->label);
    if (name && name->startsWith(QLatin1String("UTF-16"))) return QStringLiteral("UTF-8");
    return name;
}

/// Finds the encoding and gives the length of the byte order mark.
int detect(const QByteArray &bytes, FileFormat &format)
{
    if (bytes.startsWith(utf8Mark)) {
        format.encoding = QStringLiteral("UTF-8");
        return 3;
    }
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        format.encoding = bytes[0] == '\xFF' ? QStringLiteral("UTF-16LE") : QStringLiteral("UTF-16BE");
        return 2;
    }
    const QByteArray start = bytes.left(2);
    if (start == QByteArray("<\0", 2))
        format.encoding = QStringLiteral("UTF-16LE");
    else if (start == QByteArray("\0<", 2))
        format.encoding = QStringLiteral("UTF-16BE");
    else if (const auto declared = declaredEncoding(QString::fromLatin1(bytes.left(declarationLimit))))
        format.encoding = *declared;
    else if (!encoding::decode(bytes, QStringLiteral("UTF-8")).lossy)
        format.encoding = QStringLiteral("UTF-8");
    else
        format.encoding = QStringLiteral("windows-1252");
    return 0;
}

QByteArray markOf(const FileFormat &format)
{
    if (!format.byteOrderMark) return {};
    if (format.encoding == QLatin1String("UTF-8")) return utf8Mark;
    if (format.encoding == QLatin1String("UTF-16LE")) return "\xFF\xFE";
    if (format.encoding == QLatin1String("UTF-16BE")) return "\xFE\xFF";
    return {};
}

/// Would these bytes be read as the text that they were made of?
bool readsBack(const QByteArray &bytes, const QString &text, const FileFormat &format)
{
    const DecodedText decoded = decodeFileText(bytes);
    return decoded.format.encoding == format.encoding && decoded.text == text;
}

/// Writes what the encoding lacks as references. Nothing if one stands where no reference works.
std::optional<QString> withReferences(const QString &text, const QString &name, int &count)
{
    const std::vector<TextRange> barred = rangesWithoutReferences(text);
    std::size_t range = 0;
    QHash<char32_t, bool> holds;
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t code = text[i].unicode();
        if (code < 0x80) {
            result += text[i];
            continue;
        }
        const qsizetype position = i;
        if (text[i].isHighSurrogate()) {
            code = QChar::surrogateToUcs4(text[i], text[i + 1]);
            ++i;
        }
        const QString character = QString::fromUcs4(&code, 1);
        auto known = holds.constFind(code);
        if (known == holds.constEnd()) known = holds.insert(code, encoding::encode(character, name).has_value());
        if (*known) {
            result += character;
            continue;
        }
        while (range < barred.size() && barred[range].end <= position)
            ++range;
        const bool isBarred = range < barred.size() && barred[range].begin <= position;
        // References to these numbers mean the characters that windows-1252 has there.
        const bool isControl = code < 0xA0;
        if (isBarred || isControl) return {};
        result += QStringLiteral("&#%1;").arg(uint(code));
        ++count;
    }
    return result;
}

/// Changes what the text says about its encoding. False if it says nothing.
bool declareUtf8(QString &text)
{
    bool declared = false;
    if (const auto declaration = findCharsetDeclaration(text, text.size())) {
        text.replace(declaration->position, declaration->length, QStringLiteral("utf-8"));
        declared = true;
    }
    static const QRegularExpression xml(QStringLiteral("\\A\\s*<\\?xml\\s[^>]*?encoding\\s*=\\s*[\"']([^\"'>]*)[\"']"));
    const auto match = xml.match(text);
    if (match.hasMatch()) text.replace(match.capturedStart(1), match.capturedLength(1), QStringLiteral("utf-8"));
    return declared;
}

EncodedText encodedAsUtf8(QString text, FileFormat format)
{
    format.encoding = QStringLiteral("UTF-8");
    format.byteOrderMark = !declareUtf8(text);
    QByteArray bytes = markOf(format) + text.toUtf8();
    if (!format.byteOrderMark && !readsBack(bytes, text, format)) {
        // The declaration stands too far down to be found.
        format.byteOrderMark = true;
        bytes.prepend(utf8Mark);
    }
    return {bytes, format, {}, 0};
}

} // namespace

std::optional<CharsetDeclaration> findCharsetDeclaration(const QString &html, qsizetype limit)
{
    static const QRegularExpression inContent(QStringLiteral("charset\\s*=\\s*[\"']?([^\\s;\"']+)"),
                                              QRegularExpression::CaseInsensitiveOption);
    for (qsizetype at = html.indexOf(QLatin1Char('<')); at >= 0 && at < limit;
         at = html.indexOf(QLatin1Char('<'), at)) {
        if (html.mid(at, 4) == QLatin1String("<!--")) {
            at = html.indexOf(QLatin1String("-->"), at + 2);
            if (at < 0) return {};
            continue;
        }
        if (!isTagStart(html, at)) {
            ++at;
            continue;
        }
        const HtmlTag tag = scanTag(html, at);
        at = tag.end;
        if (tag.name != QLatin1String("meta")) continue;
        bool isContentType = false;
        std::optional<CharsetDeclaration> own, content;
        for (const HtmlAttribute &attribute : tag.attributes) {
            const QString value = html.mid(attribute.position, attribute.length);
            if (attribute.name == QLatin1String("http-equiv"))
                isContentType = value.trimmed().compare(QLatin1String("content-type"), Qt::CaseInsensitive) == 0;
            if (attribute.name == QLatin1String("charset") && !own)
                own = CharsetDeclaration{attribute.position, attribute.length, value};
            if (attribute.name != QLatin1String("content") || content) continue;
            const auto match = inContent.match(value);
            if (match.hasMatch())
                content = CharsetDeclaration{attribute.position + match.capturedStart(1), match.capturedLength(1),
                                             match.captured(1)};
        }
        const auto found = own ? own : isContentType ? content : std::nullopt;
        // An unknown label declares nothing; a later one may.
        if (found && encoding::byLabel(found->label)) return found;
    }
    return {};
}

DecodedText decodeFileText(const QByteArray &bytes)
{
    DecodedText result;
    const int mark = detect(bytes, result.format);
    result.format.byteOrderMark = mark > 0;
    encoding::Decoded decoded = encoding::decode(bytes.mid(mark), result.format.encoding);
    result.lossy = decoded.lossy;
    result.text = clean(std::move(decoded.text));
    noteLineEnds(result.text, result.format);
    return result;
}

EncodedText encodeFileText(const QString &text, const FileFormat &format)
{
    EncodedText result;
    result.format = format;
    if (format.byteOrderMark && format.encoding.isEmpty()) result.format.encoding = QStringLiteral("UTF-8");
    QString content = withLineEnds(clean(text), format);
    const bool isTwoByte = format.encoding.startsWith(QLatin1String("UTF-16"));
    if (!format.byteOrderMark && !isTwoByte) {
        const auto declared = declaredEncoding(content);
        if (format.encoding.isEmpty()) {
            result.format.encoding = declared.value_or(QStringLiteral("UTF-8"));
        } else if (declared && *declared != format.encoding) {
            result.format.encoding = *declared;
            result.message = tr("The file has been saved as %1, which its text declares.").arg(*declared);
        }
    }
    if (auto bytes = encoding::encode(content, result.format.encoding)) {
        result.bytes = *bytes;
    } else if (const auto referenced = withReferences(content, result.format.encoding, result.references)) {
        content = *referenced;
        result.bytes = encoding::encode(content, result.format.encoding).value_or(QByteArray());
    }
    result.bytes.prepend(markOf(result.format));
    if (content.isEmpty() || readsBack(result.bytes, content, result.format)) return result;
    if (isTwoByte) {
        // Nothing in such a file says what it is but its mark.
        result.format.byteOrderMark = true;
        result.bytes.prepend(markOf(result.format));
        return result;
    }
    const QString lacking = result.format.encoding;
    result = encodedAsUtf8(withLineEnds(clean(text), format), result.format);
    if (lacking != QLatin1String("UTF-8"))
        result.message =
            tr("The file has been saved as UTF-8, because it holds characters that %1 cannot hold.").arg(lacking);
    return result;
}

} // namespace platform
