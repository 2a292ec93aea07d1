// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"

#include "base/Clock.h"
#include "control/Vellum5Parts.h"
#include "engine/changes/EditScope.h"
#include "platform/FileHelper.h"
#include "platform/TypeLibrary.h"
#include "scripting/Objects.h"
#include "support/SettingsStore.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QMouseEvent>
#include <cmath>

namespace scripting {

using platform::Value;

namespace {

Value looseValue(const QString &text)
{
    try {
        return platform::parseJson(text);
    } catch (const base::Error &) {
        return Value(text);
    }
}

QVariant toVariant(const Value &value)
{
    if (value.isBoolean()) return value.toBoolean();
    if (value.isInteger()) return value.toInteger();
    if (value.isNumber()) return value.toDouble();
    return value.toString();
}

Value fromVariant(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool: return Value(value.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong: return Value(qint64(value.toLongLong()));
    case QMetaType::UInt:
    case QMetaType::ULongLong: return Value(quint64(value.toULongLong()));
    case QMetaType::Double: return Value(value.toDouble());
    default: return Value(value.toString());
    }
}

void makeNew(Interpreter &in, Words &words)
{
    // The control whose event is being handled would go while it still works.
    if (in.isInHandler()) throw ScriptError(QStringLiteral("not within an event's handler"));
    if (words.command().line.trimmed() == QLatin1String("fresh")) {
        words.takeCommand();
        return in.host().makeControl(nullptr);
    }
    PropertyBag bag;
    while (!words.atEnd()) {
        words.skipBlanks();
        const QString &line = words.line();
        const qsizetype equals = line.indexOf(u'=', words.position());
        if (equals < 0) throw ScriptError(QStringLiteral("an entry is NAME=VALUE"));
        const QString name = line.mid(words.position(), equals - words.position()).trimmed();
        words.moveTo(equals + 1);
        const bool quoted = equals + 1 < line.size() && line[equals + 1] == u'"';
        const bool empty = equals + 1 >= line.size() || line[equals + 1] == u' ';
        bag.set(name, quoted ? QVariant(words.word("a value")) : empty ? QVariant(QString()) : toVariant(looseValue(words.word("a value"))));
    }
    in.host().makeControl(&bag);
}

void bag(Interpreter &in, Words &words)
{
    words.finish();
    PropertyBag bag;
    in.control().WriteProperties(bag);
    for (const auto &entry : bag.entries())
        in.print(entry.name + u'=' + fromVariant(entry.value).toJson() +
                 (entry.isDefault ? QStringLiteral(" (default)") : QString()));
}

void changed(Interpreter &in, Words &words)
{
    words.finish();
    for (const QString &name : in.host().takePropertyChanges()) in.print(name);
}

bool onOff(Words &words)
{
    const QString word = words.word("on or off");
    if (word != QLatin1String("on") && word != QLatin1String("off")) throw ScriptError(QStringLiteral("on or off"));
    return word == QLatin1String("on");
}

void userMode(Interpreter &in, Words &words)
{
    in.host().setUserMode(onOff(words));
}

void show(Interpreter &in, Words &words)
{
    words.finish();
    in.host().show();
}

void hide(Interpreter &in, Words &words)
{
    words.finish();
    in.control().hide();
}

void size(Interpreter &in, Words &words)
{
    const int width = words.number("a width"), height = words.number("a height");
    if (width < 0 || height < 0) throw ScriptError(QStringLiteral("a size isn't below 0"));
    in.control().resize(width, height);
}

void focus(Interpreter &in, Words &words)
{
    const QString where = words.word("visual, source or none");
    if (where == QLatin1String("visual"))
        in.host().surface().setFocus();
    else if (where == QLatin1String("source"))
        in.host().source().setFocus();
    else if (where != QLatin1String("none"))
        throw ScriptError(QStringLiteral("visual, source or none"));
    else if (QWidget *widget = QApplication::focusWidget())
        widget->clearFocus();
}

void setting(Interpreter &in, Words &words)
{
    const QString action = words.word("get, set or list");
    const QString key = words.word("a key");
    const qsizetype slash = key.indexOf(u'\\');
    const auto root = support::SettingsStore::rootByName(key.left(slash < 0 ? key.size() : slash));
    if (!root) throw ScriptError(QStringLiteral("unknown root: %1").arg(key));
    const QString path = slash < 0 ? QString() : key.mid(slash + 1);
    support::SettingsStore &store = support::SettingsStore::instance();
    if (action == QLatin1String("list")) {
        for (const QString &name : store.valueNames(*root, path)) in.print(Value::quoted(name));
        for (const QString &name : store.subKeys(*root, path)) in.print(name + u'\\');
        return;
    }
    const QString name = words.word("a name");
    if (action == QLatin1String("get"))
        in.printRaw(store.read(*root, path, name));
    else if (action == QLatin1String("set"))
        store.write(*root, path, name, words.text());
    else
        throw ScriptError(QStringLiteral("get, set or list"));
}

void clipboard(Interpreter &in, Words &words)
{
    const QString form = words.word("a form");
    QClipboard *board = QApplication::clipboard();
    if (form == QLatin1String("clear")) {
        in.clipboardOpen = false;
        return board->clear();
    }
    const QString mime = form == QLatin1String("IMAGE") ? QString() : mimeOfForm(form);
    if (!words.hasText()) {
        if (!board->mimeData()) return; // cleared
        const QImage image = mime.isEmpty() ? qvariant_cast<QImage>(board->mimeData()->imageData()) : QImage();
        if (!mime.isEmpty())
            in.printRaw(QString::fromUtf8(board->mimeData()->data(mime)));
        else if (!image.isNull())
            in.print(QStringLiteral("%1 %2").arg(image.width()).arg(image.height()));
        in.clipboardOpen = false;
        return;
    }
    auto *data = new QMimeData;
    // Forms that are set in a row belong together; the first replaces what was there.
    if (const QMimeData *before = in.clipboardOpen ? board->mimeData() : nullptr) {
        for (const QString &known : before->formats())
            if (known != QLatin1String("application/x-qt-image")) data->setData(known, before->data(known));
        if (before->hasImage()) data->setImageData(before->imageData()); // has no bytes of its own
    }
    if (mime.isEmpty())
        data->setImageData(readPicture(in.filePath(words.text())));
    else
        data->setData(mime, words.text().toUtf8());
    board->setMimeData(data);
    in.clipboardOpen = true;
}

void writeFile(Interpreter &in, Words &words)
{
    const QString name = words.word("a name");
    const QString path = in.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QFile::WriteOnly)) throw ScriptError(file.errorString());
    const QByteArray bytes = words.text().toUtf8();
    if (file.write(bytes) != bytes.size()) throw ScriptError(file.errorString());
}

