// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Bidi.h"

#include <algorithm>

namespace layout {

namespace {

using Direction = QChar::Direction;

constexpr int deepest = 125; // max_depth of the algorithm

bool isInitiator(Direction type)
{
    return type == QChar::DirLRI || type == QChar::DirRLI || type == QChar::DirFSI;
}

// Embeddings and what counts as nothing: they take no part in the later rules (X9).
bool isRemoved(Direction type)
{
    return type == QChar::DirLRE || type == QChar::DirRLE || type == QChar::DirLRO || type == QChar::DirRLO || type == QChar::DirPDF || type == QChar::DirBN;
}

bool isNeutral(Direction type)
{
    return type == QChar::DirB || type == QChar::DirS || type == QChar::DirWS || type == QChar::DirON || isInitiator(type) || type == QChar::DirPDI;
}

// One paragraph; characters are code points, marks among them.
class Paragraph
{
public:
    struct Character {
        char32_t code = 0;
        Direction type = QChar::DirON, original = QChar::DirON;
        uint8_t level = 0;
        uint8_t embedding = 0; // its level before the rules for what it is
        int match = -1; // an isolate's other end
    };
    std::vector<Character> characters;

    void resolve(uint8_t base)
    {
        mBase = base;
        matchIsolates();
        resolveExplicit();
        resolveSequences();
        resetBlanks();
    }

private:
    using Sequence = std::vector<int>;

    // BD9: which end belongs to which beginning.
    void matchIsolates()
    {
        std::vector<int> open;
        for (int i = 0; i < int(characters.size()); ++i) {
            if (isInitiator(characters[std::size_t(i)].type)) {
                open.push_back(i);
            } else if (characters[std::size_t(i)].type == QChar::DirPDI && !open.empty()) {
                characters[std::size_t(i)].match = open.back();
                characters[std::size_t(open.back())].match = i;
                open.pop_back();
            }
        }
    }

    // P2 and P3 between an isolate's ends.
    bool startsRightToLeft(std::size_t from) const
    {
        const std::size_t to = characters[from].match < 0 ? characters.size() : std::size_t(characters[from].match);
        for (std::size_t i = from + 1; i < to; ++i) {
            const Character &c = characters[i];
            if (c.type == QChar::DirL) return false;
            if (c.type == QChar::DirR || c.type == QChar::DirAL) return true;
            if (!isInitiator(c.type)) continue;
            if (c.match < 0) return false;
            i = std::size_t(c.match);
        }
        return false;
    }

    // X1 to X8.
    void resolveExplicit()
    {
        struct Status {
            uint8_t level;
            Direction override; // ON: none
            bool isolate;
        };
        std::vector<Status> stack{{mBase, QChar::DirON, false}};
        int overIsolates = 0, overEmbeddings = 0, isolates = 0;
        const auto nextLevel = [&](bool rightToLeft) {
            const int level = stack.back().level;
            return rightToLeft ? (level + 1) | 1 : (level + 2) & ~1;
        };
        const auto overridden = [&](Character &c) {
            c.level = stack.back().level;
            if (stack.back().override != QChar::DirON) c.type = stack.back().override;
        };
        for (std::size_t i = 0; i < characters.size(); ++i) {
            Character &c = characters[i];
            const Direction type = c.type;
            switch (type) {
            case QChar::DirRLE:
            case QChar::DirLRE:
            case QChar::DirRLO:
            case QChar::DirLRO: {
                const int level = nextLevel(type == QChar::DirRLE || type == QChar::DirRLO);
                c.level = stack.back().level;
                const Direction to = type == QChar::DirRLO ? QChar::DirR : type == QChar::DirLRO ? QChar::DirL : QChar::DirON;
                if (level <= deepest && !overIsolates && !overEmbeddings)
                    stack.push_back({uint8_t(level), to, false});
                else if (!overIsolates)
                    ++overEmbeddings;
                break;
            }
            case QChar::DirRLI:
            case QChar::DirLRI:
            case QChar::DirFSI: {
                const bool turned = type == QChar::DirRLI || (type == QChar::DirFSI && startsRightToLeft(i));
                overridden(c);
                const int level = nextLevel(turned);
                if (level <= deepest && !overIsolates && !overEmbeddings) {
                    ++isolates;
                    stack.push_back({uint8_t(level), QChar::DirON, true});
                } else {
                    ++overIsolates;
                }
                break;
            }
            case QChar::DirPDI:
                if (overIsolates) {
                    --overIsolates;
                } else if (isolates) {
                    overEmbeddings = 0;
                    while (!stack.back().isolate) stack.pop_back();
                    stack.pop_back();
                    --isolates;
                }
                overridden(c);
                break;
            case QChar::DirPDF:
                c.level = stack.back().level;
                if (overIsolates) break;
                if (overEmbeddings)
                    --overEmbeddings;
                else if (!stack.back().isolate && stack.size() > 1)
                    stack.pop_back();
                break;
            case QChar::DirB:
                c.level = mBase;
                break;
            case QChar::DirBN:
                c.level = stack.back().level;
                break;
            default:
                overridden(c);
            }
        }
    }

