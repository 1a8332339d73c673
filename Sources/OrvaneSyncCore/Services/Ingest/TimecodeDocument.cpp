#include "OrvaneSyncCore/Services/Ingest/TimecodeDocument.h"

#include "Platform/Text.h"
#include "Platform/XMLStreamParser.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using StatedTimecode::Label;

/// Texts and attributes that are used are much shorter.
constexpr std::size_t longestText = 256;

std::string_view localName(std::string_view name) { return name.substr(name.find(':') + 1); }

/// The number before one or two letters, as in "59.94p" or "25.00i".
std::optional<double> rateIn(std::string_view text) {
    text = platform::text::trimmed(text);
    return platform::text::decimalNumber(text.substr(0, text.find_first_not_of("0123456789.")));
}

std::optional<TimecodeFrameRate> rateOfXMPFormat(std::string_view format) {
    static constexpr std::array<std::pair<std::string_view, TimecodeFrameRate>, 11> formats{{
        {"23976Timecode", TimecodeFrameRate::fps23_976},
        {"24Timecode", TimecodeFrameRate::fps24},
        {"25Timecode", TimecodeFrameRate::fps25},
        {"2997DropTimecode", TimecodeFrameRate::fps29_97d},
        {"2997NonDropTimecode", TimecodeFrameRate::fps29_97},
        {"30Timecode", TimecodeFrameRate::fps30},
        {"48Timecode", TimecodeFrameRate::fps48},
        {"50Timecode", TimecodeFrameRate::fps50},
        {"5994DropTimecode", TimecodeFrameRate::fps59_94d},
        {"5994NonDropTimecode", TimecodeFrameRate::fps59_94},
        {"60Timecode", TimecodeFrameRate::fps60},
    }};
    for (const auto& [name, rate] : formats)
        if (name == format) return rate;
    return std::nullopt;
}

/// Four bytes, each with two decimal digits; flags are in the bits above the tens.
std::optional<Label> labelInWord(std::string_view text) {
    constexpr std::size_t digits = 8;
    std::uint32_t word = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), word, 16);
    if (text.size() != digits || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    constexpr std::uint32_t dropFrame = 0x40;
    const auto number = [word](unsigned shift, std::uint32_t tensMask) {
        const std::uint32_t byte = word >> shift & 0xFFU;
        const std::uint32_t units = byte & 0x0FU;
        return units > 9 ? 99 : static_cast<int>((byte >> 4U & tensMask) * 10 + units);
    };
    const Label label{number(0, 3), number(8, 7), number(16, 7), number(24, 3),
                      (word >> 24U & dropFrame) != 0};
    if (label.hours > 23 || label.minutes > 59 || label.seconds > 59 || label.frames > 59)
        return std::nullopt;
    return label;
}

class Collector final : public platform::XMLStreamHandler {
  public:
    void startElement(std::string_view name) override {
        path_.emplace_back(localName(name));
        text_.clear();
        if (isOwnXMP("startTimecode")) xmp_ = &ownStart_;
        if (isOwnXMP("altTimecode")) xmp_ = &alternative_;
        if (path_.back() == "LtcChange") change_ = {};
    }

    void attribute(std::string_view name, std::string_view value) override {
        if (value.size() > longestText) return;
        const std::string_view key = localName(name), element = path_.back();
        takeXMP(key, value);
        if (element == "LtcChangeTable" && key == "tcFps") tableBase_ = value;
        if (element == "LtcChange" && key == "frameCount") change_.first = value;
        if (element == "LtcChange" && key == "value") change_.second = value;
        if (element == "VideoFrame" && key == "formatFps") formatRate_ = rateIn(value);
        if (element == "FrameRate" && key == "DropFrameFlag") isDrop_ = value == "true";
    }

    void characters(std::string_view text) override {
        if (text_.size() + text.size() <= longestText) text_ += text;
    }

