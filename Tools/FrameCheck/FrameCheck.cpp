#include "FrameCheck/FrameCheck.h"

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Ingest/StartSources.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/ExactRate.h"

#include <cmath>
#include <map>
#include <random>
#include <utility>

namespace orvane::frameCheck {

namespace {

using fcpxml::Time;

constexpr std::size_t clipsPerDocument = 100;
constexpr std::size_t mostFaultTexts = 20;

Time frames(std::int64_t count, const Fraction& rate) {
    return Time(count, 1) * BFraction(BInt(rate.denominator()), BInt(rate.numerator()));
}

/// What the document must say about a clip.
struct Expected {
    Time start, duration, frame;
    Time soundStart, soundPlace, soundAll, soundLength;
    bool isDrop = false;
};

class Maker {
  public:
    explicit Maker(unsigned seed) : random_(seed) {}

    std::int64_t below(std::int64_t limit) {
        return static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(limit));
    }

    /// A picture of `count` frames with a timecode that starts at `first` frames.
    MediaAsset picture(const std::string& name, double aroundSeconds) {
        const auto all = timecodeRate::all();
        const TimecodeFrameRate counted = all.at(static_cast<std::size_t>(below(std::ssize(all))));
        const Fraction rate = timecodeRate::rate(counted);
        const auto others = picturesUnder(rate);
        const Fraction shown = below(2) == 0 || others.empty()
                                   ? rate
                                   : others.at(static_cast<std::size_t>(below(std::ssize(others))));
        MediaAsset video(FileURL{"/media/" + name}, AssetKind::video);
        const std::int64_t first =
            aroundSeconds > 0
                ? std::llround((aroundSeconds + static_cast<double>(below(20))) * rate.doubleValue()) +
                      below(10)
                : below(std::llround(86400 * rate.doubleValue()));
        video.startTimecodeString = TimecodeUtils::framesToTC(first, counted);
        video.timecodeFrameRate = counted;
        video.durationSeconds = frames(1 + below(std::llround(600 * shown.doubleValue())), shown).toDouble();
        if (below(4) == 0) { // its own sound continues
            video.pictureSeconds = video.durationSeconds;
            *video.durationSeconds += static_cast<double>(1 + below(9)) / shown.doubleValue();
        }
        video.frameRate = spelled(shown.doubleValue());
        if (below(2) == 0) {
            video.projectFrameRate = spelled(rate.doubleValue());
            StartSources::countPictures(video, false);
        }
        return video;
    }

    /// The clip with a recording of its own.
    std::pair<SyncGroup, Expected> clip(const MediaAsset& video, double projectRate) {
        Expected expected;
        const double number = video.projectFrameRate.value_or(video.frameRate.value_or(projectRate));
        const Fraction shown = exactRate(number);
        expected.frame = frames(1, shown);
        const auto counted = video.timecodeFrameRate.value_or(TimecodeUtils::frameRate(shown.doubleValue()));
        const Fraction rate = timecodeRate::rate(counted);
        Time label = Time::zero(); // may be between two frames of the picture
        if (const auto read = Timecode::fromString(video.startTimecodeString.value_or(""), counted))
            label = frames(std::llround(read->realTimeValue() * rate.doubleValue()), rate);
        expected.start = label.toFrame(expected.frame, fcpxml::FrameSampling::floor);
        expected.duration = frames(
            static_cast<std::int64_t>(video.shownSeconds().value_or(0) * shown.doubleValue() + 0.00001),
            shown);
        expected.isDrop =
            (counted == TimecodeFrameRate::fps29_97d || counted == TimecodeFrameRate::fps59_94d) &&
            (shown == Fraction(30000, 1001) || shown == Fraction(60000, 1001));

        static constexpr int sampleRates[] = {44100, 48000, 96000};
        const int sampleRate = sampleRates[below(3)];
        MediaAsset audio(FileURL{"/media/" + video.filename + ".wav"}, AssetKind::audio);
        audio.sampleRate = sampleRate;
        const std::int64_t samples = sampleRate + below(std::int64_t{600} * sampleRate);
        audio.durationSeconds = static_cast<double>(samples) / sampleRate;
        expected.soundAll = Time(samples, sampleRate);
        expected.soundLength = expected.soundAll.toFrame(expected.frame, fcpxml::FrameSampling::floor);
        const std::int64_t shift = below(std::int64_t{10} * sampleRate) - 5 * sampleRate;
        const auto first = static_cast<std::int64_t>(expected.start.toDouble() * sampleRate) + shift;
        double sync = static_cast<double>(shift) / sampleRate;
        if (below(4) == 0 || first < 1) {
            expected.soundPlace = expected.start + Time(shift, sampleRate);
        } else {
            audio.bextTimeReference = static_cast<std::uint64_t>(first);
            expected.soundStart = Time(first, sampleRate);
            const Time behindLabel = expected.soundStart - label;
            expected.soundPlace = expected.start + behindLabel;
            sync = behindLabel.toDouble();
        }
        SyncGroup group(video, {AudioMatch(audio, sync, 1)}, MatchStatus::manual());
        if (below(2) == 0) {
            const std::int64_t nudges = below(101) - 50;
            for (std::int64_t i = 0; i < std::abs(nudges); ++i)
                group.manualAudioOffsetSeconds += (nudges < 0 ? -1 : 1) / exactRateValue(number);
            expected.soundPlace += frames(nudges, shown);
        }
        return {std::move(group), expected};
    }