void readFile(Interpreter &in, Words &words)
{
    QFile file(in.filePath(words.word("a name")));
    if (!file.open(QFile::ReadOnly)) throw ScriptError(file.errorString());
    in.printRaw(QString::fromUtf8(file.readAll()));
}

void children(Interpreter &in, Words &)
{
    Vellum5::Parts &parts = in.control().parts();
    const std::pair<const char *, QWidget *> rows[] = {
        {"ed", parts.ed},
        {"txtHTMLSource", parts.txtHTMLSource},
        {"FlatStrip", parts.strip},
        {"splitMain", parts.splitMain},
        {"splitPageMap", parts.splitPageMap},
        {"conEditors", parts.conEditors},
    };
    for (const auto &[name, child] : rows) {
        const QPoint at = child->mapTo(&in.control(), QPoint());
        in.print(QStringLiteral("%1 %2 %3 %4 %5 %6")
                     .arg(QLatin1String(name), child->isHidden() ? QStringLiteral("hidden") : QStringLiteral("shown"))
                     .arg(at.x())
                     .arg(at.y())
                     .arg(child->width())
                     .arg(child->height()));
    }
    const FlatStrip &strip = *parts.strip;
    for (const QString &key : strip.tabKeys())
        in.print(QStringLiteral("tab %1 %2%3")
                     .arg(key, strip.isTabVisible(key) ? QStringLiteral("shown") : QStringLiteral("hidden"),
                          strip.SelectedTab() == key ? QStringLiteral(" selected") : QString()));
}

