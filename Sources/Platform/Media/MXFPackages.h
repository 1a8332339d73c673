#pragma once

#include "Platform/Media/MXFSets.h"
#include "Platform/MediaInspector.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace orvane::platform::mxf {

/// The packages of a header, which they point into: the material that is played, the file, and the tape or
/// the import behind it, each the source of the one before.
class Packages {
  public:
    explicit Packages(const Header& header);

    /// The set of that identity; null where there is none.
    const Set* find(const Label& identity) const;
    /// Of the material: the longest of picture and sound. Nothing where it is not known.
    std::optional<double> seconds() const;
    /// Of the material's pictures alone, whose sound may go on behind the last one.
    std::optional<double> pictureSeconds() const;
    /// From package to package, along the first clip of picture or sound, the first start that is not 0.
    std::optional<CountedTimecode> start() const;
    /// Of the material, seconds since 1970 UTC.
    std::optional<std::int64_t> creationTime() const;

  private:
    struct Track {
        const Set* set = nullptr;
        Rate rate;
        std::vector<const Set*> components; ///< a sequence's, or the one that stands in its place
    };
    struct Clip {
        const Set* component = nullptr;
        Rate rate;
    };
    std::vector<Track> tracksOf(const Set& package) const;
    enum class Essence : std::uint8_t { picture, sound, other };
    Essence essenceOf(const Track& track) const;
    std::optional<double> longestSeconds(bool ofPictureAlone) const;
    static std::optional<CountedTimecode> timecodeIn(const std::vector<Track>& tracks);
    std::optional<Clip> firstClip(const std::vector<Track>& tracks) const;

    std::map<Label, const Set*> byIdentity_, byPackageID_; ///< the first of each
    const Set* material_ = nullptr;
};

} // namespace orvane::platform::mxf