  private:
    /// The rates of pictures that may have a timecode of another rate: twice it, and each 0.1 % off.
    static std::vector<Fraction> picturesUnder(const Fraction& counted) {
        constexpr double beside = 0.0015;
        std::vector<Fraction> rates;
        for (const TimecodeFrameRate one : timecodeRate::all()) {
            const Fraction rate = timecodeRate::rate(one);
            const double factor = rate.doubleValue() / counted.doubleValue();
            if (rate != counted && (std::abs(factor - 1) < beside || std::abs(factor / 2 - 1) < beside))
                rates.push_back(rate);
        }
        return rates;
    }

    /// In the forms in which files and people write the rate.
    double spelled(double rate) {
        const std::int64_t form = below(4);
        if (form == 0) return rate;
        if (form == 1) return static_cast<double>(static_cast<float>(rate));
        const double digits = form == 2 ? 1000 : 100;
        return std::round(rate * digits) / digits;
    }

    std::mt19937_64 random_;
};

/// A tag of a document without '<' and '>' in its texts.
struct Tag {
    std::string_view name, body;

    std::string text(std::string_view attribute) const {
        const std::string start = " " + std::string(attribute) + "=\"";
        const auto at = body.find(start);
        if (at == std::string_view::npos) return {};
        const auto from = at + start.size();
        return std::string(body.substr(from, body.find('"', from) - from));
    }
    Time time(std::string_view attribute) const {
        const std::string value = text(attribute);
        if (value.empty()) return Time::zero(); // the format's default of an absent value
        return Time::fromString(value).value_or(Time(-1, 1));
    }
};

/// Reads one document.
class Document {
  public:
    Document(const std::map<std::string, Expected>& expected, Report& report)
        : expected_(expected), report_(report) {}

    void read(std::string_view text) {
        for (auto at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
            const std::string_view body = text.substr(at + 1, text.find('>', at) - at - 1);
            visit({body.substr(0, body.find_first_of(" />", 1)), body});
        }
    }

  private:
    void expect(const char* what, const std::string& is, const std::string& should) {
        if (is == should) return;
        ++report_.faultCount;
        if (report_.faults.size() < mostFaultTexts)
            report_.faults.push_back(name_ + ": " + what + " is " + is + ", not " + should);
    }
    void expect(const char* what, const Time& is, const Time& should) {
        if (!(is == should)) expect(what, is.description(), should.description());
    }

    void visit(const Tag& tag) {
        if (tag.name == "asset" || tag.name == "format") resources_[tag.text("id")] = tag;
        if (tag.name == "multicam") {
            ++report_.multicams;
            earliest_ = tag.time("tcStart");
        }
        if (tag.name == "/multicam") earliest_.reset();
        if (tag.name == "sync-clip") container_ = tag;
        if (tag.name == "asset-clip") picture(tag);
        if (tag.name == "clip") sound(tag);
        if (tag.name == "audio") {
            expect("all of the sound", resources_[tag.text("ref")].time("duration"), now_->soundAll);
            expect("the channel's start", tag.time("start"), now_->soundStart);
            expect("the channel's length", tag.time("duration"), now_->soundLength);
        }
    }

