#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/ViewModels/Results/CardOrder.h"
#include "OrvaneSyncApp/ViewModels/Sheets/ReportTexts.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/DropFrame.h"
#include "OrvaneSyncApp/Views/Leaving.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPointer>
#include <QStackedWidget>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace orvane::views {

using namespace design;

namespace {

QStringList droppedPaths(const QMimeData* data) {
    QStringList paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

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

/// `clips`: those with changes that were not saved when the program was quit.
QString leftUnsavedText(const SessionInfo& session, int clips) {
    return QObject::tr(
               "The session “%1” is open as it was last saved, %2. What was decided of %3 after that could "
               "not be saved when the program was quit.")
        .arg(text(session.name), dayText(session.modified),
             translatedSentence(counted(clips, "clip", "clips")));
}

/// Sessions store the tracks that an analysis has chosen, but not its results.
bool mustListenAgain(const ImportController& controller) {
    return std::ranges::any_of(controller.work().syncGroups(), [&](const SyncGroup& clip) {
        return clip.tracksManuallyEdited == false &&
               !controller.smartAudio().state().results.contains(clip.id);
    });
}

bool isReport(const QStringList& paths) {
    static const QStringList endings{QStringLiteral("ale"), QStringLiteral("csv"), QStringLiteral("txt"),
                                     QStringLiteral("tsv")};
    return paths.size() == 1 && endings.contains(QFileInfo(paths.first()).suffix().toLower());
}

} // namespace

void MainWindow::scanFolders(const QStringList& paths) {
    QStringList absolute;
    for (const QString& path : paths) absolute << QFileInfo(path).absoluteFilePath();
    start_->takeFolders(absolute, [this] { startScan(); });
}

void MainWindow::openNewestSession() {
    const std::vector<SessionInfo>& sessions = desktop_.sessions().sessions();
    if (sessions.empty()) return;
    const SessionInfo newest = sessions.front();
    if (design::keptState::value(openingKey()).toString() == text(newest.id.text())) {
        design::keptState::remove(openingKey());
        return banner_->show(Signal::doubtful,
                             tr("The program ended while it opened the session “%1”, so it is not opened by "
                                "itself this time. Double-click it at the left to open it.")
                                 .arg(text(newest.name)));
    }
    design::keptState::set(openingKey(), text(newest.id.text()));
    design::keptState::finish();
    JSON arguments = JSON::object();
    arguments.set("sessionId", newest.id.text());
    const QString underWay = tr("Opening the session “%1”…").arg(text(newest.name));
    QTimer::singleShot(openingShownAfter, this, [this, underWay] {
        if (opening_ && banner_->text().isEmpty()) banner_->show(Signal::none, underWay);
    });
    opening_ =
        desktop_.run("loadSession", std::move(arguments), {}, [this, id = newest.id](const QString& why) {
            if (desktop_.sessions().session(id) == nullptr)
                banner_->show(Signal::missing, why); // otherwise another session was opened
        });
    opening_->whenDone([self = QPointer(this), newest, underWay](const std::exception_ptr& raised) {
        design::keptState::remove(openingKey());
        if (!self) return;
        self->opening_.reset();
        if (self->banner_->text() == underWay) self->banner_->clear();
        // If a session's clips can't be read, it may still have sound without picture, with which the user
        // cannot continue.
        if (self->desktop_.controller().work().syncGroups().empty() && self->desktop_.sessions().problem())
            self->prepareScan();
        if (raised || self->desktop_.sessions().currentSessionId() != newest.id) return;
        self->results().restoreListing();
        self->showOpenedBanner(newest);
    });
}

void MainWindow::leaveBannerOfOtherSession() {
    const auto& id = desktop_.sessions().currentSessionId();
    const SessionInfo* session = id ? desktop_.sessions().session(*id) : nullptr;
    // A session that a scan has just begun has no clips yet; the messages about the scan are still right.
    if (session == nullptr || session->groupCount == 0) return;
    banner_->clear();
    showSessionProblem();
    if (desktop_.sessions().problem()) return;
    if (opening_) return; // at the start, `showOpenedBanner` says this and more
    if (const int unsaved = takeLeftUnsaved(session->id); unsaved > 0)
        banner_->show(Signal::doubtful, leftUnsavedText(*session, unsaved));
    else if (mustListenAgain(desktop_.controller()))
        banner_->show(Signal::none,
                      tr("Smart Audio has to listen to the clips of “%1” again.").arg(text(session->name)));
}

void MainWindow::showOpenedBanner(const SessionInfo& session) {
    // A message about what is wrong, or about what came with the session, is more important.
    if (!banner_->text().isEmpty() || desktop_.controller().work().syncGroups().empty()) return;
    const int unsaved = takeLeftUnsaved(session.id);
    const QString sentence = unsaved > 0 ? leftUnsavedText(session, unsaved)
                                         : (mustListenAgain(desktop_.controller())
                                                ? tr("The session “%1” is open as it was last saved, %2. "
                                                     "Smart Audio has to listen to its clips "
                                                     "again.")
                                                : tr("The session “%1” is open as it was last saved, %2."))
                                               .arg(text(session.name), dayText(session.modified));
    banner_->show(unsaved > 0 ? Signal::doubtful : Signal::none, sentence, tr("New Scan…"), [this] {
        banner_->clear();
        prepareScan();
    });
}

void MainWindow::stopOpening() {
    if (!opening_) return;
    opening_->requestStop();
    design::keptState::remove(openingKey());
}

void MainWindow::prepareScan() {
    // Clears a message about clips that requires no action.
    if (!wantsStart_ && banner_->signal() == Signal::none) banner_->clear();
    wantsStart_ = true;
    showPage();
    updateActions();
}

bool MainWindow::refusesDuringScan() {
    if (!scan_) return false;
    banner_->show(
        Signal::doubtful,
        tr("A scan is under way. Folders and projects are taken when it has ended or was cancelled."));
    return true;
}

void MainWindow::openPaths(const QStringList& paths) {
    if (paths.isEmpty() || refusesDuringScan()) return;
    stopOpening();
    if (isProject(paths)) return openProject(paths.first());
    if (paths.isEmpty()) return;
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
        banner_->show(Signal::missing, why);
        std::fprintf(stderr, "%s\n", qUtf8Printable(why));
    });
}

