#pragma once

#include "Platform/Media/MXFSets.h"
#include "Platform/MediaInspector.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace orvane::platform::mxf {

/// The packages of a header, which must outlive them: the material that is played, the file, and the tape or
/// the import. Each package is the source of the one before.
class Packages {
  public:
    explicit Packages(const Header& header);

    /// The set with that identity; null if there is none.
    const Set* find(const Label& identity) const;
    /// Length of the material: the longer one of picture and sound. Nothing if it is not known.
    std::optional<double> seconds() const;
    /// Length of the material's pictures alone; the sound may continue after the last picture.
    std::optional<double> pictureSeconds() const;
    /// The first start that is not 0, from package to package along the first clip of picture or sound.
    std::optional<CountedTimecode> start() const;
    /// When the material was made, seconds since 1970 UTC.
    std::optional<std::int64_t> creationTime() const;

  private:
    struct Track {
        const Set* set = nullptr;
        Rate rate;
        std::vector<const Set*> components; ///< of the sequence, or the one component in its place
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