    void endElement(std::string_view) override {
        const std::string element = std::move(path_.back());
        const std::string_view text = platform::text::trimmed(text_);
        takeXMP(element, text);
        if (element == "LtcChange" && firstChange_.empty() && change_.first == "0")
            firstChange_ = change_.second;
        if (element == "StartTimecode" && label_.empty()) label_ = text;
        if (element == "FrameRate" && !labelRate_) labelRate_ = rateIn(text);
        path_.pop_back();
        if (element == "startTimecode" || element == "altTimecode") xmp_ = nullptr;
        text_.clear();
    }

    std::optional<StartTimecode> result(std::optional<double> pictureRate) const {
        if (!firstChange_.empty()) return ofTable(pictureRate ? pictureRate : formatRate_);
        for (const XMPTimecode* stated : {&alternative_, &ownStart_})
            if (auto start = ofXMP(*stated)) return start;
        return label_.empty() ? std::nullopt : ofLabel(pictureRate);
    }

  private:
    struct XMPTimecode {
        std::string value, format;
    };

    /// Whether the element is in the description of the file itself: its path ends with RDF, Description,
    /// `name`.
    bool isOwnXMP(std::string_view name) const {
        const std::size_t depth = path_.size();
        return depth >= 3 && path_[depth - 1] == name && path_[depth - 2] == "Description" &&
               path_[depth - 3] == "RDF";
    }

    void takeXMP(std::string_view key, std::string_view value) {
        if (xmp_ == nullptr) return;
        if (key == "timeValue") xmp_->value = value;
        if (key == "timeFormat") xmp_->format = value;
    }

    std::optional<StartTimecode> ofTable(std::optional<double> pictureRate) const {
        auto label = labelInWord(firstChange_);
        if (!label) label = StatedTimecode::labelIn(firstChange_);
        if (!label) return std::nullopt;
        const auto base = platform::text::decimalInteger(tableBase_);
        constexpr int highestBase = 120;
        if (!base || *base < 1 || *base > highestBase) return StatedTimecode::start(*label, std::nullopt);
        return StatedTimecode::start(
            *label, StatedTimecode::rateOf(static_cast<int>(*base), label->isDrop, pictureRate));
    }

    static std::optional<StartTimecode> ofXMP(const XMPTimecode& stated) {
        const auto label = StatedTimecode::labelIn(stated.value);
        if (!label || label->isZero()) return std::nullopt;
        return StatedTimecode::start(*label, rateOfXMPFormat(stated.format));
    }

    /// The frames of such a timecode count to at most 30, unless the frame number is higher.
    std::optional<StartTimecode> ofLabel(std::optional<double> pictureRate) const {
        const auto label = StatedTimecode::labelIn(label_);
        if (!label) return std::nullopt;
        const auto rate = labelRate_ ? labelRate_ : pictureRate;
        if (!rate || !(*rate >= 1) || *rate > 120) return StatedTimecode::start(*label, std::nullopt);
        int base = static_cast<int>(std::lround(*rate));
        constexpr int mostLabelled = 30;
        if (base > mostLabelled && base % 2 == 0 && label->frames < base / 2) base /= 2;
        return StatedTimecode::start(*label, StatedTimecode::rateOf(base, label->isDrop || isDrop_, rate));
    }

    std::vector<std::string> path_; ///< local names of the open elements
    std::string text_;
    XMPTimecode ownStart_, alternative_;
    XMPTimecode* xmp_ = nullptr;                 ///< the open one; null if there is none
    std::pair<std::string, std::string> change_; ///< frame count and value
    std::string tableBase_, firstChange_;
    std::optional<double> formatRate_;
    std::string label_;
    std::optional<double> labelRate_;
    bool isDrop_ = false;
};

} // namespace

std::optional<StartTimecode> startTimecodeFromXML(std::string_view document,
                                                  std::optional<double> pictureRate) {
    Collector collector;
    if (!platform::parseXMLStream(document, collector)) return std::nullopt;
    return collector.result(pictureRate);
}

} // namespace orvane
