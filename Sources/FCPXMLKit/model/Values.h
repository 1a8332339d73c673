#pragma once

#include "FCPXMLKit/model/FCPXMLVersion.h"
#include "FCPXMLKit/model/Time.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::fcpxml {

/// A level in decibels, such as "-3.21dB".
struct Decibels {
    double value = 0;
    static std::optional<Decibels> fromString(std::string_view text);
    bool operator==(const Decibels&) const = default;
};

struct Hertz {
    std::int64_t value = 0;
    bool operator==(const Hertz&) const = default;
};

/// An instant with the zone it is shown in (UTC when absent), such as "2024-05-17 10:00:00 +0200".
struct DateTime {
    std::chrono::sys_seconds date;
    std::optional<std::chrono::minutes> timeZone; ///< offset from UTC
    static std::optional<DateTime> fromString(std::string_view text);
    bool operator==(const DateTime&) const = default;
};

/// The identifier of a resource, "r1" and so on.
struct ID {
    std::string value;
    bool operator==(const ID&) const = default;
};

/// A reference to a resource; holds the same text as its ID.
struct IDREF {
    std::string value;
    bool operator==(const IDREF&) const = default;
};

/// A role, such as "dialogue.Boom": the part before the point is the main role.
struct Role {
    std::string id;

    std::string name() const;
    /// Only if the text has exactly two parts.
    std::optional<std::string> subrole() const;
    bool operator==(const Role&) const = default;
};

struct AudioRole : Role {
    /// For people, such as "Dialogue (Boom)".
    std::string description() const;
};

struct VideoRole : Role {
    std::string description() const;
};

struct VideoColorSpace {
    std::string value; ///< such as "1-1-1"
    std::string name;  ///< such as "Rec. 709"
    static VideoColorSpace rec709() { return {"1-1-1", "Rec. 709"}; }
    bool operator==(const VideoColorSpace&) const = default;
};

/// Names of formats that Final Cut Pro knows.
namespace VideoFormat {
inline constexpr std::string_view FFVideoFormat1080p24 = "FFVideoFormat1080p24";
inline constexpr std::string_view FFVideoFormatRateUndefined = "FFVideoFormatRateUndefined";
} // namespace VideoFormat

enum class TcFormat { df, ndf };
enum class SrcEnable { all, audio, video, none };

// The text forms of attribute values.

inline std::string_view attributeText(bool value) { return value ? "1" : "0"; }
std::string attributeText(int value);
std::string attributeText(std::int64_t value);
/// At most 10 decimals, halves rounded up, no trailing zeros.
std::string attributeText(double value);
inline std::string attributeText(const Time& value) { return value.description(); }
std::string attributeText(const Decibels& value);
std::string attributeText(const DateTime& value);
std::string attributeText(const VideoColorSpace& value);
// NOLINTNEXTLINE(bugprone-return-const-ref-from-parameter): texts of a document are not copied to be written
inline const std::string& attributeText(const std::string& value) { return value; }
inline const std::string& attributeText(const ID& value) { return value.value; }
inline const std::string& attributeText(const IDREF& value) { return value.value; }
inline const std::string& attributeText(const Role& value) { return value.id; }
inline std::string attributeText(const Hertz& value) { return attributeText(value.value); }
inline std::string_view attributeText(TcFormat value) { return value == TcFormat::df ? "DF" : "NDF"; }
std::string_view attributeText(SrcEnable value);

} // namespace orvane::fcpxml