void tab(Interpreter &in, Words &words)
{
    FlatStrip &strip = *in.control().parts().strip;
    const QString key = words.word("a key");
    const QRect place = strip.tabRect(key);
    if (place.isEmpty()) throw ScriptError(QStringLiteral("no tab to click: %1").arg(key));
    const QPointF at = place.center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, at, strip.mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&strip, &event);
    }
}

/// To where the splitter's own unit has that position, in one move.
void dragSplitter(Splitter &splitter, double position)
{
    const QRect bar = splitter.barRect();
    QWidget *handle = bar.isEmpty() ? nullptr : splitter.childAt(bar.center());
    if (!handle) throw ScriptError(QStringLiteral("the splitter has nothing to part"));
    const bool across = splitter.orientation() == Qt::Horizontal;
    const double all = across ? splitter.width() - bar.width() : splitter.height() - bar.height();
    const bool percent = splitter.positionMode() == Splitter::PositionMode::FirstPanePercent;
    const double first = percent ? all * position / 100 : all - position;
    const bool mirrored = across && splitter.isRightToLeft();
    const int to = int(std::lround(mirrored ? all - first : first));
    const QPointF from = handle->rect().center();
    const QPointF moved = from + (across ? QPointF(to - bar.x(), 0) : QPointF(0, to - bar.y()));
    const QPointF origin = handle->mapToGlobal(QPointF());
    const auto send = [&](QEvent::Type type, const QPointF &at, Qt::MouseButton button, Qt::MouseButtons held) {
        QMouseEvent event(type, at, origin + at, button, held, Qt::NoModifier);
        QApplication::sendEvent(handle, &event);
    };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, moved, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, moved, Qt::LeftButton, Qt::NoButton);
}

void splitter(Interpreter &in, Words &words)
{
    const QString name = words.word("a splitter");
    Vellum5::Parts &parts = in.control().parts();
    Splitter *which = name == QLatin1String("splitMain")      ? parts.splitMain
                      : name == QLatin1String("splitPageMap") ? parts.splitPageMap
                                                              : nullptr;
    if (!which) throw ScriptError(QStringLiteral("unknown splitter: %1").arg(name));
    if (words.atEnd()) return in.print(QString::number(which->Position()));
    bool fine = false;
    const double position = words.word("a position").toDouble(&fine);
    words.finish();
    if (!fine) throw ScriptError(QStringLiteral("a position is a number"));
    dragSplitter(*which, position);
}

void typelib(Interpreter &in, Words &words)
{
    if (words.atEnd()) return in.printRaw(platform::typelibrary::text());
    const QString name = words.word("an interface");
    const QString text = platform::typelibrary::text(name);
    if (text.isNull()) throw ScriptError(QStringLiteral("the type library has no %1").arg(name));
    in.printRaw(text);
}

/// A file's name or an address: a word, but blanks in it need no quotes.
QString nameToEnd(Words &words)
{
    if (!words.nextIs(u'"')) return words.text().trimmed();
    const QString name = words.word("a name");
    words.finish();
    return name;
}

void openFile(Interpreter &in, Words &words)
{
    if (!in.file().open(in.filePath(nameToEnd(words)))) throw ScriptError(QStringLiteral("not opened"));
}

void saveFile(Interpreter &in, Words &words)
{
    if (!in.file().save(in.filePath(nameToEnd(words)))) throw ScriptError(QStringLiteral("not saved"));
}

void view(Interpreter &in, Words &words)
{
    const QString name = words.word("a view");
    const int view = QStringList{QStringLiteral("visual"), QStringLiteral("source"), QStringLiteral("preview")}.indexOf(name);
    if (view < 0) throw ScriptError(QStringLiteral("visual, source or preview"));
    in.control().setEditView(view);
}

