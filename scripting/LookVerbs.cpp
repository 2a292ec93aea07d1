// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"

#include "control/Vellum5Parts.h"
#include "engine/dom/CharacterData.h"
#include "engine/surface/View.h"
#include "scripting/Inside.h"
#include "scripting/Objects.h"

#include <QFile>

// Looking at documents: what is printed, pictures, boxes.

namespace scripting {

using platform::Value;

namespace {

QString indented(int depth)
{
    return QString(depth * 2, u' ');
}

void printTree(Interpreter &in)
{
    IHTMLDocument2 *document = in.control().DOM();
    if (!document) throw ScriptError(QStringLiteral("no document is loaded"));
    for (const dom::Node *node = document->next(); node; node = node->next()) {
        const int depth = int(node->depth()) - 1;
        if (const dom::Element *element = node->asElement()) {
            QString line = indented(depth) + element->tagName();
            for (const dom::Attribute &attribute : element->attributeList())
                line += u' ' + attribute.name.text() + u'=' + Value::quoted(attribute.value);
            in.print(line);
        } else if (node->isText()) {
            in.print(indented(depth) + Value::quoted(node->nodeValue()));
        } else if (node->isComment()) {
            in.print(indented(depth) + QStringLiteral("<!--") + Value::quoted(node->nodeValue()) + QStringLiteral("-->"));
        } else {
            in.print(indented(depth) + QStringLiteral("!doctype"));
        }
    }
}

void printCaret(Interpreter &in)
{
    const QRect caret = in.host().surface().view().caretRect();
    if (caret.isEmpty() && caret.height() <= 0) return in.print(QStringLiteral("none"));
    in.print(QStringLiteral("%1 %2 %3").arg(caret.x()).arg(caret.y()).arg(caret.height()));
}

/// In body mode the control writes line ends around the body's text, which the parser takes for content.
QString withoutWrapper(Interpreter &in, QString text)
{
    if (!in.control().BodyMode()) return text;
    if (text.startsWith(QLatin1String("\r\n"))) text.remove(0, 2);
    while (text.endsWith(QLatin1String("\r\n"))) text.chop(2);
    return text;
}

/// From BODY down, each element as its name and its number among its siblings of that name, from 1.
QString pathOf(const dom::Element *element)
{
    QStringList steps;
    for (; element; element = element->parentElement()) {
        if (element->tagName() == QLatin1String("BODY")) {
            steps.prepend(QStringLiteral("BODY"));
            break;
        }
        int number = 1;
        for (const dom::Element *at = element->previousElementSibling(); at; at = at->previousElementSibling())
            if (at->tagName() == element->tagName()) ++number;
        steps.prepend(QStringLiteral("%1:%2").arg(element->tagName()).arg(number));
    }
    return steps.join(u'>');
}

void print(Interpreter &in, Words &words)
{
    const QString what = words.word("what to print");
    words.finish();
    IHTMLDocument2 *document = in.control().DOM();
    if (what == QLatin1String("html")) return in.printRaw(in.control().DocumentHTML());
    if (what == QLatin1String("source")) return in.printRaw(in.control().parts().txtHTMLSource->Text());
    if (what == QLatin1String("body")) {
        if (!document || !document->body()) throw ScriptError(QStringLiteral("no document is loaded"));
        return in.printRaw(withoutWrapper(in, document->body()->innerHTML()));
    }
    if (what == QLatin1String("marked")) return in.printRaw(withoutWrapper(in, markedBody(in)));
    if (what == QLatin1String("caret")) return printCaret(in);
    if (what == QLatin1String("tree")) return printTree(in);
    if (printInside(in, what)) return;
    if (what == QLatin1String("selected-html")) return in.printRaw(in.control().SelectedHTML());
    if (what == QLatin1String("selected-text")) return in.printRaw(in.control().SelectedText());
    if (what == QLatin1String("element")) return in.printRaw(pathOf(in.control().SelectedElement().get()));
    throw ScriptError(QStringLiteral("unknown: print %1").arg(what));
}

void boxes(Interpreter &in, Words &words)
{
    const QString name = words.word("a file");
    const bool sized = !words.atEnd();
    const int width = sized ? words.number("a width") : 1000;
    const int height = sized ? words.number("a height") : 800;
    QFile file(in.filePath(name));
    if (!file.open(QFile::WriteOnly)) throw ScriptError(file.errorString());
    file.write(in.host().surface().view().boxesAsJson(QSize(width, height)));
}

void screenshot(Interpreter &in, Words &words)
{
    const QString name = words.word("a file");
    const QString what = words.wordOr(QStringLiteral("all"));
    if (what != QLatin1String("visual") && what != QLatin1String("source") && what != QLatin1String("all"))
        throw ScriptError(QStringLiteral("visual, source or all"));
    QWidget *widget = what == QLatin1String("visual")   ? static_cast<QWidget *>(&in.host().surface())
                      : what == QLatin1String("source") ? &in.host().source()
                                                        : static_cast<QWidget *>(&in.control());
    if (!widget->grab().save(in.filePath(name))) throw ScriptError(QStringLiteral("can't write %1").arg(name));
}

void pdf(Interpreter &in, Words &words)
{
    const QString name = words.word("a file");
    if (!in.control().DOM()) throw ScriptError(QStringLiteral("no document is loaded"));
    if (!in.host().surface().printToPdf(in.filePath(name))) throw ScriptError(QStringLiteral("can't write %1").arg(name));
}

} // namespace

const std::vector<VerbRow> &lookVerbs()
{
    static const std::vector<VerbRow> rows = {
        {"print", print}, {"boxes", boxes}, {"screenshot", screenshot}, {"pdf", pdf}};
    return rows;
}

} // namespace scripting
