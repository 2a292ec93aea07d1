// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SourceLexer.h"

namespace {

enum class Mode { Text, Comment, Tag, DoubleQuoted, SingleQuoted, Raw, RawComment };
/// What a tag leads into: text in which no tag but its own end counts.
enum class Raw { None, Script, Style };

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c + 32) : c;
}

bool isLetter(char c)
{
    return lower(c) >= 'a' && lower(c) <= 'z';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// One pass over a text.
class Colouring
{
public:
    Colouring(const QByteArray &text, int state, std::vector<int> &lines)
        : mText(text), mLines(lines), mStyles(text.size(), char(SourceLexer::Text)), mMode(Mode(state & 15)),
          mRaw(Raw(state >> 4 & 3)), mValue(state >> 6 & 1), mDeclaration(state >> 7 & 1)
    {
    }
    QByteArray run()
    {
        while (mAt < mText.size())
            step();
        return mStyles;
    }
    int state() const { return int(mMode) | int(mRaw) << 4 | int(mValue) << 6 | int(mDeclaration) << 7; }

private:
    char at(qsizetype i) const { return i < mText.size() ? mText[i] : '\0'; }
    bool startsWith(const char *text) const
    {
        qsizetype i = mAt;
        for (; *text; ++text, ++i)
            if (lower(at(i)) != *text) return false;
        return true;
    }
    /// Gives the next characters the style. A line may end in them.
    void take(qsizetype count, SourceLexer::Style style)
    {
        for (const qsizetype end = std::min(mAt + count, mText.size()); mAt < end; ++mAt) {
            mStyles[mAt] = char(style);
            const char c = mText[mAt];
            if (c == '\n' || (c == '\r' && at(mAt + 1) != '\n')) mLines.push_back(state());
        }
    }
    void step()
    {
        switch (mMode) {
        case Mode::Text:
            return text();
        case Mode::Comment:
            return comment();
        case Mode::Tag:
            return tag();
        case Mode::DoubleQuoted:
            return quoted('"');
        case Mode::SingleQuoted:
            return quoted('\'');
        case Mode::Raw:
            return raw();
        case Mode::RawComment:
            return rawComment();
        }
        mMode = Mode::Text; // a state that is none of ours
    }
    void text()
    {
        const char c = at(mAt);
        if (c == '<' && startsWith("<!--"))
            openComment();
        else if (c == '<' && startsTag())
            openTag();
        else if (const qsizetype length = c == '&' ? entityLength() : 0)
            take(length, SourceLexer::Entity);
        else
            take(1, SourceLexer::Text);
    }

    // Comments. One that is closed as soon as it opens is none for what follows, as for the parser.

    void openComment()
    {
        const bool closed = at(mAt + 4) == '>' || (at(mAt + 4) == '-' && at(mAt + 5) == '>');
        if (closed) return take(at(mAt + 4) == '>' ? 5 : 6, SourceLexer::Comment);
        mMode = Mode::Comment;
        take(4, SourceLexer::Comment);
    }
    void comment()
    {
        if (!startsWith("-->")) return take(1, SourceLexer::Comment);
        mMode = Mode::Text;
        take(3, SourceLexer::Comment);
    }

    // Tags

    bool startsTag() const
    {
        const char next = at(mAt + 1);
        return isLetter(next) || next == '!' || next == '?' || (next == '/' && isLetter(at(mAt + 2)));
    }
    void openTag()
    {
        const bool end = at(mAt + 1) == '/';
        mMode = Mode::Tag;
        mValue = false;
        take(end ? 2 : 1, SourceLexer::Delimiter);
        mDeclaration = !isLetter(at(mAt));
        const qsizetype from = mAt;
        while (mAt < mText.size() && !isBlank(at(mAt)) && at(mAt) != '>' && at(mAt) != '/' && at(mAt) != '<')
            take(1, SourceLexer::Element);
        const QByteArray name = mText.mid(from, std::min<qsizetype>(mAt - from, 16)).toLower();
        mRaw = end ? Raw::None : name == "script" ? Raw::Script : name == "style" ? Raw::Style : Raw::None;
    }
    void tag()
    {
        const char c = at(mAt);
        if (c == '>') {
            mMode = mRaw == Raw::None ? Mode::Text : Mode::Raw;
            return take(1, SourceLexer::Delimiter);
        }
        // Somebody writes a tag in front of others, and hasn't come to its end yet.
        if (c == '<' && startsTag()) return startsWith("<!--") ? openComment() : openTag();
        if (isBlank(c)) return take(1, SourceLexer::TagText);
        if ((c == '"' || c == '\'') && (mValue || mDeclaration)) {
            mValue = false;
            mMode = c == '"' ? Mode::DoubleQuoted : Mode::SingleQuoted;
            return take(1, SourceLexer::String);
        }
        if (mValue) return bareValue();
        if (c == '=') {
            mValue = true;
            return take(1, SourceLexer::Delimiter);
        }
        if (c == '/') return take(1, SourceLexer::Delimiter);
        do
            take(1, SourceLexer::Attribute);
        while (mAt < mText.size() && !isBlank(at(mAt)) && at(mAt) != '>' && at(mAt) != '/' && at(mAt) != '=');
    }
    void bareValue()
    {
        mValue = false;
        while (mAt < mText.size() && !isBlank(at(mAt)) && at(mAt) != '>') {
            if (const qsizetype length = at(mAt) == '&' ? entityLength() : 0)
                take(length, SourceLexer::Entity);
            else
                take(1, SourceLexer::TagText);
        }
    }
    void quoted(char mark)
    {
        if (at(mAt) == mark) mMode = Mode::Tag;
        take(1, SourceLexer::String);
    }

    // Scripts and style sheets

    bool endsRaw() const
    {
        const bool script = mRaw == Raw::Script;
        if (!startsWith(script ? "</script" : "</style")) return false;
        const char next = at(mAt + (script ? 8 : 7));
        return isBlank(next) || next == '/' || next == '>' || next == '\0';
    }
    void raw()
    {
        const char c = at(mAt);
        if (c == '<' && endsRaw()) return openTag();
        if (startsWith("/*")) {
            mMode = Mode::RawComment;
            return take(2, SourceLexer::Comment);
        }
        if (mRaw == Raw::Script && startsWith("//"))
            while (mAt < mText.size() && at(mAt) != '\n' && at(mAt) != '\r' && !(at(mAt) == '<' && endsRaw()))
                take(1, SourceLexer::Comment);
        else if (c == '"' || c == '\'')
            rawString(c);
        else
            take(1, SourceLexer::Text);
    }
    void rawComment()
    {
        if (at(mAt) == '<' && endsRaw()) return openTag();
        if (!startsWith("*/")) return take(1, SourceLexer::Comment);
        mMode = Mode::Raw;
        take(2, SourceLexer::Comment);
    }
    /// Ends with its line.
    void rawString(char mark)
    {
        take(1, SourceLexer::String);
        while (mAt < mText.size() && at(mAt) != '\n' && at(mAt) != '\r' && !(at(mAt) == '<' && endsRaw())) {
            const char c = at(mAt);
            const bool escaped = c == '\\' && at(mAt + 1) != '\n' && at(mAt + 1) != '\r';
            take(escaped ? 2 : 1, SourceLexer::String);
            if (c == mark) return;
        }
    }

    /// That of a complete reference at this place, 0 where there is none.
    qsizetype entityLength() const
    {
        constexpr qsizetype longest = 40; // names are shorter
        qsizetype i = mAt + 1;
        const bool number = at(i) == '#';
        if (number) ++i;
        if (number && lower(at(i)) == 'x') ++i;
        const qsizetype from = i;
        while (i - from < longest && (isDigit(at(i)) || isLetter(at(i))))
            ++i;
        return i > from && at(i) == ';' ? i + 1 - mAt : 0;
    }

    const QByteArray &mText;
    std::vector<int> &mLines;
    QByteArray mStyles;
    qsizetype mAt = 0;
    Mode mMode;
    Raw mRaw;
    bool mValue;       ///< an attribute's "=" has been read
    bool mDeclaration; ///< of a document type or the like, in which texts stand anywhere
};

} // namespace

