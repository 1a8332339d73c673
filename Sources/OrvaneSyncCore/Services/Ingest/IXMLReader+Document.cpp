#include "OrvaneSyncCore/Services/Ingest/IXMLReader.h"

#include "Platform/Text.h"
#include "Platform/XMLStreamParser.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <utility>

namespace orvane {

namespace {

using platform::text::trimmed;

constexpr std::size_t entityTestBytes = 65536;
/// The limit for one field, as fields are shown in lists and written into every document.
constexpr std::size_t longestField = 65536;
constexpr std::string_view entityDeclaration = "<!ENTITY";

bool declaresEntities(std::string_view document) {
    const std::string_view start = document.substr(0, entityTestBytes);
    if (!platform::text::isValidUTF8(start)) return false;
    const auto sameLetter = [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; };
    constexpr std::string_view opening = "<!"; // rare in these documents
    for (std::size_t at = start.find(opening); at != std::string_view::npos; at = start.find(opening, at + 1))
        if (std::ranges::equal(start.substr(at, entityDeclaration.size()), entityDeclaration, sameLetter))
            return true;
    return false;
}

/// A name in upper case; recorders usually write it so.
class Capitals {
  public:
    explicit Capitals(std::string_view name) : view_(name) {
        const auto isOther = [](char c) { return !(c >= 'A' && c <= 'Z') && c != '_'; };
        if (std::ranges::none_of(name, isOther)) return;
        made_ = platform::text::uppercased(name);
        view_ = made_;
    }
    Capitals(const Capitals&) = delete;
    Capitals& operator=(const Capitals&) = delete;
    operator std::string_view() const { return view_; } // implicit: used like the text

  private:
    std::string made_;
    std::string_view view_;
};

std::optional<int> trackIndex(std::string_view text) {
    const auto value = platform::text::decimalInteger(text);
    return value && std::in_range<int>(*value) ? std::optional(static_cast<int>(*value)) : std::nullopt;
}

/// Collects the fields of one document. Elements are recognised by their name without prefix, ignoring case,
/// at any depth. Only elements inside a track, a speed and a list of tracks belong to these.
class IXMLParserDelegate final : public platform::XMLStreamHandler {
  public:
    void startElement(std::string_view name) override {
        const Capitals capitals(name);
        const std::string_view element = capitals;
        currentText_.clear();
        isFull_ = false;
        if (element == "TRACK_LIST") {
            inTrackList_ = true;
        } else if (element == "TRACK" && inTrackList_) {
            inTrack_ = true;
            currentChannelIndex_.reset();
            currentInterleaveIndex_.reset();
            currentTrackName_.reset();
        } else if (element == "SPEED") {
            inSpeed_ = true;
        }
    }

    void characters(std::string_view text) override {
        if (isFull_) return;
        const std::string_view fitting = platform::text::beginning(text, longestField - currentText_.size());
        currentText_ += fitting;
        isFull_ = fitting.size() < text.size();
    }

    void endElement(std::string_view name) override {
        const Capitals capitals(name);
        const std::string_view element = capitals;
        const std::string_view text = trimmed(currentText_);
        if (inTrack_)
            endInTrack(element, text);
        else if (inSpeed_)
            endInSpeed(element, text);
        else if (!inTrackList_)
            endOutside(element, text);
        if (element == "TRACK_LIST") inTrackList_ = false;
        if (element == "SPEED") inSpeed_ = false;
    }

    IXMLData takeData() { return std::move(data_); }

    std::optional<IXMLReader::Timestamp> timestamp() const {
        constexpr std::uint64_t mostOfAHalf = 0xFFFFFFFF;
        if (!lowSamples_ || *lowSamples_ > mostOfAHalf || highSamples_ > mostOfAHalf) return std::nullopt;
        const std::uint64_t samples = highSamples_ << 32U | *lowSamples_;
        if (samples == 0) return std::nullopt;
        return IXMLReader::Timestamp{samples, timestampRate_};
    }

  private:
    void endInTrack(std::string_view element, std::string_view text) {
        if (element == "CHANNEL_INDEX") {
            currentChannelIndex_ = trackIndex(text);
        } else if (element == "INTERLEAVE_INDEX") {
            currentInterleaveIndex_ = trackIndex(text);
        } else if (element == "NAME") {
            currentTrackName_ = text;
        } else if (element == "TRACK") {
            // The interleave index counts the channels of this file, the channel index those of the recorder.
            const auto index = currentInterleaveIndex_ ? currentInterleaveIndex_ : currentChannelIndex_;
            if (index && currentTrackName_ && !currentTrackName_->empty())
                data_.tracks.push_back({*index, *currentTrackName_});
            inTrack_ = false;
        }
    }

    void endInSpeed(std::string_view element, std::string_view text) {
        if (element == "TIMECODE_RATE") {
            keep(data_.timecodeRate, text);
        } else if (element == "TIMECODE_FLAG") {
            keep(data_.timecodeFlag, text);
        } else if (element == "TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO") {
            lowSamples_ = samplesIn(text);
        } else if (element == "TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI") {
            highSamples_ = samplesIn(text).value_or(0);
        } else if (element == "TIMESTAMP_SAMPLE_RATE") {
            const auto rate = platform::text::decimalNumber(text);
            timestampRate_ = rate && *rate > 0 ? rate : std::nullopt;
        }
    }

    static std::optional<std::uint64_t> samplesIn(std::string_view text) {
        const auto number = platform::text::decimalInteger(text);
        return number && *number >= 0 ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
    }

    void endOutside(std::string_view element, std::string_view text) {
        static const std::map<std::string_view, std::optional<std::string> IXMLData::*> fields{
            {"SCENE", &IXMLData::scene},         {"TAKE", &IXMLData::take},
            {"TAPE", &IXMLData::tape},           {"NOTE", &IXMLData::note},
            {"PROJECT", &IXMLData::project},     {"CIRCLED", &IXMLData::circled},
            {"WILD_TRACK", &IXMLData::wildTrack}};
        if (const auto found = fields.find(element); found != fields.end()) keep(data_.*found->second, text);
    }

    static void keep(std::optional<std::string>& field, std::string_view text) {
        if (text.empty())
            field.reset();
        else
            field = text;
    }

    IXMLData data_;
    std::string currentText_;
    bool isFull_ = false; ///< the rest of the field is dropped
    bool inTrackList_ = false;
    bool inTrack_ = false;
    bool inSpeed_ = false;
    std::optional<int> currentChannelIndex_;
    std::optional<int> currentInterleaveIndex_;
    std::optional<std::string> currentTrackName_;
    std::optional<std::uint64_t> lowSamples_; ///< the lower 32 bits
    std::uint64_t highSamples_ = 0;           ///< the upper 32 bits
    std::optional<double> timestampRate_;
};

} // namespace

std::optional<IXMLReader::Document> IXMLReader::parseDocument(std::string_view bytes) {
    const std::string_view document = bytes.substr(0, bytes.find('\0'));
    if (declaresEntities(document)) return std::nullopt;
    IXMLParserDelegate delegate;
    if (!platform::parseXMLStream(document, delegate)) return std::nullopt;
    return Document{delegate.takeData(), delegate.timestamp()};
}

std::optional<IXMLData> IXMLReader::parseIXMLContent(std::string_view bytes) {
    auto document = parseDocument(bytes);
    return document ? std::optional(std::move(document->data)) : std::nullopt;
}

} // namespace orvane