    // X10: runs of one level, joined across isolates.
    void resolveSequences()
    {
        for (Character &c : characters) c.embedding = c.level;
        std::vector<Sequence> runs;
        std::vector<int> runOf(characters.size(), -1);
        int last = -1;
        for (int i = 0; i < int(characters.size()); ++i) {
            const Character &c = characters[std::size_t(i)];
            if (isRemoved(c.original)) continue;
            if (last < 0 || characters[std::size_t(last)].level != c.level) runs.emplace_back();
            runs.back().push_back(i);
            runOf[std::size_t(i)] = int(runs.size()) - 1;
            last = i;
        }
        for (const Sequence &run : runs) {
            const Character &first = characters[std::size_t(run.front())];
            if (first.original == QChar::DirPDI && first.match >= 0) continue; // goes on with its beginning's
            Sequence sequence = run;
            while (true) {
                const Character &end = characters[std::size_t(sequence.back())];
                if (!isInitiator(end.original) || end.match < 0) break;
                const Sequence &rest = runs[std::size_t(runOf[std::size_t(end.match)])];
                if (rest.front() != end.match) break;
                sequence.insert(sequence.end(), rest.begin(), rest.end());
            }
            resolveSequence(sequence);
        }
        uint8_t before = mBase;
        for (Character &c : characters) {
            if (isRemoved(c.original))
                c.level = before;
            else
                before = c.level;
        }
    }

    Direction sideOf(uint8_t a, uint8_t b) const { return std::max(a, b) & 1 ? QChar::DirR : QChar::DirL; }

    void resolveSequence(const Sequence &sequence)
    {
        const uint8_t level = at(sequence, 0).level;
        int before = sequence.front() - 1, after = sequence.back() + 1;
        while (before >= 0 && isRemoved(characters[std::size_t(before)].original)) --before;
        while (after < int(characters.size()) && isRemoved(characters[std::size_t(after)].original)) ++after;
        const Character &end = characters[std::size_t(sequence.back())];
        const bool open = isInitiator(end.original) && end.match < 0;
        mStart = sideOf(level, before < 0 ? mBase : characters[std::size_t(before)].embedding);
        mEnd = sideOf(level, open || after >= int(characters.size()) ? mBase : characters[std::size_t(after)].embedding);
        mLevelSide = level & 1 ? QChar::DirR : QChar::DirL;
        resolveWeak(sequence);
        resolveBrackets(sequence);
        resolveNeutral(sequence);
        for (const int i : sequence) { // I1, I2
            Character &c = characters[std::size_t(i)];
            const bool number = c.type == QChar::DirEN || c.type == QChar::DirAN;
            if (level & 1)
                c.level = uint8_t(level + (c.type == QChar::DirL || number ? 1 : 0));
            else
                c.level = uint8_t(level + (c.type == QChar::DirR ? 1 : number ? 2 : 0));
        }
    }

