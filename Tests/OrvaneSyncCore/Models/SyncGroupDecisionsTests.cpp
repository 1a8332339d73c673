#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Models/SyncGroupFields.h"
#include "Support/Assets.h"
#include "Support/Test.h"

#include <concepts>
#include <set>
#include <string_view>

namespace orvane {
namespace {

/// Types of the fields that a scan sets and no editor changes.
template <class T>
constexpr bool isOfScan =
    std::same_as<T, UUID> || std::same_as<T, MediaAsset> || std::same_as<T, std::vector<AudioMatch>>;

template <class T>
T changed(const T& value) {
    if constexpr (std::same_as<T, bool>)
        return !value;
    else if constexpr (std::is_arithmetic_v<T>)
        return value + 1;
    else if constexpr (std::same_as<T, std::string>)
        return value + "x";
    else if constexpr (std::same_as<T, std::set<int>>)
        return std::set{3};
    else if constexpr (std::same_as<T, SyncMethod>)
        return SyncMethod::manual;
    else if constexpr (std::same_as<T, MatchStatus>)
        return MatchStatus::manual();
    else if constexpr (std::same_as<T, std::vector<BlockOverride>>)
        return T{BlockOverride{UUID::random(), 0, 1, 2}};
    else if constexpr (std::same_as<T, std::optional<ImportedTexts>>)
        return T(ImportedTexts{{"Scene", "1"}});
    else // optional
        return T(changed(typename T::value_type{}));
}

TEST(SyncGroup, doubtsAndNamesDependOnTheDeclaredFields) {
    const SyncGroup plain = test::clip(test::video("a.mov"), test::audio("s.wav"));
    SyncGroup named = plain, moved = plain, approved = plain;
    named.manualClipName = "Hero";
    moved.manualAudioOffsetSeconds = 1;
    approved.isApproved = true;
    EXPECT_TRUE(haveSameDoubtInputs(plain, named) && !haveSameNameInputs(plain, named));
    EXPECT_TRUE(!haveSameDoubtInputs(plain, moved) && haveSameNameInputs(plain, moved));
    EXPECT_TRUE(haveSameDoubtInputs(plain, approved) && haveSameNameInputs(plain, approved));
    EXPECT_FALSE(haveSameContents(plain, approved));
    approved.video.filename = "b.mov";
    EXPECT_FALSE(haveSameDoubtInputs(plain, approved) || haveSameNameInputs(plain, approved));
}

/// The declarations in the list of a clip's fields are true for each field.
TEST(SyncGroup, decisionsAreFoundAndSaved) {
    const SyncGroup plain = test::clip(test::video("a.mov"), test::audio("s.wav"));
    EXPECT_FALSE(holdsDecisions(plain));
    SyncGroup takenBack = plain;
    takenBack.isExcludedFromMulticamFlag = false;
    EXPECT_FALSE(holdsDecisions(takenBack));
    const auto check = [&]<FieldSource source, KeptIn kept, Concerns derived, class Value>(
                           const ClipField<source, kept, derived, Value>& field) {
        if constexpr (!isOfScan<Value>) {
            SyncGroup group = plain;
            const Value value = changed(group.*field.member);
            group.*field.member = value;
            EXPECT_EQ(holdsDecisions(group), source == FieldSource::decision || source == FieldSource::clap)
                << field.key;
            EXPECT_EQ(holdsDecisionsBesideClap(group), source == FieldSource::decision) << field.key;
            SyncGroup scanned = plain;
            fromJSON<PersistedGroup>(toJSON(PersistedGroup(group))).applyTo(scanned);
            EXPECT_EQ(scanned.*field.member == value, kept == KeptIn::projects) << field.key;
        }
    };
    std::apply([&](const auto&... field) { (check(field), ...); }, recordFields<SyncGroup>());
}

} // namespace
} // namespace orvane
