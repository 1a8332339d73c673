#include "OrvaneSyncCore/Export/RandomShoot.h"

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/Test.h"

namespace orvane::test {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double oddNumbers[] = {0, -0.0, -1, 1e-300, 0.4, 1e300, -1e300, 1e9, infinity, -infinity, NAN};
constexpr int oddIntegers[] = {0, -1, 300, std::numeric_limits<int>::min()};
constexpr double rates[] = {
    23.976, 24000.0 / 1001, 24,  25,  29.97, 30000.0 / 1001, 30, 47.952, 50, 59.94, 60, 90, 96,
    100,    119.88,         120, 12.5};

class Maker {
  public:
    Maker(unsigned seed, Numbers numbers) : random_(seed), any_(numbers == Numbers::any) {}

    Shoot shoot() {
        Shoot made;
        chooseSettings(made.settings);
        std::vector<SyncGroup> groups;
        for (int i = 0, count = 2 + below(6); i < count; ++i) groups.push_back(group(i, made.settings));
        for (int i = below(3); i > 0; --i) {
            // Compilers evaluate the arguments of a call in different orders.
            const auto name = maybe(text());
            WildTrack wild(recording("wild" + std::to_string(i), 3600, 25), name);
            wild.isApproved = chance(70);
            made.wildTracks.push_back(std::move(wild));
        }
        made.groups = SyncGroupList(std::move(groups));
        return made;
    }

  private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    bool chance(int percent) { return below(100) < percent; }
    template <class T, std::size_t n>
    T oneOf(const T (&values)[n]) {
        return values[static_cast<std::size_t>(below(n))];
    }
    template <class T>
    std::optional<T> maybe(T value) {
        return chance(80) ? std::optional<T>(std::move(value)) : std::nullopt;
    }
    double number(double sane) { return any_ && chance(25) ? oneOf(oddNumbers) : sane; }
    int integer(int sane) { return any_ && chance(25) ? oneOf(oddIntegers) : sane; }
    double between(double least, double most) { return least + (most - least) * below(10001) / 10000; }

    std::string text() {
        static const char* const pieces[] = {
            "A", "b",  "7",  " ",    "&",    "<",           ">",   "\"",
            "'", "\n", "\t", "ä",    "中",   "💡",           "]]>", "editable=\"1\"",
            ".", "-",  "/",  "\x01", "\xFF", "\xED\xA0\x80"};
        std::string made;
        for (int i = below(8); i > 0; --i) made += oneOf(pieces);
        return made;
    }
    std::string timecode(double seconds, double fps) {
        static const char* const odd[] = {
            "", "noon", "-1:00:00:00", "99:99:99:99", "1:2:3:4:5", "999999999999:00:00:00", "00:00:00;00"};
        return any_ && chance(25) ? oneOf(odd) : TimecodeUtils::secondsToTC(seconds, fps);
    }

    /// Sets each declared switch and each declared choice.
    void choose(platform::SettingsStore& store) {
        for (const SettingDescription& setting : SettingsCatalogue::all())
            if (setting.kind == SettingDescription::Kind::boolean)
                store.setByName(setting.key, chance(65));
            else if (!setting.choices.empty())
                store.setByName(setting.key, setting.choices[static_cast<std::size_t>(
                                                 below(static_cast<int>(setting.choices.size())))]);
    }

    void chooseSettings(ExportSettings& s) {
        platform::MemorySettingsStore store;
        choose(store);
        s = ExportSettings(store);
        s.frameRate = s.projectFrameRate = number(oneOf(rates));
        s.set(settings::eventName, chance(50) ? text() : "Day 1");
        s.fcpxmlVersion = static_cast<fcpxml::FCPXMLVersion>(below(9));
        s.set(settings::audioBaseRole, chance(80) ? "dialogue" : text());
        if (chance(50)) s.subroleMap = {{1, "Mix"}, {2, text()}, {-1, "x"}};
        s.defaultAudioTracks = integer(1 + below(4));
        s.outputWidth = integer(1920);
        s.alternateHeight = integer(1080);
        s.customNamingPattern = maybe("{scene}" + text() + "{take}");
        s.set(settings::eventNamePattern, chance(50) ? "{eventName} {scene:3}" : "S{scene}" + text());
        if (chance(40)) s.atmoFileURL = FileURL{"/media/atmo" + text() + ".wav"};
        const double atmo = number(between(1, 300));
        if (atmo > 0) s.atmoDurationSeconds = atmo; // the settings allow no other values
        if (chance(50)) s.globalAudioOffsetSeconds = number(between(-1, 1));
        if (chance(30)) s.globalAudioOffsetStartingFromFilename = "B";
        if (chance(30)) s.globalAudioOffsetStartingFromTC = timecode(40000, 25);
    }

    MediaAsset recording(const std::string& name, double start, double fps) {
        MediaAsset made(FileURL{"/media/" + name + ".WAV"}, AssetKind::audio);
        made.durationSeconds = maybe(number(between(0.01, 400)));
        made.channelCount = maybe(integer(1 + below(9)));
        static constexpr double sampleRates[] = {48000, 96000, 44100};
        made.sampleRate = maybe(number(oneOf(sampleRates)));
        made.frameRate = maybe(number(fps));
        const double samples = start * made.sampleRate.value_or(48000);
        if (chance(70) && samples >= 1 && samples < 1e18)
            made.bextTimeReference = static_cast<std::uint64_t>(samples);
        else
            made.startTimecodeString = timecode(start, fps);
        if (any_ && chance(10)) made.bextTimeReference = std::numeric_limits<std::uint64_t>::max();
        if (chance(60)) made.ixmlData = ixml();
        return made;
    }

