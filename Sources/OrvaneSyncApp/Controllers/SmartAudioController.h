#pragma once

#include "OrvaneSyncApp/Controllers/RenderedAudioController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioRuns.h"

#include <optional>

namespace orvane {

/// Smart Audio of the open work: which clips are analysed when, and what is known of them. An analysis never
/// fails. Interface thread.
class SmartAudioController {
  public:
    explicit SmartAudioController(OpenWork& work);

    const SmartAudioState& state() const { return caches_.state; }
    SmartAudioCaches& caches() { return caches_; }
    const SmartAudioCaches& caches() const { return caches_; }
    RenderedAudioController& rendered() { return rendered_; }
    const RenderedAudioController& rendered() const { return rendered_; }

    /// Analyses all settled clips that have sound, one after the other. `off` forgets all results.
    platform::Task runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks);
    /// Analyses one clip, whatever its status, in the stored mode (`standard` for `off`), and measures its
    /// loudness and master gain.
    platform::Task runSmartAudioForGroup(const UUID& groupID, bool forceOverwriteManualTracks);
    /// Measures the loudness of all settled clips that have sound and writes their master gain, where the
    /// editor has not set it by hand. A recording in which nothing is heard leaves the gain as it is.
    platform::Task measureLoudness();
    /// Analyses a clip again that was analysed before, with the editor's choice of tracks kept: for every
    /// change that the result depends on. The task ends with the analysis that takes the change in, which
    /// may be one that ran before.
    platform::Task reanalyseIfKnown(const UUID& groupID);
    /// The same for all clips that were analysed.
    platform::Task reanalyseAll();
    /// After the sound of a clip was moved: ranges by hand keep their place in the picture.
    void reapplyRanges(const UUID& groupID) { runs_.reapplyRanges(groupID); }

    /// Within an undo or redo: empties what was made from the clips. On the next turn of the interface thread
    /// the results of the clips that are asked of as they were are back; the others are to be analysed again.
    void emptyAfterUndo(const SyncGroupList& clipsBefore);
    /// Brings them back at once, for who asks for them in the same turn: the next command of `serve` may.
    void restoreAfterUndo();

    /// Whether a scan starts an analysis by itself where the setting `smartAudioMode` was written. On at
    /// first; off for a front end that starts analyses itself.
    void setAnalysesAfterScan(bool doesSo) { analysesAfterScan_ = doesSo; }
    void startAnalysisAfterScan();
    /// Whatever runs ends without a result.
    void stop() { runs_.stop(); }
    /// Waits for the analysis that the last scan started by itself, if it did.
    platform::Task waitForAnalysisAfterScan() const;

  private:
    SmartAudioTerms terms(SmartAudioMode mode) const;
    SmartAudioTerms termsForOneClip() const;
    SyncGroupList settledClipsWithSound() const;
    bool isKnown(const UUID& groupID) const;

    OpenWork& work_;
    SmartAudioCaches caches_;
    RenderedAudioController rendered_;
    SmartAudioRuns runs_;
    bool analysesAfterScan_ = true;
    std::optional<platform::Task> analysisAfterScan_;
};

} // namespace orvane
