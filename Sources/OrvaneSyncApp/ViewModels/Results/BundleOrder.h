#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The clips that a list shows, in bundles of those with the same recording, and the bundles in their order.
/// After a change of a few clips, only the bundles of these clips are moved. Interface thread.
class BundleOrder {
  public:
    using Clips = std::vector<SyncGroupList::Element>;
    struct Key {
        double number = 0;
        std::string text{}; ///< a sort key; decides between equal numbers

        bool operator==(const Key&) const = default;
    };
    struct Bundle {
        std::string id;
        std::vector<std::size_t> positions{}; ///< in the list of all clips, ascending
        std::size_t shootPlace = 0;           ///< in the order of the shoot
        Clips clips{};                        ///< those that are listed
        Key key{};
        std::size_t firstListed = 0; ///< position of the first of `clips`; decides between equal keys
    };
    struct Rules {
        std::function<bool(const SyncGroup&)> isListed;
        std::function<Key(const Clips&)> keyOf; ///< null: the order of the shoot
        bool isAscending = true;
    };

    void layOut(const SyncGroupList& clips, Rules rules);

    enum class Followed : std::uint8_t {
        samePlaces, ///< the same clips are listed, in the same order
        moved,      ///< they may be others, or in another order
        unknown     ///< `layOut` is needed
    };
    /// `changed`: positions of the clips that have changed since the last call of `layOut` or `follow`.
    Followed follow(const SyncGroupList& clips, const std::vector<std::size_t>& changed);

    /// Those with listed clips, in order.
    const std::vector<std::shared_ptr<Bundle>>& listed() const { return listed_; }

  private:
    /// A bundle with the values that it is about to get.
    struct Update {
        std::shared_ptr<Bundle> bundle;
        Clips clips;
        Key key;
        std::size_t firstListed = 0;
    };
    void group(const SyncGroupList& clips);
    std::shared_ptr<Bundle>& bundleNamed(const std::string& id);
    Update updateOf(const std::shared_ptr<Bundle>& bundle, const SyncGroupList& clips) const;
    static void apply(Update& update);
    void sort();
    bool isBefore(const Bundle& a, const Bundle& b) const;
    void move(std::vector<Update>& displaced);

    Rules rules_;
    std::unordered_map<std::string, std::shared_ptr<Bundle>> byID_;
    std::vector<std::shared_ptr<Bundle>> byPosition_; ///< of each clip
    ClipsMark grouped_;                               ///< the clips that made the bundles
    std::vector<std::shared_ptr<Bundle>> listed_;
};

} // namespace orvane
