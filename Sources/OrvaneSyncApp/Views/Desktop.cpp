#include "OrvaneSyncApp/Views/Desktop.h"

#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QObject>

#include <algorithm>
#include <exception>
#include <stdexcept>

namespace orvane::views {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}
std::string utf8(const QString& text) { return text.toStdString(); }

Desktop::Desktop(Dependencies dependencies) : mainThread_(dependencies.mainThread) {
    ImportController::Dependencies work;
    work.mainThread = mainThread_;
    work.settings = dependencies.settings;
    work.clock = dependencies.clock;
    work.probeCache = std::move(dependencies.probeCache);
    work.waveformCache = std::move(dependencies.waveformCache);
    work.renderedAudio = std::move(dependencies.renderedAudio);
    work.stems = std::move(dependencies.stems);
    work.analyses = std::move(dependencies.analyses);
    SessionManager::Dependencies keeping;
    keeping.mainThread = mainThread_;
    keeping.settings = dependencies.settings;
    keeping.sessionsDir = std::move(dependencies.sessionsDir);
    keeping.clock = dependencies.clock;
    context_.controller = ImportController::create(std::move(work));
    context_.sessions = SessionManager::create(std::move(keeping));
    context_.settings = dependencies.settings;
    context_.isWindow = true;
    context_.openPlayers = std::move(dependencies.openPlayers);
    context_.sessions->start(context_.controller);
}

const commands::Command& Desktop::command(std::string_view id) const { return commands::command(id); }

bool Desktop::isEnabled(std::string_view id, const SyncGroup* clip) const {
    return command(id).isEnabled(context_, clip);
}

QString Desktop::title(std::string_view id, const std::vector<UUID>& clips) const {
    const SyncGroup* only =
        clips.size() == 1 ? context_.controller->work().syncGroups().find(clips.front()) : nullptr;
    if (clips.size() > 1 && id == "toggleLocked") return QObject::tr("Lock or Unlock Clips");
    return translated(command(id).titleFor(only));
}

platform::Task Desktop::run(std::string_view id, JSON arguments, Done done, Refused whenThisIsRefused) {
    const auto refused = [this, own = std::move(whenThisIsRefused)](const std::exception& why) {
        QString sentence = translatedSentence(why.what());
        sentence = sentence.left(1).toUpper() + sentence.mid(1);
        if (own)
            own(sentence);
        else if (whenRefused)
            whenRefused(sentence);
    };
    try {
        const commands::Command& row = command(id);
        const commands::Call call(row, arguments.isNull() ? nullptr : &arguments);
        context_.expectKnown(call);
        if (row.now) {
            const JSON answer = row.now(context_, call);
            if (done) done(answer);
            return platform::Task::ended();
        }
        const auto result = std::make_shared<JSON>();
        const bool mayLeave =
            std::ranges::count(row.parameters, commands::leaveUnsaved.name, &commands::Parameter::name) > 0;
        platform::Task task =
            mayLeave ? askToLeave(row, std::move(arguments), result) : row.whenDone(context_, call, result);
        task.whenDone([refused, result, done = std::move(done)](const std::exception_ptr& raised) {
            if (!raised) {
                if (done) done(*result);
                return;
            }
            try {
                std::rethrow_exception(raised);
            } catch (const std::exception& why) {
                refused(why);
            } catch (const platform::Stopped&) {
                return;
            }
        });
        return task;
    } catch (const std::exception& why) {
        refused(why);
        return platform::Task::ended();
    }
}

platform::Task Desktop::askToLeave(const commands::Command& row, JSON arguments,
                                   std::shared_ptr<JSON> result) {
    try {
        const platform::Task task =
            row.whenDone(context_, commands::Call(row, arguments.isNull() ? nullptr : &arguments), result);
        co_await task;
        co_return;
    } catch (const commands::UnsavedWork& unsaved) {
        if (!agreesToLeave) throw;
        if (!agreesToLeave(unsaved)) throw platform::Stopped();
    }
    if (arguments.isNull()) arguments = JSON::object();
    arguments.set(commands::leaveUnsaved.name, true);
    const platform::Task task = row.whenDone(context_, commands::Call(row, &arguments), result);
    co_await task;
}

platform::Task Desktop::leaveFor(std::function<platform::Task()> open) {
    try {
        const platform::Task saving = commands::saveBeforeLeaving(context_);
        co_await saving;
    } catch (const commands::UnsavedWork& unsaved) {
        if (!agreesToLeave) throw;
        if (!agreesToLeave(unsaved)) throw platform::Stopped();
    }
    const platform::Task opening = open();
    co_await opening;
}

void Desktop::runForClips(std::string_view id, const std::vector<UUID>& groupIDs, JSON arguments,
                          const std::function<void()>& done) {
    if (groupIDs.empty()) return;
    const auto runEach = [&] {
        std::vector<JSON> calls;
        for (const UUID& groupID : groupIDs) {
            const SyncGroup* clip = controller().work().syncGroups().find(groupID);
            if (clip == nullptr || !isEnabled(id, clip)) continue;
            calls.push_back(arguments);
            calls.back().set("groupID", groupID.text());
        }
        const auto waiting = std::make_shared<std::size_t>(calls.size());
        for (JSON& call : calls)
            run(id, std::move(call), [waiting, done](const JSON&) {
                if (--*waiting == 0 && done) done();
            });
    };
    context_.isForSeveralClips = groupIDs.size() > 1;
    if (const auto& step = command(id).step; step && groupIDs.size() > 1)
        controller().withUndo(*step, runEach);
    else
        runEach();
    context_.isForSeveralClips = false;
}

void Desktop::openOutside(QObject* context, const QUrl& address, Refused refused) {
    inBackground(
        context, [open = openAddress, encoded = address.toEncoded().toStdString()] { return open(encoded); },
        [this, address, refused = std::move(refused)](bool isOpened) {
            if (isOpened) return;
            const QString why =
                QObject::tr("No program opens %1 here.").arg(address.toDisplayString(QUrl::PreferLocalFile));
            if (const Refused& show = refused ? refused : whenRefused) show(why);
        });
}

} // namespace orvane::views
