#include "FCPXMLKit/xml/FCPXMLDTDFixer.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <span>
#include <vector>

namespace orvane::fcpxml::FCPXMLDTDFixer {

namespace {

using Names = std::span<const std::string_view>;

// The order in a sync-clip. The other clip-like elements have the same order with some names left out.
constexpr std::string_view syncClipOrder[] = {"note",
                                              "conform-rate",
                                              "timeMap",
                                              "adjust-transform",
                                              "adjust-blend",
                                              "adjust-crop",
                                              "adjust-corners",
                                              "adjust-conform",
                                              "adjust-volume",
                                              "adjust-panner",
                                              "adjust-noiseReduction",
                                              "adjust-humReduction",
                                              "adjust-EQ",
                                              "adjust-matchEQ",
                                              "adjust-voiceIsolation",
                                              "adjust-loudness",
                                              "filter-video",
                                              "filter-audio",
                                              "video",
                                              "audio",
                                              "clip",
                                              "title",
                                              "mc-clip",
                                              "ref-clip",
                                              "sync-clip",
                                              "asset-clip",
                                              "audition",
                                              "spine",
                                              "gap",
                                              "marker",
                                              "chapter-marker",
                                              "rating",
                                              "keyword",
                                              "analysis-marker",
                                              "sync-source",
                                              "filter-video-mask",
                                              "metadata"};

constexpr std::string_view mcClipOrder[] = {
    "note",          "adjust-transform",  "adjust-blend", "adjust-crop", "adjust-corners", "adjust-conform",
    "adjust-volume", "adjust-panner",     "mc-source",    "video",       "audio",          "clip",
    "title",         "filter-video",      "filter-audio", "marker",      "chapter-marker", "rating",
    "keyword",       "filter-video-mask", "metadata"};

constexpr std::string_view mediaOrder[] = {"note",
                                           "adjust-volume",
                                           "adjust-panner",
                                           "adjust-noiseReduction",
                                           "adjust-humReduction",
                                           "adjust-EQ",
                                           "adjust-matchEQ",
                                           "adjust-voiceIsolation",
                                           "adjust-loudness",
                                           "filter-audio",
                                           "video",
                                           "audio",
                                           "clip",
                                           "marker",
                                           "chapter-marker",
                                           "rating",
                                           "keyword",
                                           "filter-video-mask",
                                           "metadata"};

struct Table {
    std::string_view element;
    Names order;
    Names leftOut;
};

constexpr std::string_view assetClipLacks[] = {"sync-source"};
constexpr std::string_view clipLacks[] = {"conform-rate", "timeMap", "sync-source"};

const Table* tableFor(std::string_view element) {
    static constexpr Table tables[] = {
        {"sync-clip", syncClipOrder, {}},   {"asset-clip", syncClipOrder, assetClipLacks},
        {"clip", syncClipOrder, clipLacks}, {"gap", syncClipOrder, clipLacks},
        {"mc-clip", mcClipOrder, {}},       {"audio", mediaOrder, {}},
        {"video", mediaOrder, {}}};
    const auto found = std::find_if(std::begin(tables), std::end(tables),
                                    [&](const Table& table) { return table.element == element; });
    return found == std::end(tables) ? nullptr : found;
}

/// Names that are not in the table stand behind all that are.
std::ptrdiff_t rank(const Table& table, std::string_view name) {
    const auto unknown = static_cast<std::ptrdiff_t>(table.order.size());
    if (std::find(table.leftOut.begin(), table.leftOut.end(), name) != table.leftOut.end()) return unknown;
    return std::find(table.order.begin(), table.order.end(), name) - table.order.begin();
}

bool isInOrder(const XMLElement& element, const Table& table) {
    std::string_view before;
    std::ptrdiff_t highest = -1;
    for (const XMLElement& child : element.children()) {
        if (child.name() == before) continue;
        before = child.name();
        const std::ptrdiff_t own = rank(table, before);
        if (own < highest) return false;
        highest = own;
    }
    return true;
}

int fixElement(XMLElement& element) {
    platform::throwIfStopped(element.arena().stopToken());
    int count = 0;
    for (XMLElement& child : element.children()) count += fixElement(child);
    const Table* table = tableFor(element.name());
    if (table == nullptr || isInOrder(element, *table)) return count;

    std::vector<XMLElement*> children;
    for (XMLElement& child : element.children()) children.push_back(&child);
    std::ranges::stable_sort(children, {},
                             [&](const XMLElement* child) { return rank(*table, child->name()); });
    element.reorderChildren(children);
    return count + 1;
}

} // namespace

int fix(XMLDocument& document) { return document.root() == nullptr ? 0 : fixElement(*document.root()); }

} // namespace orvane::fcpxml::FCPXMLDTDFixer