    Character &at(const Sequence &sequence, std::size_t i) { return characters[std::size_t(sequence[i])]; }

    // W1 to W7.
    void resolveWeak(const Sequence &sequence)
    {
        Direction strong = mStart, previous = mStart;
        for (const int i : sequence) {
            Direction &type = characters[std::size_t(i)].type;
            if (type == QChar::DirNSM) type = isInitiator(previous) || previous == QChar::DirPDI ? QChar::DirON : previous;
            previous = type;
            if (type == QChar::DirL || type == QChar::DirR || type == QChar::DirAL) strong = type;
            if (type == QChar::DirEN && strong == QChar::DirAL) type = QChar::DirAN;
        }
        for (const int i : sequence)
            if (characters[std::size_t(i)].type == QChar::DirAL) characters[std::size_t(i)].type = QChar::DirR;
        for (std::size_t i = 1; i + 1 < sequence.size(); ++i) {
            const Direction a = at(sequence, i - 1).type, b = at(sequence, i + 1).type;
            Direction &type = at(sequence, i).type;
            if (type == QChar::DirES && a == QChar::DirEN && b == QChar::DirEN) type = QChar::DirEN;
            if (type == QChar::DirCS && a == b && (a == QChar::DirEN || a == QChar::DirAN)) type = a;
        }
        for (std::size_t i = 0; i < sequence.size();) {
            if (at(sequence, i).type != QChar::DirET) {
                ++i;
                continue;
            }
            std::size_t end = i;
            while (end < sequence.size() && at(sequence, end).type == QChar::DirET) ++end;
            const bool number = (i > 0 && at(sequence, i - 1).type == QChar::DirEN) || (end < sequence.size() && at(sequence, end).type == QChar::DirEN);
            for (; i < end; ++i) at(sequence, i).type = number ? QChar::DirEN : QChar::DirON;
        }
        strong = mStart;
        for (const int i : sequence) {
            Direction &type = characters[std::size_t(i)].type;
            if (type == QChar::DirES || type == QChar::DirCS) type = QChar::DirON;
            if (type == QChar::DirL || type == QChar::DirR) strong = type;
            if (type == QChar::DirEN && strong == QChar::DirL) type = QChar::DirL;
        }
    }

    static Direction strongOf(Direction type)
    {
        if (type == QChar::DirL) return QChar::DirL;
        return type == QChar::DirR || type == QChar::DirEN || type == QChar::DirAN ? QChar::DirR : QChar::DirON;
    }

    // N0: a pair of brackets has one direction, that of what it encloses.
    void resolveBrackets(const Sequence &sequence)
    {
        const auto canonical = [](char32_t c) { return c == 0x2329 ? char32_t(0x3008) : c == 0x232A ? char32_t(0x3009) : c; };
        std::vector<std::pair<char32_t, std::size_t>> open;
        std::vector<std::pair<std::size_t, std::size_t>> pairs;
        for (std::size_t i = 0; i < sequence.size(); ++i) {
            const Character &c = at(sequence, i);
            if (c.type != QChar::DirON || !QChar::hasMirrored(c.code)) continue;
            const QChar::Category category = QChar::category(c.code);
            if (category == QChar::Punctuation_Open) {
                if (open.size() == 63) break;
                open.emplace_back(canonical(QChar::mirroredChar(c.code)), i);
            } else if (category == QChar::Punctuation_Close) {
                const auto found = std::find_if(open.rbegin(), open.rend(), [&](const auto &each) { return each.first == canonical(c.code); });
                if (found == open.rend()) continue;
                pairs.emplace_back(found->second, i);
                open.erase(found.base() - 1, open.end());
            }
        }
        std::sort(pairs.begin(), pairs.end());
        for (const auto &[from, to] : pairs) resolvePair(sequence, from, to);
    }

