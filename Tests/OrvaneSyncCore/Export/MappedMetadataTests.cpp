#include "ExportFixtures.h"

#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataFieldGrouping.h"

namespace orvane {
namespace {

using Fields = std::map<std::string, std::string>;
using test::linesWith;

/// The values of the elements of that name: those with the key, or all for an empty key.
std::vector<std::string> valuesIn(const std::string& document, const std::string& element,
                                  const std::string& key = {}) {
    std::vector<std::string> values;
    for (const std::string& line : linesWith(document, "<" + element + " "))
        if (key.empty() || test::attributeOf(line, "key") == key)
            values.push_back(test::attributeOf(line, "value"));
    return values;
}

TEST(LockitFieldMapping, writesEachFieldWhereItIsMapped) {
    const std::string scene = "com.apple.proapps.studio.scene", shot = "com.apple.proapps.studio.shot";
    const std::string description = "com.apple.proapps.metadataField.description";
    const std::string note = "com.apple.proapps.metadataField.note";
    struct Case {
        const char* rule;
        JSON::Object targets; ///< the stored mapping
        Fields fields;
        std::string key; ///< of the metadata; empty: keywords
        std::vector<std::string> values;
        JSON::Object customKeys = {};
        const char* prefix = "";
    };
    const Case cases[] = {
        {"a comment goes to the notes",
         {},
         {{"takeComment", "great"}},
         note,
         {"V: great | A: Scene 9, Take 1"}},
        {"a description has its field", {}, {{"shotDescription", "wide"}}, description, {"wide"}},
        {"what has no target goes nowhere", {}, {{"intExtDayNight", "INT"}}, description, {}},
        {"the service's scene before the recorder's", {}, {{"scene", "12"}}, scene, {"12"}},
        {"the recorder's where the field is off", {{"scene", "off"}}, {{"scene", "12"}}, scene, {"9"}},
        {"an unknown target leaves the default", {{"take", "banana"}}, {{"take", "3"}}, shot, {"3"}},
        {"a value that is no text spoils the map",
         {{"take", "off"}, {"scene", 1}},
         {{"take", "3"}},
         shot,
         {"3"}},
        {"two fields on one key stand side by side, each with the prefix",
         {{"sceneContent", "description"}},
         {{"shotDescription", "a"}, {"sceneContent", "b"}},
         description,
         {"XY_a · XY_b"},
         {},
         "XY_"},
        {"keywords have no prefix",
         {{"tags", "keyword"}},
         {{"tags", "print, PU"}},
         "",
         {"KIND", "print, PU"},
         {},
         "XY_"},
        {"notes have no prefix",
         {},
         {{"takeComment", "great"}},
         note,
         {"V: great | A: Scene 9, Take 1"},
         {},
         "XY_"},
        {"a key of one's own, without blanks around it",
         {{"setName", "custom"}},
         {{"setName", "Bar"}},
         "com.example.set",
         {"Bar"},
         {{"setName", " com.example.set "}}},
        {"a blank key drops the field",
         {{"setName", "custom"}},
         {{"setName", "Bar"}},
         "  ",
         {},
         {{"setName", "  "}}},
        {"an empty value counts as none", {}, {{"scene", ""}}, scene, {"9"}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.rule);
        platform::MemorySettingsStore store;
        store.setByName("lockit.fieldMapping.v1", one.targets);
        store.setByName("lockit.fieldMapping.customKeys.v1", one.customKeys);
        ExportSettings settings = test::settingsAt(25);
        settings.lockitFieldMapping = LockitFieldMapping::current(store);
        settings.metadataPrefix = one.prefix;
        MediaAsset sound = test::recording(2);
        sound.ixmlData = test::ixml("9", "1");
        SyncGroup synced = test::matched(test::picture(), {sound});
        synced.lockitMetadata = one.fields;
        SyncGroup silent{test::picture(), {}, MatchStatus::mos()};
        silent.lockitMetadata = one.fields;
        SyncGroup slow = synced;
        slow.video.sensorFrameRate = 100;
        settings.set(settings::generateProjectRate, true);
        const auto expectIn = [&](const SyncGroup& group, const char* kind, std::size_t clips) {
            std::vector<std::string> expected;
            for (std::size_t i = 0; i < clips; ++i)
                for (const std::string& value : one.values)
                    expected.push_back(value == "KIND" ? kind : value);
            const std::string element = one.key.empty() ? "keyword" : "md";
            EXPECT_EQ(valuesIn(test::exported(group, settings), element, one.key), expected) << kind;
        };
        expectIn(synced, "Synced", 1);
        if (one.key != note && one.key != scene) expectIn(silent, "MOS", 1); // it has no recorder
        if (!one.key.empty()) expectIn(slow, "Synced", 2); // also in the clip at the project's rate
    }
}

TEST(LockitFieldMapping, changesOneEntryAndKeepsTheOthers) {
    platform::MemorySettingsStore store;
    store.setByName("lockit.fieldMapping.v1", "no map");
    store.overrideByName("lockit.fieldMapping.v1", JSON::Object{{"episode", "notes"}}); // for this run only
    LockitFieldMapping::set(store, FCPMetaTarget::keyword, LockitField::tags);
    LockitFieldMapping::set(store, FCPMetaTarget::custom, "k", LockitField::scene);
    EXPECT_EQ(store.storedByName("lockit.fieldMapping.v1"),
              JSON(JSON::Object{{"tags", "keyword"}, {"scene", "custom"}}));
    EXPECT_EQ(store.storedByName("lockit.fieldMapping.customKeys.v1"), JSON(JSON::Object{{"scene", "k"}}));
    LockitFieldMapping::resetToDefaults(store);
    EXPECT_FALSE(store.storedByName("lockit.fieldMapping.v1"));
    EXPECT_FALSE(store.storedByName("lockit.fieldMapping.customKeys.v1"));
}

TEST(MetadataFieldGrouping, sortsByTheFirstGroupThatKnowsAPartOfTheKey) {
    const auto groups = MetadataFieldGrouping::grouped({{"Camera Filter", "1"},
                                                        {"Production Sound Mixer", "2"},
                                                        {"Reel", "3"},
                                                        {"Color", "4"},
                                                        {"Dp", "5"},
                                                        {"FOCUS", "6"},
                                                        {"Slate", "7"},
                                                        {"Lens", ""}});
    std::string text;
    for (const auto& group : groups) {
        text += std::string(rawValue(group.group)) + ":";
        for (const auto& [key, value] : group.rows) text += " " + key + "=" + value;
        text += "; ";
    }
    EXPECT_EQ(text, "Camera: Camera Filter=1; Lens: FOCUS=6; Sound: Production Sound Mixer=2; "
                    "Production: Dp=5; Shot / Scene: Reel=3 Slate=7; Other: Color=4; ");
}

} // namespace
} // namespace orvane
