#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <functional>
#include <optional>
#include <string>

namespace orvane::views {

/// The messages about the open work, at the top of the window, with what can be done about each. It follows
/// the work, the sessions and the settings, and removes messages that no longer hold.
class WorkBanner : public design::Banner {
  public:
    explicit WorkBanner(Desktop& desktop);

    /// A message without an action. It disappears by itself while the banner shows a message that is kept.
    void showNotice(design::Signal signal, const QString& what);
    /// For a message about the page and the clips in front: `leavePage` removes it.
    void showOfPage(design::Signal signal, const QString& what);
    void leavePage() { forget(ofPage_); }
    /// Removes a message that requires no action.
    void clearSettled() {
        if (signal() == design::Signal::none) clear();
    }
    /// Removes all messages: a scan replaces the work that they are about.
    void beginScan();
    /// After a scan that removed decisions; offers to keep them or to undo the scan.
    void showLost(const ClipDecisions& before, const WorkFiles& workBefore);
    /// Gives the decisions of the clips before the scan to the clips of the scan, and says so, with the
    /// warnings of the scan.
    void keepDecisions(const ClipDecisions& before, const WorkFiles& workBefore);
    /// What is wrong with the open session. If other clips were kept beside it, offers to explain how to see
    /// them.
    void showProblem();
    /// What the user has to know about a session that was opened in the window.
    void showSession(const SessionInfo& session);
    /// The same of the session that was opened at the start, with its date.
    void showSessionOfStart(const SessionInfo& session);
    /// Offers to open the stored session of the folders that are scanned.
    void showKnown(const SessionInfo& session, std::function<void()> open);
    /// Removes that offer.
    void forgetKnown() { forget(known_); }
    /// What an opened project did not contain.
    void showProject();
    /// Shows the notice, if any, and the warnings of the last scan (`scanWarnings`); with several warnings,
    /// the first one and a button for all. It disappears by itself if another message is shown.
    void showScanWarnings(design::Signal signal = {}, const QString& notice = {});
    /// The result of listening to the cards. `before`: the doubts until then.
    void showListened(const std::vector<CardDoubt>& before);
    /// The result of comparing the sound of clips. `show` selects clips in the list.
    void showCompared(std::function<void(const std::vector<UUID>&)> show);

  private:
    /// Says that the decisions were kept, how many clips are new and how many have another name.
    void showKept(const WorkFiles& before);
    /// Removes the message of `showLost` if the scan was undone, and shows it again if the scan was redone.
    void followUndo();
    /// How many clips have to be analysed again, because their results are not stored. False: none.
    bool showUnanalysed();
    /// How many clips were analysed with other settings than the present ones.
    void showOutdated();
    /// Whether the session can be saved.
    void showSaving();
    /// Which settings the folder of the opened session has changed.
    void showFolderSettings();
    /// How many clips the loaded report has matched, with access to the rows that matched none.
    void showReportResult();
    /// Makes this column the match setting, and applies the report to the clips again.
    void matchReportBy(const std::string& column);
    /// The result of the last sync with the metadata service.
    void showLockit();
    /// After an analysis of several clips: what it could not read.
    void showAnalysis();
    /// Removes the message from the banner.
    void forget(QString& message);

    Desktop& desktop_;
    QString ofPage_;          ///< set by `showOfPage`
    QString unsaved_;         ///< the session could not be saved
    QString known_;           ///< set by `showKnown`
    QString lost_, outdated_; ///< set by `showLost` and `showOutdated`
    QString compared_;        ///< set by `showCompared`
    QString unanalysed_;      ///< set by `showUnanalysed`
    /// Shows the message of `showLost` again; empty if no such scan can be redone.
    std::function<void()> showLostAgain_;
    std::optional<UUID> analysed_; ///< first clip of the work when the last analysis began
    bool wasAnalysing_ = false;
    int analysedClips_ = 0; ///< of the largest running analysis
    platform::Subscription ofWork_, ofSessions_, ofSettings_;
};

} // namespace orvane::views