void MainWindow::showFolders(const QStringList& cards, std::function<void()> then) {
    const auto show = [this] { prepareScan(); };
    start_->takeFolders(cards, [show, then = std::move(then)] {
        show(); // they may have opened a session
        if (then) then();
    });
    show();
}

void MainWindow::addDropped(const QStringList& cards) {
    // Cards may be dropped one after the other or all at once.
    const bool isAdding = pages_->currentWidget() == start_ && isDropped_;
    QStringList all = isAdding ? start_->named() : QStringList();
    for (const QString& card : cards)
        if (!all.contains(card)) all << card;
    isDropped_ = true;
    showFolders(all, [this] {
        start_->focusScan();
        orderCards();
    });
}

void MainWindow::orderCards() {
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
            if (chosen() != folders || pages_->currentWidget() != start_) return; // others, or scanned
            QStringList paths;
            for (const std::string& folder : ordered) paths << text(folder);
            start_->takeFolders(paths);
        });
}

void MainWindow::showFolderSettingsBanner() {
    constexpr qsizetype most = 4;
    const std::vector<std::string>& keys = desktop_.sessions().places().appliedSettings();
    QStringList names;
    for (const std::string& label : labelsOfSettings(keys)) names << translated(label);
    QString list = names.mid(0, most).join(QStringLiteral(", "));
    if (const qsizetype more = std::ssize(keys) - std::min(most, names.size()); names.isEmpty())
        list = tr("%1 settings").arg(more);
    else if (more > 0)
        list = tr("%1 and %2 more").arg(list).arg(more);
    banner_->show(Signal::none,
                  tr("The folder “%1” has settings of its own, which are in force with its session: %2.")
                      .arg(text(desktop_.sessions().places().folderOfOpenSession().value_or("")), list),
                  tr("Settings…"), [this] { SettingsWindow(desktop_, this).exec(); });
}

void MainWindow::showReportBanner() {
    const ReportController& reports = desktop_.controller().reports();
    if (!reports.aleMatchStatus()) return;
    QString said = translatedSentence(*reports.aleMatchStatus());
    if (const std::string rows = reportTexts::rowsWithoutClip(reports); !rows.empty())
        said += QStringLiteral(". ") + translatedSentence(rows) + QStringLiteral(".");
    const std::string column = reports.betterColumn();
    if (!column.empty())
        said += QLatin1Char(' ') + tr("More of them name one in the column “%1”.").arg(text(column));
    banner_->show(
        column.empty() ? Signal::none : Signal::doubtful, said, tr("Report…"),
        [this] { showReport(desktop_, this); }, column.empty() ? QString() : tr("Match by This Column"),
        [this, column] { matchReportBy(column); });
}

