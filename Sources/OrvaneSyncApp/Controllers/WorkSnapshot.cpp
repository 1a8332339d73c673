#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"

namespace orvane {

WorkSnapshot::WorkSnapshot(const ImportController& controller)
    : folders(controller.work().folders()), scanState(controller.scan().scanState()),
      discoveryResult(controller.scan().discoveryResult()),
      sourceCorrections(controller.work().sourceCorrections()), aleFile(controller.reports().aleFile()),
      aleMatchStatus(controller.reports().aleMatchStatus()),
      aleImportError(controller.reports().aleImportError()),
      passedOver(controller.smartAudio().state().passedOver),
      clipsNotFound(controller.project().clipsNotFound()),
      tracksLeftOut(controller.project().tracksLeftOut()),
      copiesNotApplied(controller.project().copiesNotApplied()),
      settings_(controller.work().environment.settings), source_(controller.derivedDoubts().source()),
      namingRules_(NamingRules::of(*settings_)), displayNames_(controller.work().displayNamesIfMade()),
      doubts_(controller.derivedDoubts().ifCurrent()) {}

const FileNames& WorkSnapshot::fileNames() const {
    if (!fileNames_) fileNames_ = source_.files.fileNames();
    return *fileNames_;
}

const DisplayNames& WorkSnapshot::displayNames() const {
    if (!displayNames_)
        displayNames_ = std::make_shared<const DisplayNames>(source_.files.displayNames(namingRules_));
    return *displayNames_;
}

const SyncDoubts& WorkSnapshot::doubts(const std::stop_token& stop) const {
    if (!doubts_) doubts_ = std::make_shared<const SyncDoubts>(source_.doubts(fileNames(), stop));
    return *doubts_;
}

SyncDoubts WorkSnapshot::doubtsByTimecode(const std::stop_token& stop) const {
    DoubtSource unheard = source_;
    unheard.heard = nullptr;
    return unheard.doubts(fileNames(), stop);
}

bool WorkSnapshot::helps(const CardDoubt& doubt, const std::stop_token& stop) const {
    return source_.helps(doubt, doubts(stop), fileNames(), stop);
}

UnmatchedReasons WorkSnapshot::unmatchedReasons() const { return source_.unmatchedReasons(); }

} // namespace orvane
