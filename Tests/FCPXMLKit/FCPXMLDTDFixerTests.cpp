#include "FCPXMLKit/xml/FCPXMLDTDFixer.h"

#include <gtest/gtest.h>

namespace orvane::fcpxml {
namespace {

using Names = std::vector<std::string_view>;

Names childNames(const XMLElement& element) {
    Names names;
    for (const XMLElement& child : element.children()) names.push_back(child.name());
    return names;
}

TEST(FCPXMLDTDFixer, PutsChildrenIntoTheLegalOrder) {
    const auto check = [&](const char* rule, std::string_view element, const Names& before,
                           const Names& after, int count) {
        XMLDocument document;
        XMLElement& root = document.makeRoot(element);
        for (const auto name : before) root.appendChild(name);
        EXPECT_EQ(FCPXMLDTDFixer::fix(document), count) << rule;
        EXPECT_EQ(childNames(root), after) << rule;
        EXPECT_EQ(FCPXMLDTDFixer::fix(document), 0) << rule << ", once more";
    };
    check("already legal", "sync-clip", {"adjust-volume", "asset-clip", "keyword", "sync-source", "metadata"},
          {"adjust-volume", "asset-clip", "keyword", "sync-source", "metadata"}, 0);
    check("keywords precede sources", "sync-clip", {"asset-clip", "sync-source", "keyword"},
          {"asset-clip", "keyword", "sync-source"}, 1);
    check("sound precedes containers", "asset-clip", {"adjust-conform", "clip", "audio"},
          {"adjust-conform", "audio", "clip"}, 1);
    check("an asset-clip knows no sync-source", "asset-clip", {"sync-source", "metadata"},
          {"metadata", "sync-source"}, 1);
    check("a clip knows no timeMap", "clip", {"timeMap", "metadata"}, {"metadata", "timeMap"}, 1);
    check("unknown names go last", "clip", {"bogus", "metadata", "note"}, {"note", "metadata", "bogus"}, 1);
    check("a gap has its note first", "gap", {"keyword", "note"}, {"note", "keyword"}, 1);
    check("a multicam clip has its sources behind the volume", "mc-clip",
          {"keyword", "mc-source", "adjust-volume"}, {"adjust-volume", "mc-source", "keyword"}, 1);
    check("parameters of sound stay last", "audio", {"param", "audio"}, {"audio", "param"}, 1);
    check("a picture on its own", "video", {"marker", "audio", "video"}, {"video", "audio", "marker"}, 1);
    check("other elements stay as they are", "event", {"sync-clip", "note", "clip"},
          {"sync-clip", "note", "clip"}, 0);
    check("no children", "sync-clip", {}, {}, 0);
}

TEST(FCPXMLDTDFixer, KeepsEqualsInOrderAndVisitsEveryLevel) {
    XMLDocument document;
    EXPECT_EQ(FCPXMLDTDFixer::fix(document), 0) << "nothing to fix";

    XMLElement& event = document.makeRoot("event");
    XMLElement& outer = event.appendChild("asset-clip");
    for (const char* number : {"1", "2", "3"}) {
        outer.appendChild("keyword").setAttribute("value", number);
        outer.appendChild("audio").setAttribute("srcCh", number);
    }
    XMLElement& inner = outer.appendChild("unknown").appendChild("clip");
    inner.appendChild("metadata");
    inner.appendChild("note").appendChild("text");
    EXPECT_EQ(FCPXMLDTDFixer::fix(document), 2);

    std::string order;
    for (const XMLElement& child : outer.children())
        order += std::string(child.name()).append(" ") +
                 (child.attributes().empty() ? "" : std::string(child.attributes().front().value)) + ",";
    EXPECT_EQ(order, "audio 1,audio 2,audio 3,keyword 1,keyword 2,keyword 3,unknown ,");
    EXPECT_EQ(childNames(inner), (Names{"note", "metadata"}));
    EXPECT_EQ(childNames(**findElements(event, "note").begin()), Names{"text"}) << "children move along";
}

} // namespace
} // namespace orvane::fcpxml
