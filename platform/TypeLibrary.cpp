// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TypeLibrary.h"

#include "base/Error.h"
#include "platform/ControlTables.h"
#include "platform/DispatchObject.h"
#include "platform/Interfaces.h"
#include "support/FailureReport.h"

#include <QSaveFile>
#include <QStringList>

/// The text is a heading a thing, `interface NAME`, `events NAME` or `enum NAME`, and below it a line a member:
///
///     interface IHTMLDOMAttribute
///       1601 nodeName get
///       1602 nodeValue get set
///       1603 specified get
///
/// Arguments in brackets may be left out, one with a "&" is taken by reference. A member that has its id and isn't
/// there yet is "unavailable"; of an event, only those of its arguments with a "&" can be answered.
namespace platform::typelibrary {

namespace {

struct Chapter
{
    QString kind;
    QString name;
    QStringList lines;

    QString body() const { return lines.isEmpty() ? QStringLiteral("") : lines.join(u'\n') + u'\n'; }
};

QString kindOf(const Member &member)
{
    if (member.isMissing) return QStringLiteral("unavailable");
    switch (member.kind) {
    case MemberKind::ReadOnly:
        return QStringLiteral("get");
    case MemberKind::WriteOnly:
        return QStringLiteral("set");
    case MemberKind::Property:
        return QStringLiteral("get set");
    case MemberKind::Method:
        break;
    }
    return QStringLiteral("method");
}

Chapter chapterOf(const Interface &interface)
{
    Chapter chapter{QStringLiteral("interface"), interface.name(), {}};
    for (const Member &member : interface.members())
        chapter.lines +=
            QStringLiteral("%1 %2 %3")
                .arg(QString::number(member.id), member.isMissing ? member.name : member.signature(), kindOf(member));
    return chapter;
}

QString eventSignature(const control::EventRow &event)
{
    return QStringLiteral("%1(%2)").arg(QLatin1String(event.name), QLatin1String(event.arguments));
}

std::vector<Chapter> chapters()
{
    std::vector<Chapter> all;
    const std::vector<const Interface *> published = publishedInterfaces();
    const QString controlName = QLatin1String(control::interfaceName);
    for (const Interface *interface : published)
        if (interface->name() == controlName) all.push_back(chapterOf(*interface));
    Chapter events{QStringLiteral("events"), QLatin1String(control::eventSetName), {}};
    for (const control::EventRow &event : control::events())
        events.lines += QStringLiteral("%1 %2 event").arg(QString::number(event.id), eventSignature(event));
    all.push_back(std::move(events));
    // What the control's proxy repeats has the control's id.
    Chapter proxied{QStringLiteral("events"), QStringLiteral("EventProxyEvents"), {}};
    for (const control::EventRow &event : control::events()) {
        if (QLatin1String(event.name) == QLatin1String("ToolsRefreshed"))
            proxied.lines += QStringLiteral("%1 %2 event").arg(QString::number(event.id), eventSignature(event));
    }
    all.push_back(std::move(proxied));
    for (const control::Enumeration &enumeration : control::enumerations()) {
        Chapter chapter{QStringLiteral("enum"), QLatin1String(enumeration.name), {}};
        for (const control::EnumerationValue &value : enumeration.values)
            chapter.lines += QStringLiteral("%1 %2").arg(QString::number(value.value), QLatin1String(value.name));
        all.push_back(std::move(chapter));
    }
    for (const Interface *interface : published)
        if (interface->name() != controlName) all.push_back(chapterOf(*interface));
    for (const Interface *interface : documentInterfaces())
        all.push_back(chapterOf(*interface));
    return all;
}

} // namespace

QString text()
{
    QString out = QStringLiteral("library %1 %2\n")
                      .arg(QLatin1String(support::applicationName), QLatin1String(support::applicationVersion));
    for (const Chapter &chapter : chapters()) {
        out += u'\n' + chapter.kind + u' ' + chapter.name + u'\n';
        for (const QString &line : chapter.lines)
            out += QLatin1String("  ") + line + u'\n';
    }
    return out;
}

QString text(const QString &name)
{
    for (const Chapter &chapter : chapters()) {
        if (chapter.name.compare(name, Qt::CaseInsensitive) == 0) return chapter.body();
    }
    return {};
}

QStringList names()
{
    QStringList list;
    for (const Chapter &chapter : chapters())
        list += chapter.name;
    return list;
}

void write(const QString &fileName)
{
    QSaveFile file(fileName);
    const QByteArray bytes = text().toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw base::Error(base::errors::fileInputOutput, file.errorString());
}

} // namespace platform::typelibrary