    void resolvePair(const Sequence &sequence, std::size_t from, std::size_t to)
    {
        bool other = false, own = false;
        for (std::size_t i = from + 1; i < to && !own; ++i) {
            const Direction side = strongOf(at(sequence, i).type);
            own = side == mLevelSide;
            other = other || (side != QChar::DirON && !own);
        }
        if (!own && !other) return;
        Direction got = mLevelSide;
        if (!own) {
            Direction context = mStart;
            for (std::size_t i = from; i-- > 0;)
                if (const Direction side = strongOf(at(sequence, i).type); side != QChar::DirON) {
                    context = side;
                    break;
                }
            got = context;
        }
        for (const std::size_t end : {from, to}) {
            at(sequence, end).type = got;
            for (std::size_t i = end + 1; i < sequence.size() && at(sequence, i).original == QChar::DirNSM; ++i) at(sequence, i).type = got;
        }
    }

    // N1 and N2.
    void resolveNeutral(const Sequence &sequence)
    {
        for (std::size_t i = 0; i < sequence.size();) {
            if (!isNeutral(at(sequence, i).type)) {
                ++i;
                continue;
            }
            std::size_t end = i;
            while (end < sequence.size() && isNeutral(at(sequence, end).type)) ++end;
            const Direction before = i > 0 ? strongOf(at(sequence, i - 1).type) : mStart;
            const Direction after = end < sequence.size() ? strongOf(at(sequence, end).type) : mEnd;
            for (; i < end; ++i) at(sequence, i).type = before == after ? before : mLevelSide;
        }
    }

    // L1, as far as it doesn't ask for lines: blanks at a line's end have no place there.
    void resetBlanks()
    {
        bool resets = true;
        for (std::size_t i = characters.size(); i-- > 0;) {
            Character &c = characters[i];
            const bool separator = c.original == QChar::DirB || c.original == QChar::DirS;
            const bool blank = c.original == QChar::DirWS || isInitiator(c.original) || c.original == QChar::DirPDI || isRemoved(c.original);
            resets = separator || (resets && blank);
            if (resets) c.level = mBase;
        }
    }

    uint8_t mBase = 0;
    Direction mStart = QChar::DirL, mEnd = QChar::DirL, mLevelSide = QChar::DirL;
};

bool turns(Direction type)
{
    return type == QChar::DirR || type == QChar::DirAL || type == QChar::DirAN || type == QChar::DirRLE || type == QChar::DirRLO || type == QChar::DirRLI;
}

bool anythingTurns(const QString &text, const std::vector<BidiMark> &marks)
{
    for (const BidiMark &mark : marks)
        if (turns(QChar::direction(mark.mark))) return true;
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() >= 0x590 && (c.isSurrogate() || turns(c.direction())); });
}

} // namespace

std::vector<uint8_t> bidiLevels(const QString &text, bool rightToLeft, const std::vector<BidiMark> &marks)
{
    if (!rightToLeft && !anythingTurns(text, marks)) return {};
    const uint8_t base = rightToLeft ? 1 : 0;
    std::vector<uint8_t> levels(std::size_t(text.size()), base);
    Paragraph paragraph;
    std::vector<int> places; // in the text, of the paragraph's characters; -1 for a mark
    const auto add = [&](char32_t code, int place) {
        Paragraph::Character c;
        c.code = code;
        c.type = c.original = QChar::direction(code);
        paragraph.characters.push_back(c);
        places.push_back(place);
    };
    const auto finish = [&] {
        paragraph.resolve(base);
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (places[i] < 0) continue;
            levels[std::size_t(places[i])] = paragraph.characters[i].level;
            if (QChar::requiresSurrogates(paragraph.characters[i].code)) levels[std::size_t(places[i]) + 1] = paragraph.characters[i].level;
        }
        paragraph.characters.clear();
        places.clear();
    };
    auto mark = marks.begin();
    for (qsizetype i = 0; i <= text.size(); ++i) {
        for (; mark != marks.end() && qsizetype(mark->at) <= i; ++mark) add(mark->mark, -1);
        if (i == text.size()) break;
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        add(pair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : char32_t(text[i].unicode()), int(i));
        if (paragraph.characters.back().type == QChar::DirB) finish();
        if (pair) ++i;
    }
    finish();
    return levels;
}

} // namespace layout