QString SourceLexer::description(int style) const
{
    static const char *const names[styleCount] = {"Text",          "Comments",        "Tag Delimiters", "Strings",
                                                  "Element Names", "Attribute Names", "Entities",       "Tag Text"};
    return style >= 0 && style < styleCount ? QString::fromLatin1(names[style]) : QString();
}

QByteArray SourceLexer::colour(const QByteArray &text, int &state, std::vector<int> &lines)
{
    Colouring colouring(text, state, lines);
    const QByteArray styles = colouring.run();
    state = colouring.state();
    return styles;
}

void SourceLexer::styleText(int start, int end)
{
    QsciScintilla *const source = editor();
    if (!source || end <= start) return;
    using Message = QsciScintillaBase;
    QByteArray text(end - start + 1, '\0'); // with the mark that ends it
    source->SendScintilla(Message::SCI_GETTEXTRANGE, long(start), long(end), text.data());
    text.chop(1);
    long line = source->SendScintilla(Message::SCI_LINEFROMPOSITION, start);
    int state = line > 0 ? int(source->SendScintilla(Message::SCI_GETLINESTATE, line - 1)) : 0;
    std::vector<int> lines;
    const QByteArray styles = colour(text, state, lines);
    source->SendScintilla(Message::SCI_STARTSTYLING, static_cast<unsigned long>(start));
    source->SendScintilla(Message::SCI_SETSTYLINGEX, uintptr_t(styles.size()), styles.constData());
    for (const int atEnd : lines)
        source->SendScintilla(Message::SCI_SETLINESTATE, static_cast<unsigned long>(line++), long(atEnd));
}
