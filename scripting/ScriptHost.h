// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HostContainer.h"
#include "platform/PropertyBag.h"
#include "scripting/HostFile.h"
#include "scripting/SignalSpy.h"
#include "undo/ScriptedChangeLog.h"

#include <QStringList>
#include <memory>

class Vellum5;
struct ControlState;
namespace surface {
class HTMLEditor;
}

namespace scripting {

/// A host with one control: makes it, hears its events and answers them.
class ScriptHost : public HostContainer
{
public:
    /// Runs a command inside an event's handler.
    std::function<void(const QString &command, const Event &event)> runInHandler;

    ScriptHost();
    ~ScriptHost() override;

    /// Drops the control and makes a new one that reads the bag; without a bag, one that never had any.
    void makeControl(PropertyBag *bag);
    Vellum5 &control() const;
    ControlState &state() const;
    surface::HTMLEditor &surface() const;
    QWidget &source() const;
    void setUserMode(bool on) { mUserMode = on; }
    /// Shown and activated; the focus is where it was.
    void show();
    bool isLoading() const;
    std::unique_ptr<HostFile> file; ///< of the control's document, once a script asks for it

    QStringList takeEvents() { return std::exchange(mEvents, {}); }
    /// Something that no signal tells, in an event's form.
    void addEvent(const QString &name, const QString &argument, const platform::Value &value);
    QStringList takePropertyChanges() { return std::exchange(mPropertyChanges, {}); }
    void answerEvent(const QString &event, const QString &argument, const platform::Value &value);
    void runOnEvent(const QString &event, const QString &command);
    void forgetEvent(const QString &event);

    // The change log
    ScriptedChangeLog *changeLog() const { return mScripted.get(); }
    /// The kinds of the records that were read, a list a batch.
    std::vector<std::vector<int>> takeBatches() { return std::exchange(mBatches, {}); }
    /// Every record of the document since its load, for a replay.
    const std::vector<QByteArray> &records() const { return mRecords; }
    /// The text that the surface loaded last.
    const QString &loadedText() const { return mLoadedText; }
    void forgetHistory();

private:
    static ScriptHost *hostOf(const surface::HTMLEditor *surface);
    bool UserMode() const override { return mUserMode; }
    void PropertyChanged(const QString &Name) override { mPropertyChanges << Name; }
    void heard(const Event &event);
    void loaded(const QString &text);

    struct Answer {
        std::vector<std::pair<QString, platform::Value>> arguments;
        QStringList commands;
    };
    std::unique_ptr<Vellum5> mControl;
    std::unique_ptr<SignalSpy> mSpy;
    bool mUserMode = true;
    QStringList mEvents;
    QStringList mPropertyChanges;
    QHash<QString, Answer> mAnswers; // by the event's name in lower case
    std::shared_ptr<ScriptedChangeLog> mScripted;
    std::vector<std::vector<int>> mBatches;
    std::vector<QByteArray> mRecords;
    QString mLoadedText;
};

} // namespace scripting