void MainWindow::matchReportBy(const std::string& column) {
    const auto& report = desktop_.controller().reports().aleFileURL();
    if (!report) return;
    const auto set = [this](std::string_view key, JSON value) {
        JSON arguments = JSON::object();
        arguments.set("key", key);
        arguments.set("value", std::move(value));
        desktop_.run("setSetting", std::move(arguments));
    };
    set(settings::reportMatchColumn.key, JSON(column));
    set(settings::reportMatchField.key, settings::reportMatchField.write(ReportMatchField::column));
    JSON arguments = JSON::object();
    arguments.set("path", report->path);
    desktop_.run("loadALE", std::move(arguments));
}

void MainWindow::openProject(const QString& path) {
    const QString place = QFileInfo(path).absoluteFilePath();
    inBackground(
        this, [place] { return QFileInfo(place).isDir(); },
        [this, place](bool isSession) { isSession ? openCopyOfSession(place) : openProjectFile(place); });
}

void MainWindow::openCopyOfSession(const QString& path) {
    const auto showWhy = [this](const std::exception& why) {
        banner_->show(Signal::missing, translatedSentence(why.what()));
    };
    try {
        desktop_.sessions()
            .loadCopy(utf8(path), desktop_.context().controller)
            .whenDone([self = QPointer(this), showWhy](const std::exception_ptr& raised) {
                if (!self || !raised) return;
                try {
                    std::rethrow_exception(raised);
                } catch (const std::exception& why) {
                    showWhy(why);
                }
            });
    } catch (const platform::FileError& why) {
        showWhy(why);
    }
}

void MainWindow::openProjectFile(const QString& path) {
    RecentPlaces::add({path});
    JSON arguments = JSON::object();
    arguments.set("path", utf8(path));
    desktop_.run("loadProject", std::move(arguments), [this](const JSON&) { showProjectBanner(); });
}

void MainWindow::showProjectBanner() {
    if (desktop_.controller().work().syncGroups().empty()) return; // its folders are not here
    const QString locks = tr("A project file holds no locks: they are in the session where they were set.");
    QStringList names;
    for (const FileURL& video : desktop_.controller().project().clipsWithoutRecording())
        names << text(video.lastPathComponent());
    if (names.isEmpty()) return showPageBanner(Signal::none, locks);
    showPageBanner(
        Signal::doubtful,
        tr("Recordings that were attached by hand did not come back with the project: %1. Attach them again "
           "with Ctrl+T, or open the session in which that was done.")
                .arg(names.join(QStringLiteral(", "))) +
            QLatin1Char(' ') + locks);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QStringList paths = droppedPaths(event->mimeData());
    if (paths.isEmpty()) return;
    event->acceptProposedAction();
    dropFrame_->show(isProject(paths)  ? tr("Opens the project")
                     : isReport(paths) ? tr("Loads the report")
                                       : tr("Takes the folders for the next scan"));
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent*) { dropFrame_->hide(); }

void MainWindow::dropEvent(QDropEvent* event) {
    dropFrame_->hide();
    const QStringList paths = droppedPaths(event->mimeData());
    stopOpening();
    banner_->clear(); // a message about an earlier drop
    if (!isReport(paths) && refusesDuringScan()) return;
    if (isProject(paths)) return openProject(paths.first());
    if (isReport(paths)) {
        if (!desktop_.isEnabled("loadALE"))
            return banner_->show(Signal::doubtful,
                                 tr("“%1” is a report: drop it again when the scan has ended.")
                                     .arg(QFileInfo(paths.first()).fileName()));
        JSON arguments = JSON::object();
        arguments.set("path", utf8(paths.first()));
        desktop_.run("loadALE", std::move(arguments), [this](const JSON&) {
            if (desktop_.controller().work().syncGroups().empty())
                banner_->show(Signal::none, tr("The report is laid over the clips of the next scan."));
        });
        return;
    }
    sortOutFolders(this, paths, [this, paths](const QStringList& dropped) {
        if (!dropped.isEmpty()) addDropped(dropped);
        QStringList refused;
        for (const QString& path : paths)
            if (!dropped.contains(path)) refused << QStringLiteral("“%1”").arg(QFileInfo(path).fileName());
        if (!refused.isEmpty())
            banner_->show(Signal::doubtful,
                          tr("%1 can't be taken: drop the folders of the cards, a project file or a report.")
                              .arg(refused.join(QStringLiteral(", "))));
    });
}

} // namespace orvane::views
