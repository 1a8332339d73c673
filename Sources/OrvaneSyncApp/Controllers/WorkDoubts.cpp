#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include "OrvaneSyncCore/Models/Settings.h"

namespace orvane {

const SyncDoubts& WorkDoubts::now() const {
    const platform::SettingsStore& store = *work_.environment.settings;
    const Basis basis{work_.revision(), store.get(settings::trimMode)};
    if (basis == basis_) return doubts_;
    basis_ = basis;
    const auto pool = recordings_.availableAudioPool();
    doubts_ = SyncDoubts::of({work_.syncGroups(), pool, work_.matchRules(), basis.trimMode,
                              smartAudio_.caches().state.results, work_.fileNames()});
    return doubts_;
}

} // namespace orvane
