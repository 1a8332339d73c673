#include "OrvaneSyncApp/Views/WorkOpening.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/ViewModels/Results/CardOrder.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/ScanningView.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WorkBanner.h"
#include "OrvaneSyncApp/Views/WorkScreens.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

/// Calls `done` with those that are folders; a card or share may take its time to answer.
template <class Done>
void sortOutFolders(QObject* context, const QStringList& paths, Done done) {
    inBackground(
        context,
        [paths] {
            QStringList found;
            for (const QString& path : paths)
                if (QFileInfo(path).isDir()) found << path;
            return found;
        },
        std::move(done));
}

constexpr std::chrono::milliseconds openingShownAfter{300};

/// Set while the newest session is read. If the next start finds it set, the opening ended the program, and
/// would do so again.
QString openingKey() { return QStringLiteral("opening"); }

bool isProject(const QStringList& paths) {
    return paths.size() == 1 && paths.first().endsWith(QStringLiteral(".orvanesync"));
}

bool isReport(const QStringList& paths) {
    static const QStringList endings{QStringLiteral("ale"), QStringLiteral("csv"), QStringLiteral("txt"),
                                     QStringLiteral("tsv")};
    return paths.size() == 1 && endings.contains(QFileInfo(paths.first()).suffix().toLower());
}

} // namespace

WorkOpening::WorkOpening(Desktop& desktop, WorkBanner& banner, WorkScreens& screens, StartView& start,
                         ScanningView& scanning)
    : desktop_(desktop), banner_(banner), screens_(screens), start_(start), scanning_(scanning) {
    ofSessions_ = desktop_.sessions().onChange([this](SessionField field) {
        if (field == SessionField::currentSessionId) sessionChanged();
    });
}

void WorkOpening::sessionChanged() {
    leaveStart(); // the user had asked for the start page of another session
    const SessionInfo* session = desktop_.sessions().currentSession();
    // A session that a scan has just begun has no clips yet; the messages about the scan still hold.
    if (session != nullptr && session->groupCount > 0) {
        banner_.clearAll(); // messages about the earlier work
        banner_.showProblem();
        // At the start, `showSessionOfStart` says this and more.
        if (!desktop_.sessions().problem() && !opening_) banner_.showSession(*session);
    }
    if (auto* list = screens_.made<ResultsView>()) list->restoreListing(); // the work has its clips already
}

// Scans.

void WorkOpening::scanFolders(const QStringList& paths) {
    QStringList absolute;
    for (const QString& path : paths) absolute << QFileInfo(path).absoluteFilePath();
    start_.takeFolders(absolute, [this] { startScan(); });
}

bool WorkOpening::isScanning() const { return scan_ || isCheckingCards_ || start_.isAboutToScan(); }

void WorkOpening::startScan() {
    const OpenWork& work = desktop_.controller().work();
    if (work.syncGroups().empty()) return beginScan();
    QStringList folders;
    for (const FileURL& folder : work.folders()) folders << text(folder.path);
    isCheckingCards_ = true;
    sortOutFolders(this, folders, [this, folders](const QStringList& there) {
        isCheckingCards_ = false;
        if (!desktop_.isEnabled("startScan")) return;
        QStringList missing;
        for (const QString& folder : folders)
            if (!there.contains(folder)) missing << QStringLiteral("“%1”").arg(folder);
        if (missing.isEmpty() ||
            isAgreed(banner_.window(), tr("Not there: %1").arg(missing.join(QStringLiteral(", "))),
                     tr("Is the card connected? A scan without it takes its clips out of the work, with what "
                        "was decided about them, until it is undone."),
                     tr("Scan Without It"), tr("Don't Scan")))
            beginScan();
    });
}

void WorkOpening::beginScan() {
    leaveStart();
    isDropped_ = false;
    banner_.beginScan();
    scanning_.begin();
    const bool isOther = desktop_.controller().work().syncGroups().empty();
    JSON arguments = JSON::object();
    arguments.set("ofOtherWork", isOther);
    // The command ends after the analysis; the screen follows the scan, and shows its result.
    desktop_.run("startScan", std::move(arguments), {}, [](const QString&) {});
    scan_ = desktop_.controller().scan().lastScan();
    isLeavingScan_ = false;
    if (isOther) offerKnownSession();
    const ImportController& controller = desktop_.controller();
    scan_->whenDone(
        [self = QPointer(this),
         before = BeforeScan{ClipDecisions::of(controller), controller.recordings().workFiles(),
                             !controller.work().keptMatchedBy()}](const std::exception_ptr& raised) {
            if (self) self->scanEnded(raised, before);
        });
    whenPageChanged();
    // Uses the time in which the files are read to make the list.
    QMetaObject::invokeMethod(
        this, [this] { screens_.list(); }, Qt::QueuedConnection);
}

