#pragma once

#include "OrvaneSyncApp/Controllers/RenderedAudioController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioRuns.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// Smart Audio of the open work: which clips are analysed when, and the results. An analysis never fails.
/// Interface thread.
class SmartAudioController {
  public:
    explicit SmartAudioController(OpenWork& work);

    const SmartAudioState& state() const { return caches_.state; }
    SmartAudioCaches& caches() { return caches_; }
    const SmartAudioCaches& caches() const { return caches_; }
    RenderedAudioController& rendered() { return rendered_; }
    const RenderedAudioController& rendered() const { return rendered_; }

    /// Analyses all settled clips with sound, one after the other. `off` discards all results.
    platform::Task runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks);
    /// Analyses one clip, whatever its status, in the stored mode (`standard` for `off`), and measures its
    /// loudness and master gain.
    platform::Task runSmartAudioForGroup(const UUID& groupID, bool forceOverwriteManualTracks);
    /// Measures the loudness of all settled clips with sound and writes their master gain, unless the editor
    /// has set it. A silent recording leaves the gain unchanged.
    platform::Task measureLoudness();
    /// Analyses a clip again that was analysed before, and keeps the editor's choice of tracks: for every
    /// change that the result depends on. The task ends with the analysis that includes the change, which may
    /// have been running already.
    platform::Task reanalyseIfKnown(const UUID& groupID);
    /// The same for all clips that were analysed.
    platform::Task reanalyseAll();
    /// Analyses the clips with an outdated result again, each in the mode of its result, and keeps the
    /// editor's choice of tracks.
    platform::Task reanalyseOutdated();
    /// The options of the analysis that made the clip's result; null without a result.
    const SmartAudioTerms* termsOf(const UUID& groupID) const;
    /// Whether the clip's result was made with other settings than the present ones. Another mode does not
    /// count.
    bool isOutdated(const UUID& groupID) const;
    std::size_t outdatedCount() const;
    /// To be called after the sound of a clip was moved: the editor's ranges keep their position in the
    /// picture.
    void reapplyRanges(const UUID& groupID) { runs_.reapplyRanges(groupID); }

    /// To be called within an undo or redo: removes what was made from the clips. On the next turn of the
    /// interface thread, results whose clips have the same input as before are restored; the other clips have
    /// to be analysed again.
    void emptyAfterUndo(const SyncGroupList& clipsBefore);
    /// Restores them at once, for a caller that needs them in the same turn, such as the next command of
    /// `serve`.
    void restoreAfterUndo();

    /// To be called after stored clips were opened: restores the results of earlier runs of the program.
    void recallStored() { recalled_ = runs_.recallStored(); }
    /// Ends when they are restored.
    const platform::Task& recalled() const { return recalled_; }

    /// Whether a scan starts an analysis if the setting `smartAudioMode` was written. True by default; false
    /// for a front end that starts analyses itself.
    void setAnalysesAfterScan(bool doesSo) { analysesAfterScan_ = doesSo; }
    void startAnalysisAfterScan();
    /// Stops all analyses, which then have no result.
    void stop() { runs_.stop(); }
    /// Waits for the analysis that the last scan started, if it did.
    platform::Task waitForAnalysisAfterScan() const;

  private:
    SmartAudioTerms terms(SmartAudioMode mode) const;
    std::vector<UUID> outdated() const;
    SmartAudioTerms termsForOneClip() const;
    SyncGroupList settledClipsWithSound() const;
    bool isKnown(const UUID& groupID) const;

    OpenWork& work_;
    SmartAudioCaches caches_;
    RenderedAudioController rendered_;
    SmartAudioRuns runs_;
    bool analysesAfterScan_ = true;
    std::optional<platform::Task> analysisAfterScan_;
    platform::Task recalled_ = platform::Task::ended();
};

} // namespace orvane
