// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/ScriptHost.h"

#include "control/Vellum5.h"
#include "control/Vellum5Parts.h"
#include "engine/changes/ChangeTracker.h"
#include "platform/EngineChangeLog.h"

#include <QApplication>

namespace scripting {

/// Every host there is: what the platform tells of a surface goes to the one whose control it belongs to.
static std::vector<ScriptHost *> &hosts()
{
    static std::vector<ScriptHost *> hosts;
    return hosts;
}

ScriptHost *ScriptHost::hostOf(const surface::HTMLEditor *surface)
{
    for (ScriptHost *host : hosts())
        if (host->mControl && &host->surface() == surface) return host;
    return nullptr;
}

ScriptHost::ScriptHost()
{
    hosts().push_back(this);
    if (hosts().size() > 1) return;
    // Between the manager and the engine's log stands one that scripts can feed.
    platform::setChangeDocumentWrapper(
        [](std::shared_ptr<IChangeDocument> live, surface::HTMLEditor &surface) -> std::shared_ptr<IChangeDocument> {
            ScriptHost *host = hostOf(&surface);
            if (!host) return live;
            host->mScripted = std::make_shared<ScriptedChangeLog>(std::move(live));
            return host->mScripted;
        });
    platform::setBatchObserver([](const surface::HTMLEditor *surface, const std::vector<int> &kinds) {
        if (ScriptHost *host = hostOf(surface)) host->mBatches.push_back(kinds);
    });
}

ScriptHost::~ScriptHost()
{
    file.reset();
    mSpy.reset();
    mControl.reset();
    hosts().erase(std::find(hosts().begin(), hosts().end(), this));
    if (!hosts().empty()) return;
    platform::setChangeDocumentWrapper({});
    platform::setBatchObserver({});
}

void ScriptHost::makeControl(PropertyBag *bag)
{
    file.reset();
    mSpy.reset();
    mControl.reset();
    mScripted.reset();
    mEvents.clear();
    mPropertyChanges.clear();
    mBatches.clear();
    mRecords.clear();
    mControl = bag ? std::make_unique<Vellum5>(*bag, nullptr, this) : std::make_unique<Vellum5>(nullptr, this);
    mSpy = std::make_unique<SignalSpy>(*mControl, [this](const Event &event) { heard(event); });
    QObject::connect(&surface(), &surface::HTMLEditor::documentLoaded, mControl.get(),
                     [this](const QString &text) { loaded(text); });
    mControl->resize(1000, 800);
    show();
    surface().setFocus();
}

void ScriptHost::loaded(const QString &text)
{
    mLoadedText = text;
    mRecords.clear();
    if (changes::ChangeTracker *tracker = surface().tracker())
        tracker->onRecord = [this](const QByteArray &record) { mRecords.push_back(record); };
}

void ScriptHost::forgetHistory()
{
    mBatches.clear();
}

Vellum5 &ScriptHost::control() const
{
    return *mControl;
}

ControlState &ScriptHost::state() const
{
    return mControl->state();
}

surface::HTMLEditor &ScriptHost::surface() const
{
    return *mControl->parts().ed;
}

QWidget &ScriptHost::source() const
{
    return *mControl->parts().txtHTMLSource;
}

void ScriptHost::show()
{
    mControl->show();
    QApplication::setActiveWindow(mControl.get()); // there is no window system to do it
}

bool ScriptHost::isLoading() const
{
    return mControl && surface().isLoading();
}

void ScriptHost::heard(const Event &event)
{
    if (event.name == QLatin1String("PropertyChanged")) {
        if (!mControl->parts().host.container) mPropertyChanges << event.arguments.front().value().toString();
        return;
    }
    mEvents << event.text();
    const auto found = mAnswers.constFind(event.name.toLower());
    if (found == mAnswers.constEnd()) return;
    const Answer answer = *found; // a command may change what is answered
    for (const auto &[name, value] : answer.arguments)
        for (const EventArgument &argument : event.arguments)
            if (argument.name.compare(name, Qt::CaseInsensitive) == 0) argument.write(value);
    for (const QString &command : answer.commands) runInHandler(command, event);
}

void ScriptHost::addEvent(const QString &name, const QString &argument, const platform::Value &value)
{
    mEvents << QStringLiteral("%1(%2=%3)").arg(name, argument, value.toJson());
}

void ScriptHost::answerEvent(const QString &event, const QString &argument, const platform::Value &value)
{
    mAnswers[event.toLower()].arguments.emplace_back(argument, value);
}

void ScriptHost::runOnEvent(const QString &event, const QString &command)
{
    mAnswers[event.toLower()].commands << command;
}

void ScriptHost::forgetEvent(const QString &event)
{
    mAnswers.remove(event.toLower());
}

} // namespace scripting