    void picture(const Tag& tag) {
        name_ = tag.text("name");
        const auto found = expected_.find(name_);
        if (found == expected_.end()) return;
        now_ = &found->second;
        ++report_.clips;
        for (const Tag& element : {tag, resources_[tag.text("ref")]}) {
            expect("the picture's start", element.time("start"), now_->start);
            expect("the picture's length", element.time("duration"), now_->duration);
        }
        expect("the frame", resources_[tag.text("format")].time("frameDuration"), now_->frame);
        expect("tcFormat", tag.text("tcFormat"), now_->isDrop ? "DF" : "NDF");
        const Time start = container_.time("start");
        if (!earliest_ || !isMovedToAFrame(start)) expect("the clip's start", start, now_->start);
        expect("the clip's offset", container_.time("offset"),
               earliest_ ? comesIn(start) - *earliest_ : start);
    }

    /// A picture that ends within the first frame of the main format is shown unchanged from that frame on;
    /// from any other picture the part before it is left out.
    Time comesIn(const Time& start) {
        const Time frame = resources_["r1"].time("frameDuration");
        Time next = start.toFrame(frame, fcpxml::FrameSampling::floor);
        if (next < start) next = next + frame;
        const bool isOver = start == now_->start && now_->duration - (next - start) < frame;
        return isOver ? next : start;
    }

    /// An angle beside cameras of other rates begins on the next frame of the main format.
    bool isMovedToAFrame(const Time& start) {
        const Time frame = resources_["r1"].time("frameDuration"), moved = start - now_->start;
        return !(moved < Time::zero()) && moved < frame &&
               start == start.toFrame(frame, fcpxml::FrameSampling::floor);
    }

    void sound(const Tag& tag) {
        expect("the sound's place", tag.time("offset"), now_->soundPlace);
        expect("the sound's start", tag.time("start"), now_->soundStart);
        expect("the sound's length", tag.time("duration"), now_->soundLength);
    }

    const std::map<std::string, Expected>& expected_;
    Report& report_;
    std::map<std::string, Tag> resources_;
    Tag container_;
    std::optional<Time> earliest_;
    const Expected* now_ = nullptr;
    std::string name_;
};

/// `pictures` have different names.
void checkDocument(const std::vector<MediaAsset>& pictures, bool asMulticam, Maker& maker, Report& report) {
    ExportSettings settings;
    settings.frameRate = settings.projectFrameRate = 25;
    settings.set(settings::generateMulticam, asMulticam);
    settings.set(settings::generateRawMediaEvent, false);
    settings.set(settings::trimMode, TrimMode::videoDuration);
    std::map<std::string, Expected> expected;
    std::vector<SyncGroup> groups;
    for (const MediaAsset& video : pictures) {
        auto [group, its] = maker.clip(video, settings.projectFrameRate);
        expected.emplace(video.filename, its);
        groups.push_back(std::move(group));
    }
    const auto result = FCPXMLExporter::exportDocument(SyncGroupList(std::move(groups)), {}, settings);
    Document(expected, report).read(result.fcpxmlString);
}

} // namespace

Report checkRandomClips(std::size_t count, unsigned seed) {
    Report report;
    Maker maker(seed);
    for (std::size_t done = 0; done < count;) {
        const bool asMulticam = done / clipsPerDocument % 2 == 1;
        std::vector<MediaAsset> pictures;
        for (std::size_t i = 0; i < clipsPerDocument && done < count; ++i, ++done) {
            // Cameras of one moment, in some cases.
            const double around = asMulticam ? 1000.0 * static_cast<double>(1 + maker.below(80)) : 0;
            pictures.push_back(maker.picture("A" + std::to_string(done) + ".mov", around));
        }
        checkDocument(pictures, asMulticam, maker, report);
    }
    return report;
}

Report checkPictures(const std::vector<MediaAsset>& pictures, unsigned seed) {
    constexpr int times = 20;
    Report report;
    Maker maker(seed);
    for (int i = 0; i < times; ++i) checkDocument(pictures, i % 2 == 1, maker, report);
    return report;
}

} // namespace orvane::frameCheck
