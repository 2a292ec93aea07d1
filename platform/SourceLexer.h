// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CodeMaxScintilla.h"

#include <QByteArray>
#include <vector>

/// Colours HTML in the source editor.
///
/// Scintilla's own lexer for HTML isn't used: where its styles overlap, as they do in "&<!", it asserts, and a letter
/// typed into the page's source would end the host's process. This one takes any bytes, in one pass and without looking
/// further than the line.
///
/// What a line begins with (within a tag, a value, a comment, a script …) is kept as the state of the line above, so
/// that colouring may begin anew at any line.
class SourceLexer final : public QsciLexerCustom
{
    Q_OBJECT
public:
    enum Style { Text, Comment, Delimiter, String, Element, Attribute, Entity, TagText, styleCount };

    explicit SourceLexer(QObject *parent = nullptr) : QsciLexerCustom(parent) {}

    const char *language() const override { return "HTML"; }
    QString description(int style) const override;
    void styleText(int start, int end) override;

    /// The style of each byte of `text`, which begins at a line's start in `state`, 0 at the first line. `state` is
    /// then that behind the text, and `lines` has got the state behind each line's end in it.
    static QByteArray colour(const QByteArray &text, int &state, std::vector<int> &lines);
};