void WorkOpening::addCard(const QString& path) {
    JSON::Array more;
    for (const FileURL& folder : desktop_.controller().work().scanScope().moreFolders)
        more.emplace_back(folder.path);
    more.emplace_back(utf8(QDir::cleanPath(path)));
    JSON arguments = JSON::object();
    arguments.set("moreFolders", JSON(std::move(more)));
    desktop_.run("setFolders", std::move(arguments), [self = QPointer(this)](const JSON&) {
        if (self && !self->refusesDuringScan()) self->startScan();
    });
}

/// Other corrections change the matches, which the user has to see before earlier decisions apply to them.
void WorkOpening::scanEnded(const std::exception_ptr& raised, const BeforeScan& before) {
    scan_.reset();
    try {
        if (raised) std::rethrow_exception(raised);
        desktop_.sessions().beginSessionOfOpenWork(desktop_.controller());
        QStringList scanned;
        for (const FileURL& folder : desktop_.controller().work().folders()) scanned << text(folder.path);
        RecentPlaces::add(scanned);
        const bool areLost = before.decisions.without(ClipDecisions::of(desktop_.controller())).any();
        if (areLost && before.isMatchedAlike) {
            banner_.keepDecisions(before.decisions, before.work);
        } else {
            if (areLost) banner_.showLost(before.decisions, before.work);
            banner_.showScanWarnings();
        }
    } catch (const std::exception& why) {
        banner_.show(Signal::missing, translatedSentence(why.what()));
    } catch (const platform::Stopped&) {
        if (!isLeavingScan_) banner_.show(Signal::none, tr("The scan was cancelled; all is as it was."));
    }
    whenPageChanged();
}

void WorkOpening::offerKnownSession() {
    const auto found = std::make_shared<std::optional<UUID>>();
    desktop_.sessions()
        .findSession(desktop_.controller().work().folders(), found)
        .whenDone([self = QPointer(this), found](const std::exception_ptr& raised) {
            if (!self || raised || !*found) return;
            const SessionInfo* known = self->desktop_.sessions().session(**found);
            if (known == nullptr) return;
            self->banner_.showKnown(*known, [self, id = known->id] {
                self->isLeavingScan_ = true;
                self->leaveStart();
                self->banner_.clear();
                JSON arguments = JSON::object();
                arguments.set("sessionId", id.text());
                self->desktop_.run("loadSession", std::move(arguments));
            });
        });
}

void WorkOpening::prepareScan() {
    if (!isStartWanted_) banner_.clearSettled(); // a message about clips
    isStartWanted_ = true;
    whenPageChanged();
}

bool WorkOpening::refusesDuringScan() {
    if (!scan_) return false;
    banner_.show(
        Signal::doubtful,
        tr("A scan is under way. Folders and projects are taken when it has ended or was cancelled."));
    return true;
}

// Sessions and projects.

void WorkOpening::openNewestSession() {
    const std::vector<SessionInfo>& sessions = desktop_.sessions().sessions();
    if (sessions.empty()) return;
    const SessionInfo newest = sessions.front();
    if (keptState::value(openingKey()).toString() == text(newest.id.text())) {
        keptState::remove(openingKey());
        return banner_.show(Signal::doubtful,
                            tr("The program ended while it opened the session “%1”, so it is not opened by "
                               "itself this time. Double-click it at the left to open it.")
                                .arg(text(newest.name)));
    }
    keptState::set(openingKey(), text(newest.id.text()));
    keptState::finish();
    JSON arguments = JSON::object();
    arguments.set("sessionId", newest.id.text());
    const QString underWay = tr("Opening the session “%1”…").arg(text(newest.name));
    QTimer::singleShot(openingShownAfter, this, [this, underWay] {
        if (opening_ && banner_.text().isEmpty()) banner_.show(Signal::none, underWay);
    });
    opening_ =
        desktop_.run("loadSession", std::move(arguments), {}, [this, id = newest.id](const QString& why) {
            if (desktop_.sessions().session(id) == nullptr)
                banner_.show(Signal::missing, why); // otherwise another session was opened
        });
    opening_->whenDone([self = QPointer(this), newest, underWay](const std::exception_ptr& raised) {
        keptState::remove(openingKey());
        if (!self) return;
        self->opening_.reset();
        if (self->banner_.text() == underWay) self->banner_.clear();
        // If a session's clips can't be read, it may still have sound without picture, with which the user
        // cannot continue.
        if (self->desktop_.controller().work().syncGroups().empty() && self->desktop_.sessions().problem())
            self->prepareScan();
        if (raised || self->desktop_.sessions().currentSessionId() != newest.id) return;
        self->screens_.list().restoreListing();
        self->banner_.showSessionOfStart(newest);
    });
}

void WorkOpening::stop() {
    if (!opening_) return;
    opening_->requestStop();
    keptState::remove(openingKey());
}

void WorkOpening::openProject(const QString& path) {
    const QString place = QFileInfo(path).absoluteFilePath();
    inBackground(
        this, [place] { return QFileInfo(place).isDir(); },
        [this, place](bool isSession) { isSession ? openCopyOfSession(place) : openProjectFile(place); });
}

