#include "OrvaneSyncApp/Views/FileActions.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Results/Questions.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WorkBanner.h"
#include "OrvaneSyncApp/Views/WorkOpening.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

/// The decisions about clips that a project file does not hold; empty if it holds all.
QString keptInSessionText(const SyncGroupList& groups) {
    const auto isAttached = [](const SyncGroup& group) { // a scan would not match it again
        return std::ranges::any_of(group.audioMatches,
                                   [](const AudioMatch& match) { return match.overlapDurationSeconds <= 0; });
    };
    const auto locked = std::ranges::count_if(groups, &SyncGroup::isLocked);
    const auto attached = std::ranges::count_if(groups, isAttached);
    QStringList kept;
    if (locked > 0) kept << translatedSentence(counted(locked, "locked clip", "locked clips"));
    if (attached > 0)
        kept << translatedSentence(counted(attached, "attached recording", "attached recordings"));
    return kept.empty() ? QString()
                        : QObject::tr("The project file does not hold everything. Kept in the "
                                      "session only: %1.")
                              .arg(kept.join(QStringLiteral(", ")));
}

QString lastFolderSetting() { return QStringLiteral("lastFolder"); }

std::optional<QString> remembered(const QString& chosen) {
    if (chosen.isEmpty()) return std::nullopt;
    keptState::set(lastFolderSetting(), QFileInfo(chosen).absolutePath());
    return chosen;
}

} // namespace

void FileActions::addCard() {
    // At first beside the folders of the open work.
    const auto& folder = desktop_.controller().work().videoFolderURL();
    const QString beside = folder ? QFileInfo(text(folder->path)).path() : QDir::homePath();
    const QString from = keptState::value(lastCardSetting(), beside).toString();
    const QString chosen = QFileDialog::getExistingDirectory(&window_, tr("Add a Card"), from);
    if (chosen.isEmpty()) return;
    keptState::set(lastCardSetting(), chosen);
    parts_.opening.addCard(chosen);
}

void FileActions::openProject() {
    if (const auto path =
            chosenFile(tr("Open OrvaneSync Project"), tr("Projects (*.orvanesync);;All files (*)")))
        parts_.opening.openProject(*path);
}

void FileActions::saveProject() {
    const auto path = placeFor(tr("Save OrvaneSync Project"), tr("Projects (*.orvanesync)"),
                               text(proposedProjectName(desktop_.controller(), desktop_.sessions())));
    if (!path) return;
    // About the clips that were saved; they may have changed before the file is written.
    runWithPath("saveProject", *path, "path", true,
                [this, kept = keptInSessionText(desktop_.controller().work().syncGroups())] {
                    if (!kept.isEmpty()) parts_.banner.showOfPage(Signal::none, kept);
                });
}

void FileActions::loadReport() {
    if (const auto path =
            chosenFile(tr("Load report"), tr("Reports (*.ale *.csv *.txt *.tsv);;All files (*)")))
        runWithPath("loadALE", *path);
}

void FileActions::writeReview() {
    const auto path =
        placeFor(tr("Write review table"), tr("Review tables (*.csv)"), QStringLiteral("Review.csv"));
    if (path) runWithPath("writeReview", *path, "output", true);
}

void FileActions::applyReview() {
    if (const auto path = chosenFile(tr("Apply review table"), tr("Review tables (*.csv)")))
        applyReviewTable(desktop_, *path, &window_);
}

void FileActions::exportClip(const UUID& clip) {
    const auto path =
        placeFor(tr("Export clip"), tr("Final Cut Pro XML (*.fcpxml)"), QStringLiteral("Clip.fcpxml"));
    if (!path) return;
    JSON arguments = JSON::object();
    arguments.set("groupID", clip.text());
    arguments.set("output", utf8(*path));
    arguments.set("overwrite", true); // the dialog has asked for permission
    desktop_.run("exportSingleClip", std::move(arguments),
                 [this, place = *path](const JSON&) { confirmSaved(place); });
}

std::optional<QString> FileActions::chosenFile(const QString& caption, const QString& filter) {
    return remembered(QFileDialog::getOpenFileName(&window_, caption,
                                                   keptState::value(lastFolderSetting()).toString(), filter));
}

std::optional<QString> FileActions::placeFor(const QString& caption, const QString& filter,
                                             const QString& name) {
    const QDir folder(keptState::value(lastFolderSetting(), QDir::homePath()).toString());
    auto chosen = remembered(QFileDialog::getSaveFileName(&window_, caption, folder.filePath(name), filter));
    if (chosen && QFileInfo(*chosen).suffix().isEmpty())
        *chosen += QLatin1Char('.') + QFileInfo(name).suffix();
    return chosen;
}

void FileActions::runWithPath(std::string_view id, const QString& path, std::string_view argument,
                              bool overwrites, std::function<void()> then) {
    JSON arguments = JSON::object();
    arguments.set(argument, utf8(path));
    if (overwrites) arguments.set("overwrite", true); // the dialog has asked for permission
    desktop_.run(id, std::move(arguments), [this, overwrites, path, then = std::move(then)](const JSON&) {
        if (overwrites) confirmSaved(path);
        if (then) then();
    });
}

void FileActions::confirmSaved(const QString& path) {
    showToast(&window_, tr("Saved: %1").arg(QFileInfo(path).fileName()));
}

} // namespace orvane::views
