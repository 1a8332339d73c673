#include "FCPXMLKit/model/Model.h"
#include "FCPXMLKit/xml/SlotWriter.h"

#include <gtest/gtest.h>

namespace orvane::fcpxml {
namespace {

/// The lines of the element that a record is written as, without the other lines of the document.
template <class R>
std::string printed(R record, FCPXMLVersion version = latestFCPXMLVersion) {
    XMLDocument document;
    XMLElement& root = document.makeRoot(R::elementName);
    SlotWriter::Shared shared(document.arena());
    SlotWriter::write(record, root, version, shared);
    const std::string text = document.text();
    return text.substr(text.find('\n', text.find("<!DOCTYPE")) + 1);
}

Gap gap(const Time& duration) {
    Gap made;
    made.duration = duration;
    return made;
}

TEST(Serialisation, DefaultsAreLeftOut) {
    SyncClip clip;
    clip.duration = Time(1, 1);
    clip.item = gap(Time(2, 1));
    EXPECT_EQ(printed(clip), "<sync-clip duration=\"1s\">\n    <gap duration=\"2s\"/>\n</sync-clip>\n");
    clip.enabled = false;
    EXPECT_TRUE(printed(clip).starts_with("<sync-clip duration=\"1s\" enabled=\"0\">"));

    EXPECT_EQ(printed(AdjustConform{}), "<adjust-conform/>\n");
    EXPECT_EQ(printed(AdjustConform{AdjustConform::Type::fill}), "<adjust-conform type=\"fill\"/>\n");

    Audio audio;
    audio.ref = {"r5"};
    audio.duration = Time(1, 1);
    EXPECT_EQ(printed(audio), "<audio ref=\"r5\" duration=\"1s\" srcID=\"1\"/>\n");
    audio.srcCh = {3};
    EXPECT_EQ(printed(audio), "<audio ref=\"r5\" duration=\"1s\" srcID=\"1\" srcCh=\"3\"/>\n");
    audio.srcCh = {1, 2};
    EXPECT_EQ(printed(audio), "<audio ref=\"r5\" duration=\"1s\" srcID=\"1\" srcCh=\"1, 2\"/>\n");

    MetadataItem item;
    item.key = "k";
    item.editable = true;
    EXPECT_EQ(printed(item), "<md key=\"k\" editable=\"1\"/>\n");
}

TEST(Serialisation, OmitsWhatTheVersionDoesNotHave) {
    Asset asset;
    asset.id = {"r1"};
    asset.src = "file:///a.mov";
    asset.videoSources = 1;
    asset.mediaReps = {{.kind = "original-media", .src = "file:///a.mov"}};
    EXPECT_EQ(printed(asset, FCPXMLVersion::v1_8), "<asset id=\"r1\" src=\"file:///a.mov\"/>\n");
    EXPECT_EQ(printed(asset), "<asset id=\"r1\" videoSources=\"1\">\n"
                              "    <media-rep kind=\"original-media\" src=\"file:///a.mov\"/>\n"
                              "</asset>\n");

    AudioRoleSource source;
    source.role = {{"dialogue.Mix"}};
    source.active = false;
    source.adjust.voiceIsolation = AdjustVoiceIsolation{0.5};
    EXPECT_EQ(printed(source, FCPXMLVersion::v1_10),
              "<audio-role-source role=\"dialogue.Mix\" active=\"0\"/>\n");
    EXPECT_EQ(printed(source, FCPXMLVersion::v1_11),
              "<audio-role-source role=\"dialogue.Mix\" active=\"0\">\n"
              "    <adjust-voiceIsolation amount=\"0.5\"/>\n"
              "</audio-role-source>\n");
}

TEST(Serialisation, ItemsOfMulticamClipsFollowTheirSlots) {
    Gap empty = gap(Time(1, 1));
    empty.start = Time(36000, 1);
    empty.metadata = Metadata{};
    empty.markers = {Keyword{"a"}};
    empty.anchored.emplace_back(Audio{}).emplace<Audio>().duration = Time(1, 1);
    EXPECT_EQ(printed(empty), "<gap start=\"36000s\" duration=\"1s\">\n"
                              "    <audio ref=\"\" duration=\"1s\" srcID=\"1\"/>\n"
                              "    <keyword value=\"a\"/>\n"
                              "    <metadata/>\n"
                              "</gap>\n");

    MCClip clip;
    clip.ref = {"r9"};
    clip.duration = Time(1, 1);
    clip.adjust.volume = AdjustVolume{{-3}};
    clip.anchored = empty.anchored;
    MCSource& source = clip.sources.emplace_back();
    source.angleID = "angle_cam_a";
    source.adjust.conform = AdjustConform{};
    source.audioRoleSources.emplace_back().role = {{"dialogue.Mix"}};
    EXPECT_EQ(printed(clip), "<mc-clip ref=\"r9\" duration=\"1s\">\n"
                             "    <adjust-volume amount=\"-3dB\"/>\n"
                             "    <mc-source angleID=\"angle_cam_a\" srcEnable=\"all\">\n"
                             "        <audio-role-source role=\"dialogue.Mix\"/>\n"
                             "        <adjust-conform/>\n"
                             "    </mc-source>\n"
                             "    <audio ref=\"\" duration=\"1s\" srcID=\"1\"/>\n"
                             "</mc-clip>\n");
}

TEST(Serialisation, ARequiredAttributeWithoutValueIsAnError) {
    SyncClip clip;
    clip.item = gap(Time(2, 1));
    try {
        printed(clip);
        FAIL() << "no error";
    } catch (const FCPXMLError& error) {
        EXPECT_EQ(error.kind(), FCPXMLError::Kind::uninitializedAttribute);
        EXPECT_STREQ(error.what(), "unitialized Time attribute named duration");
    }
    EXPECT_STREQ(FCPXMLError::invalidAttribute("kind", std::nullopt, "").what(),
                 "invalid attribute named kind with value of <nil>");
    EXPECT_STREQ(FCPXMLError::invalidAttribute("kind", "x", "it is not supported in version 1.6").what(),
                 "invalid attribute named kind with value of x because it is not supported in version 1.6");
}

TEST(Serialisation, TheDocumentHasDeclarationTypeAndVersion) {
    const auto text = [](FCPXMLVersion own, auto... asked) {
        FCPXML document;
        document.version = own;
        document.items = {Library{{Event{"A & B", {}}}}};
        return std::move(document).toXMLDocument(asked...).text();
    };
    const auto expected = [](const std::string& version) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<!DOCTYPE fcpxml>\n<fcpxml "
               "version=\"" +
               version +
               "\">\n    <resources/>\n    <library>\n        <event name=\"A &amp; B\"/>\n    "
               "</library>\n</fcpxml>\n";
    };
    EXPECT_EQ(text(latestFCPXMLVersion), expected("1.14"));
    EXPECT_EQ(text(FCPXMLVersion::v1_9), expected("1.9"));
    EXPECT_EQ(text(FCPXMLVersion::v1_9, FCPXMLVersion::v1_10), expected("1.10"));
    EXPECT_EQ(XMLDocument().text(), "");
}

TEST(Serialisation, ElementsThatWereMadeBeforeFollowTheRecords) {
    const auto clip = [](const char* asset) {
        AssetClip made;
        made.ref = {asset};
        return made;
    };
    XMLDocument document;
    ElementMaker maker(document, FCPXMLVersion::v1_9);
    FCPXML whole;
    whole.items = {Library{{Event{"both", {clip("r1")}, {maker.make(clip("r3")), maker.make(clip("r2"))}}}}};
    std::move(whole).writeInto(document, FCPXMLVersion::v1_9);
    std::vector<std::string_view> assets;
    for (const XMLElement* element : findElements(*document.root(), "asset-clip"))
        assets.push_back(*element->attribute("ref"));
    EXPECT_EQ(assets, (std::vector<std::string_view>{"r1", "r3", "r2"}));
}

TEST(Serialisation, AnyNameGivesWellFormedXML) {
    const std::string lost = "\xEF\xBF\xBD";
    const auto check = [&](const char* name, const std::string& value, const std::string& text) {
        EXPECT_EQ(printed(Keyword{value}), "<keyword value=\"" + text + "\"/>\n") << name;
    };
    check("markup", "<a href='x'> & \"b\"", "&lt;a href='x'&gt; &amp; &quot;b&quot;");
    check("white space that a reader would fold", "a\tb\nc\rd", "a&#9;b&#10;c&#13;d");
    check("several alphabets and an emoji", "Szene Ä 場面 🎬", "Szene Ä 場面 🎬");
    check("control characters", std::string("a\0b\x1B", 4), "a" + lost + "b" + lost);
    check("delete is a character", "a\x7F", "a\x7F");
    check("a lone continuation byte", "a\x80z", "a" + lost + "z");
    check("Latin-1", "caf\xE9", "caf" + lost);
    check("a sequence cut short", "a\xF0\x9F\x8E", "a" + lost + lost + lost);
    check("an overlong slash", "\xC0\xAF", lost + lost);
    check("a surrogate", "\xED\xA0\x80", lost + lost + lost);
    check("a code that XML excludes", "\xEF\xBF\xBF", lost + lost + lost);
    check("beyond the last code", "\xF4\x90\x80\x80", lost + lost + lost + lost);
    check("the last code", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF");
    check("nothing", "", "");
}

TEST(ElementTree, KeepsAttributesAndChildrenApart) {
    XMLDocument document;
    XMLElement& root = document.makeRoot("root");
    std::string value = "first";
    root.setAttribute("a", value);
    value = "other";
    root.setAttribute("b", value);
    ASSERT_NE(root.attribute("a"), nullptr);
    EXPECT_EQ(*root.attribute("a"), "first") << "values are copied";
    root.setAttribute("a", "second");
    EXPECT_EQ(*root.attribute("a"), "second");
    EXPECT_EQ(root.attributes().size(), 2U);
    EXPECT_EQ(root.attribute("c"), nullptr);

    XMLElement& x = root.appendChild("x");
    x.appendChild("y");
    root.appendChild("y").appendChild("x");
    const auto found = findElements(root, "x");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.front(), &x) << "depth first";
    EXPECT_EQ(findElements(root, "root").size(), 1U) << "the given element counts";

    const std::string big(100'000, 'x');
    root.setAttribute("big", big);
    EXPECT_EQ(*root.attribute("big"), big) << "a text beyond any block";
}

} // namespace
} // namespace orvane::fcpxml