void WorkOpening::openCopyOfSession(const QString& path) {
    const auto showWhy = [this](const std::exception& why) {
        banner_.show(Signal::missing, translatedSentence(why.what()));
    };
    desktop_
        .leaveFor([this, folder = utf8(path)] {
            return desktop_.sessions().loadCopy(folder, desktop_.context().controller);
        })
        .whenDone([self = QPointer(this), showWhy](const std::exception_ptr& raised) {
            if (!self || !raised) return;
            try {
                std::rethrow_exception(raised);
            } catch (const platform::Stopped&) {
                return;
            } catch (const std::exception& why) {
                showWhy(why);
            }
        });
}

void WorkOpening::openProjectFile(const QString& path) {
    RecentPlaces::add({path});
    JSON arguments = JSON::object();
    arguments.set("path", utf8(path));
    desktop_.run("loadProject", std::move(arguments), [this](const JSON&) { banner_.showProject(); });
}

// Paths that are named or dropped.

void WorkOpening::openPaths(const QStringList& paths) {
    if (paths.isEmpty() || refusesDuringScan()) return;
    stop();
    if (isProject(paths)) return openProject(paths.first());
    sortOutFolders(this, paths, [this, paths](const QStringList& cards) {
        if (cards.size() == paths.size()) return scanFolders(cards);
        // Scanning only the other folders would give clips without their sound.
        if (!cards.isEmpty()) showFolders(cards);
        QStringList others;
        for (const QString& path : paths)
            if (!cards.contains(path)) others << QStringLiteral("“%1”").arg(path);
        const QString why =
            tr("No folder and no project: %1. Check the name, and whether the card is connected; "
               "nothing is scanned until then.")
                .arg(others.join(QStringLiteral(", ")));
        banner_.show(Signal::missing, why);
        std::fprintf(stderr, "%s\n", qUtf8Printable(why));
    });
}

bool WorkOpening::isStartShown() const {
    return !start_.isHidden();
} // the pages hide all but the current one

void WorkOpening::showFolders(const QStringList& cards, std::function<void()> then) {
    const auto show = [this] { prepareScan(); };
    start_.takeFolders(cards, [show, then = std::move(then)] {
        show(); // they may have opened a session
        if (then) then();
    });
    show();
}

void WorkOpening::addDropped(const QStringList& cards) {
    // Cards may be dropped one after the other or all at once.
    const bool isAdding = isStartShown() && isDropped_;
    QStringList all = isAdding ? start_.named() : QStringList();
    for (const QString& card : cards)
        if (!all.contains(card)) all << card;
    isDropped_ = true;
    showFolders(all, [this] {
        start_.focusScan();
        orderCards();
    });
}

void WorkOpening::orderCards() {
    const auto chosen = [this] {
        std::vector<std::string> paths;
        for (const FileURL& folder : desktop_.controller().work().folders()) paths.push_back(folder.path);
        return paths;
    };
    const std::vector<std::string> folders = chosen();
    if (folders.size() < 2) return;
    inBackground(
        this, [folders] { return cardsByContents(folders); },
        [this, folders, chosen](const std::vector<std::string>& ordered) {
            if (chosen() != folders || !isStartShown()) return; // others, or scanned
            QStringList paths;
            for (const std::string& folder : ordered) paths << text(folder);
            start_.takeFolders(paths);
        });
}

QString WorkOpening::dropText(const QStringList& paths) {
    return isProject(paths)  ? tr("Opens the project")
           : isReport(paths) ? tr("Loads the report")
                             : tr("Takes the folders for the next scan");
}

void WorkOpening::drop(const QStringList& paths) {
    stop();
    banner_.clear(); // a message about an earlier drop
    if (isReport(paths)) return loadReport(paths.first());
    if (refusesDuringScan()) return;
    if (isProject(paths)) return openProject(paths.first());
    sortOutFolders(this, paths, [this, paths](const QStringList& dropped) {
        if (!dropped.isEmpty()) addDropped(dropped);
        QStringList refused;
        for (const QString& path : paths)
            if (!dropped.contains(path)) refused << QStringLiteral("“%1”").arg(QFileInfo(path).fileName());
        if (!refused.isEmpty())
            banner_.show(Signal::doubtful,
                         tr("%1 can't be taken: drop the folders of the cards, a project file or a report.")
                             .arg(refused.join(QStringLiteral(", "))));
    });
}

void WorkOpening::loadReport(const QString& path) {
    if (!desktop_.isEnabled("loadALE"))
        return banner_.show(
            Signal::doubtful,
            tr("“%1” is a report: drop it again when the scan has ended.").arg(QFileInfo(path).fileName()));
    JSON arguments = JSON::object();
    arguments.set("path", utf8(path));
    desktop_.run("loadALE", std::move(arguments), [this](const JSON&) {
        if (desktop_.controller().work().syncGroups().empty())
            banner_.show(Signal::none, tr("The report is laid over the clips of the next scan."));
    });
}

} // namespace orvane::views