void format(Interpreter &in, Words &words) { in.control().setAutoFormatHTML(onOff(words)); }
void bodyMode(Interpreter &in, Words &words) { in.control().setBodyMode(onOff(words)); }
void baseUrl(Interpreter &in, Words &words) { in.control().setBaseURL(nameToEnd(words)); }
void editMode(Interpreter &in, Words &words) { in.control().setEditMode(words.number("an edit mode")); }
void html(Interpreter &in, Words &words) { in.control().setDocumentHTML(words.text()); }
void body(Interpreter &in, Words &words) { in.control().setBodyText(words.text()); }
void run(Interpreter &in, Words &words)
{
    platform::Arguments values{Value(words.word("a command"))};
    for (const Value &value : in.readValues(words)) values.push_back(value);
    platform::callMember(objectValue(&in.control()).toObject(), QStringLiteral("RunCommand"), std::move(values));
}
void unavailable(Interpreter &, Words &) { notAvailable(); }

void wait(Interpreter &in, Words &words)
{
    const int milliseconds = words.number("milliseconds");
    if (milliseconds < 0) throw ScriptError(QStringLiteral("time goes forward only"));
    base::Clock::instance().advance(milliseconds, [&in] { in.settle(); });
}

void echo(Interpreter &in, Words &words)
{
    in.print(words.text());
}

void withoutWaiting(Interpreter &in, Words &words)
{
    const bool waited = std::exchange(in.waits, false);
    const bool old = in.skipSettle;
    in.skipSettle = true;
    try {
        in.execute(words.takeCommand());
    } catch (...) {
        in.waits = waited;
        in.skipSettle = old;
        throw;
    }
    in.waits = waited;
}

void repeat(Interpreter &in, Words &words)
{
    const int count = words.number("a count");
    const Command command = words.takeCommand();
    for (int i = 0; i < count; ++i) in.execute(command);
}

void timeIt(Interpreter &in, Words &words)
{
    const QString before = in.output();
    QElapsedTimer timer;
    timer.start();
    in.execute(words.takeCommand());
    if (IHTMLDocument2 *document = in.control().DOM(); document && document->body()) document->body()->offsetBox();
    in.output() = before; // a figure is what was asked for
    in.print(QString::number(double(timer.nsecsElapsed()) / 1e6, 'f', 3));
}

} // namespace

QString mimeOfForm(const QString &form)
{
    if (form == QLatin1String("TEXT")) return QStringLiteral("text/plain");
    if (form == QLatin1String("HTML")) return QStringLiteral("text/html");
    if (form == QLatin1String("HTMLFORMAT")) return QStringLiteral("application/x-qt-windows-mime;value=\"HTML Format\"");
    throw ScriptError(QStringLiteral("unknown form: %1").arg(form));
}

QImage readPicture(const QString &file)
{
    const QImage image(file);
    if (image.isNull()) throw ScriptError(QStringLiteral("not a picture: %1").arg(file));
    return image;
}

void runInSecond(Interpreter &in, Words &words)
{
    if (!in.mSecond) {
        in.mSecond = std::make_unique<ScriptHost>();
        in.mSecond->runInHandler = in.mHost->runInHandler;
        PropertyBag bag;
        in.mSecond->makeControl(&bag);
    }
    std::swap(in.mHost, in.mSecond);
    try {
        in.execute(words.takeCommand());
    } catch (...) {
        std::swap(in.mHost, in.mSecond);
        throw;
    }
    std::swap(in.mHost, in.mSecond);
}

const std::vector<VerbRow> &hostVerbs()
{
    static const std::vector<VerbRow> rows = {
        {"new", makeNew},       {"bag", bag},           {"changed", changed},   {"usermode", userMode},
        {"show", show},         {"hide", hide},         {"size", size},         {"focus", focus},
        {"setting", setting},   {"clipboard", clipboard}, {"write", writeFile}, {"read", readFile},
        {"second", runInSecond}, {"children", children}, {"tab", tab},          {"splitter", splitter},
        {"typelib", typelib},   {"open", openFile},     {"save", saveFile},     {"html", html},
        {"body", body},         {"view", view},         {"format", format},     {"bodymode", bodyMode},
        {"baseurl", baseUrl},   {"editmode", editMode}, {"spell", unavailable}, {"run", run},
        {"wait", wait},         {"echo", echo},         {"nowait", withoutWaiting}, {"repeat", repeat},
        {"time", timeIt},
    };
    return rows;
}

} // namespace scripting
