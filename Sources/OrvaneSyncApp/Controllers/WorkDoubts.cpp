#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include "OrvaneSyncCore/Models/Settings.h"

namespace orvane {

const SyncDoubts& WorkDoubts::now() const {
    const platform::SettingsStore& store = *work_.environment.settings;
    const Basis basis{work_.revision(), store.get(settings::matchingDays), store.get(settings::trimMode)};
    if (basis == basis_) return doubts_;
    doubts_ = {};
    basis_ = basis;
    try {
        const MatchRules rules = work_.matchRules();
        const auto pool = recordings_.availableAudioPool();
        doubts_ = SyncDoubts::of({work_.syncGroups(), pool, rules, basis.trimMode,
                                  smartAudio_.caches().state.results, work_.fileNames()});
    } catch (const CorrectionError&) { // the matching that comes next says so
    }
    return doubts_;
}

} // namespace orvane
