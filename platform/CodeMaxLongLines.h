// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class CodeMax;

/// Keeps the far parts of a very long line out of the source editor's layout.
///
/// Scintilla lays a line out whole, each character measured, for whatever it is asked about it: a picture of some
/// megabytes within an attribute would cost seconds a key. So a line of more than `longLine` bytes shows only a window
/// around the caret, or its head while the caret is in another line. What is hidden stays in the text: it is selected,
/// copied, found and deleted as ever, and shows as soon as the caret comes near. A note below the line tells of it.
///
/// Hiding is a style, which the colouring by the lexer overwrites: `colour` runs both in front of each painting.
class LongLines
{
public:
    explicit LongLines(CodeMax &editor) : mEditor(editor) {}

    /// To be called after the editor's styles were set up, which resets ours.
    void setUp();
    /// A text has come in between two byte positions: what is long is hidden before anything asks for its layout.
    void arrived(long start, long end);
    /// The caret may have moved: shows what is around it.
    void follow();
    /// Colours what is in view and hides what the colouring has brought back.
    void colour(long end);

    /// Whether a long line lies in the stretch, so that a part of it may be hidden.
    bool isIn(long start, long end) const;

    /// In bytes.
    static constexpr long longLine = 20000;
    static constexpr long step = 4000;

private:
    struct Stretch
    {
        long start = 0;
        long end = 0;
    };

    long send(unsigned int message, unsigned long wParam = 0, long lParam = 0) const;
    bool isLong(long line) const;
    Stretch lineOf(long line) const;
    Stretch windowOf(long line) const;
    bool settle();
    void setStyle(const Stretch &stretch, unsigned long style);
    void hide(long line);
    void hideWithin(long start, long end);
    void note(long line, const QString &text);

    CodeMax &mEditor;
    long mLine = 0;  // where the caret was
    long mPlace = 0; // the step within the line, from 0, that its window has in the middle
};