    IXMLData ixml() {
        IXMLData made;
        made.scene = maybe(chance(60) ? std::to_string(11 + below(3)) : text());
        made.take = maybe(std::to_string(below(5)));
        made.note = maybe(text());
        for (int track = below(6); track > 0; --track) made.tracks.push_back({track, "T" + text()});
        return made;
    }

    MediaAsset camera(const std::string& name) {
        MediaAsset made(FileURL{"/media/" + name + ".mov"}, AssetKind::video);
        const double fps = oneOf(rates);
        made.projectFrameRate = maybe(number(fps));
        static constexpr double sensors[] = {24, 120, 12, 50};
        if (chance(40)) made.sensorFrameRate = number(oneOf(sensors));
        made.frameRate = maybe(number(chance(50) ? fps : made.sensorFrameRate.value_or(fps)));
        // Close to each other, so that cameras overlap.
        const double start = 36000 + between(0, 60);
        if (chance(50)) made.timecodeFrameRate = timecodeRate::all().at(static_cast<std::size_t>(below(23)));
        made.startTimecodeString =
            maybe(made.timecodeFrameRate && !any_ ? TimecodeUtils::secondsToTC(start, *made.timecodeFrameRate)
                                                  : timecode(start, fps));
        made.durationSeconds = maybe(number(between(0.01, 40)));
        made.width = maybe(integer(3840));
        made.height = maybe(integer(2160));
        static const char* const codecs[] = {"apch", "AVC1", "xxxx"};
        made.videoCodecFourCC = maybe(std::string(oneOf(codecs)));
        if (any_ && chance(20)) made.bextTimeReference = random_();
        if (chance(20))
            made.sourceRateDomainOverride =
                chance(50) ? SourceRateDomain::sensorRate : SourceRateDomain::conformedExternally;
        return made;
    }

    void edit(SyncGroup& made, ExportSettings& settings) {
        if (chance(50)) made.manualAudioOffsetSeconds = number(between(-2, 2));
        if (chance(50)) made.masterGainDB = number(between(-12, 12));
        if (chance(30)) made.manualActiveTracks = {1, integer(3)};
        if (chance(30))
            made.aleMetadata =
                std::map<std::string, std::string>{{"Scene", std::to_string(below(14))}, {"Take", text()}};
        if (chance(20)) made.manualClipName = text();
        made.isPickup = chance(20);
        made.isExcludedFromExport = chance(10);
        if (chance(30)) made.isExcludedFromMulticamFlag = chance(50);
        made.generateNativeMOSClip = chance(30);
        if (chance(30)) made.generateProjectRateClipFlag = chance(70);
        if (chance(20)) made.nativeMOSNameSuffix = text();
        if (chance(40)) return;
        SmartAudioResult& result = settings.smartAudioResults[made.id];
        result.bestTrackIndex = maybe(integer(2));
        for (int track = below(5); track > 0; --track) {
            TrackAdjustment& adjustment = result.tracks.emplace_back();
            adjustment.trackIndex = integer(track);
            adjustment.voiceIsolationAmount = maybe(static_cast<float>(number(0.4)));
            adjustment.loudnessAmount = maybe(static_cast<float>(number(0.3)));
        }
        for (int i = below(6); i > 0; --i)
            result.blocks.push_back({.startSeconds = number(i),
                                     .endSeconds = number(i + 1.5),
                                     .activeTrack = integer(1 + below(3)),
                                     .secondaryTrack = maybe(2),
                                     .kind = BlockKind::boom,
                                     .gainMultiplier = number(1),
                                     .peakDB = number(-12),
                                     .reason = text()});
    }

    /// The start that a file states, in seconds since midnight.
    static double startOf(const MediaAsset& asset) {
        if (asset.bextTimeReference.value_or(0) != 0)
            return TimecodeUtils::bextToSeconds(*asset.bextTimeReference, asset.sampleRate.value_or(48000));
        const auto rate = asset.timecodeFrameRate.value_or(
            TimecodeUtils::frameRate(asset.projectFrameRate.value_or(asset.frameRate.value_or(24))));
        const auto timecode = Timecode::fromString(asset.startTimecodeString.value_or(""), rate);
        return timecode ? timecode->realTimeValue() : 0;
    }

    SyncGroup group(int index, ExportSettings& settings) {
        static const char* const prefixes[] = {"A001C00", "B001C00", "clip", "240517_"};
        MediaAsset video = camera(oneOf(prefixes) + std::to_string(index) + (any_ ? text() : ""));
        const double start = startOf(video);
        std::vector<AudioMatch> matches;
        for (int i = below(4); i > 0; --i) {
            const MediaAsset sound = recording("MIX" + std::to_string(index) + "-" + std::to_string(i),
                                               std::max(0.0, start + between(-5, 5)), 25);
            const double overlap = number(10);
            matches.emplace_back(sound, number(startOf(sound) - start), overlap);
        }
        static const MatchStatus statuses[] = {MatchStatus::matched(),         MatchStatus::manual(),
                                               MatchStatus::splitRecording(2), MatchStatus::mos(),
                                               MatchStatus::matched(),         MatchStatus::unmatched()};
        auto clipName = maybe(text());
        SyncGroup made(std::move(video), std::move(matches), oneOf(statuses), std::move(clipName));
        edit(made, settings);
        return made;
    }

    std::mt19937 random_;
    bool any_;
};

} // namespace

Shoot randomShoot(unsigned seed, Numbers numbers) { return Maker(seed, numbers).shoot(); }

} // namespace orvane::test
