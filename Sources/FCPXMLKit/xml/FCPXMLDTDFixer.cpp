#include "FCPXMLKit/xml/FCPXMLDTDFixer.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

namespace orvane::fcpxml::FCPXMLDTDFixer {

namespace {

/// The elements whose children have an order, as bits.
enum Elements : unsigned {
    synced = 1,   ///< sync-clip
    asset = 2,    ///< asset-clip
    plain = 4,    ///< clip, gap
    multicam = 8, ///< mc-clip
    media = 16,   ///< audio, video
    all = synced | asset | plain | multicam | media
};

struct Child {
    std::string_view name;
    unsigned elements; ///< the elements that may have it at this place
};

/// One order for all elements, each of which omits some names; only a multicam clip has its filters after its
/// clips.
constexpr Child order[] = {{"note", all},
                           {"conform-rate", synced | asset},
                           {"timeMap", synced | asset},
                           {"adjust-transform", all - media},
                           {"adjust-blend", all - media},
                           {"adjust-crop", all - media},
                           {"adjust-corners", all - media},
                           {"adjust-conform", all - media},
                           {"adjust-volume", all},
                           {"adjust-panner", all},
                           {"adjust-noiseReduction", all - multicam},
                           {"adjust-humReduction", all - multicam},
                           {"adjust-EQ", all - multicam},
                           {"adjust-matchEQ", all - multicam},
                           {"adjust-voiceIsolation", all - multicam},
                           {"adjust-loudness", all - multicam},
                           {"filter-video", all - multicam - media},
                           {"filter-audio", all - multicam},
                           {"mc-source", multicam},
                           {"video", all},
                           {"audio", all},
                           {"clip", all},
                           {"title", all - media},
                           {"filter-video", multicam},
                           {"filter-audio", multicam},
                           {"mc-clip", all - multicam - media},
                           {"ref-clip", all - multicam - media},
                           {"sync-clip", all - multicam - media},
                           {"asset-clip", all - multicam - media},
                           {"audition", all - multicam - media},
                           {"spine", all - multicam - media},
                           {"gap", all - multicam - media},
                           {"marker", all},
                           {"chapter-marker", all},
                           {"rating", all},
                           {"keyword", all},
                           {"analysis-marker", all - multicam - media},
                           {"sync-source", synced},
                           {"filter-video-mask", all},
                           {"metadata", all}};

unsigned elementsOf(std::string_view element) {
    static constexpr Child rows[] = {{"sync-clip", synced}, {"asset-clip", asset}, {"clip", plain},
                                     {"gap", plain},        {"mc-clip", multicam}, {"audio", media},
                                     {"video", media}};
    const auto* found = std::ranges::find(rows, element, &Child::name);
    return found == std::end(rows) ? 0 : found->elements;
}

/// Names that the element does not define come after all others.
std::ptrdiff_t rank(unsigned element, std::string_view name) {
    return std::ranges::find_if(
               order,
               [&](const Child& child) { return (child.elements & element) != 0 && child.name == name; }) -
           std::begin(order);
}

bool isInOrder(const XMLElement& element, unsigned kind) {
    std::string_view before;
    std::ptrdiff_t highest = -1;
    for (const XMLElement& child : element.children()) {
        if (child.name() == before) continue;
        before = child.name();
        const std::ptrdiff_t own = rank(kind, before);
        if (own < highest) return false;
        highest = own;
    }
    return true;
}

int fixElement(XMLElement& element) {
    platform::throwIfStopped(element.arena().stopToken());
    int count = 0;
    for (XMLElement& child : element.children()) count += fixElement(child);
    const unsigned kind = elementsOf(element.name());
    if (kind == 0 || isInOrder(element, kind)) return count;

    std::vector<XMLElement*> children;
    for (XMLElement& child : element.children()) children.push_back(&child);
    std::ranges::stable_sort(children, {},
                             [&](const XMLElement* child) { return rank(kind, child->name()); });
    element.reorderChildren(children);
    return count + 1;
}

} // namespace

int fix(XMLDocument& document) { return document.root() == nullptr ? 0 : fixElement(*document.root()); }

} // namespace orvane::fcpxml::FCPXMLDTDFixer
