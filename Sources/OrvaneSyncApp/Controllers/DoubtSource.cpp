#include "OrvaneSyncApp/Controllers/DoubtSource.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureTrial.h"
#include "Platform/Files.h"

#include <string>
#include <utility>

namespace orvane {

DoubtSettings DoubtSettings::of(const platform::SettingsStore& store) {
    return {store.get(settings::trimMode), store.get(settings::ltcEnabled)
                                               ? std::optional(store.get(settings::ltcChannelIndex))
                                               : std::nullopt};
}

FileURL realFolder(const FileURL& folder) {
    // A link that is the last component stays, so the way to something in it is asked for.
    const std::string inside = platform::files::standardized(folder.path + "/x");
    return {inside.substr(0, inside.size() - 2)};
}

std::vector<FileURL> DoubtSource::realFolders() const {
    std::vector<FileURL> real;
    for (const FileURL& folder : folders) real.push_back(realFolder(folder));
    return real;
}

DoubtInput DoubtSource::input(const std::vector<MediaAsset>& recordings, const FileNames& names) const {
    return {files.groups,
            recordings,
            rules,
            settings.trimMode,
            smartAudioResults,
            names,
            heard ? &heard->lags : nullptr,
            realFolders(),
            heard ? &heard->elsewhere : nullptr,
            settings.timecodeChannel,
            heard ? &heard->claims : nullptr,
            heard ? &heard->unheard : nullptr};
}

SyncDoubts DoubtSource::doubts(const FileNames& names, const std::stop_token& stop) const {
    std::vector<MediaAsset> gathered;
    return SyncDoubts::of(input(recordings(gathered), names), stop);
}

bool DoubtSource::helps(const CardDoubt& doubt, const SyncDoubts& doubts, const FileNames& names,
                        const std::stop_token& stop) const {
    std::vector<MediaAsset> gathered;
    const DoubtInput tried = input(recordings(gathered), names);
    return CureTrial(tried, doubts, stop).helps(doubt);
}

std::vector<SoundClaim> DoubtSource::claims(const std::vector<MediaAsset>& recordings,
                                            const std::stop_token& stop) const {
    return SyncDoubts::claims(input(recordings, FileNames()), stop);
}

const std::vector<MediaAsset>& DoubtSource::recordings(std::vector<MediaAsset>& gathered) const {
    const auto* scanned = files.scannedAudio();
    if (scanned != nullptr) return *scanned;
    gathered = files.copiedAudioPool();
    return gathered;
}

HeardSound DoubtSource::listen(std::vector<SoundLag::Pair> pairs, const std::stop_token& stop,
                               const std::function<void(std::size_t done)>& progress) const {
    std::vector<MediaAsset> gathered;
    const std::vector<MediaAsset>& all = recordings(gathered);
    const SoundLag::RecordingNeighbours neighbours(files.groups, all, rules, stop);
    HeardSound result =
        SoundLag::heardWithNeighbours(files.groups, std::move(pairs), neighbours, stop, progress);
    DoubtSource asHeard = *this;
    constexpr int mostRounds = 6; // an offset that was not heard may give way to another one
    for (int round = 0; round < mostRounds; ++round) {
        asHeard.heard = std::make_shared<const HeardSound>(result);
        const auto claims = asHeard.claims(all, stop);
        HeardClaims more = SoundLag::heardClaims(files.groups, all, claims, stop);
        const std::size_t before = result.claims.size();
        result.claims.merge(more);
        if (result.claims.size() == before) break;
    }
    return result;
}

UnmatchedReasons DoubtSource::unmatchedReasons() const {
    return {files.groups, [own = files] { return own.copiedAudioPool(); }, rules};
}

} // namespace orvane
