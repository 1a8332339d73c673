#include "MediaFactory/MXFMaker.h"

#include "MediaFactory/Bytes.h"

#include <string_view>

namespace orvane::test {

namespace {

using namespace std::string_view_literals;

std::string one(std::uint8_t value) { return std::string(1, static_cast<char>(value)); }

std::string packet(const std::string& key, const std::string& value) {
    return key + "\x83" + be32(value.size()).substr(1) + value;
}

std::string partitionKey(std::uint8_t kind, std::uint8_t status) {
    return std::string("\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01"sv) + one(kind) + one(status) +
           one(0);
}

std::string partition(std::uint8_t kind, std::uint8_t status, std::uint64_t footer) {
    const std::string sizes = be64(0) + be64(0) + be64(footer) + be64(0) + be64(0) + be32(0) + be64(0);
    return packet(partitionKey(kind, status),
                  be16(1) + be16(3) + be32(1) + sizes + be32(0) + std::string(16, '\0') + be32(0) + be32(16));
}

/// Identities are numbers, so that a set can refer to a later one.
std::string identity(std::uint32_t number) { return "identity----" + be32(number); }

std::string property(std::uint16_t tag, const std::string& value) {
    return be16(tag) + be16(value.size()) + value;
}

std::string references(const std::vector<std::uint32_t>& numbers) {
    std::string value = be32(numbers.size()) + be32(16);
    for (const std::uint32_t number : numbers) value += identity(number);
    return value;
}

std::string set(std::uint8_t kind, std::uint32_t number, const std::string& properties) {
    return packet(std::string("\x06\x0E\x2B\x34\x02\x53\x01\x01\x0D\x01\x01\x01\x01\x01"sv) + one(kind) +
                      one(0),
                  property(0x3C0A, identity(number)) + properties);
}

std::string label(std::string_view from8) {
    std::string text("\x06\x0E\x2B\x34\x04\x01\x01\x01"sv);
    text += from8;
    text.resize(16, '\0');
    return text;
}

std::string packageID(std::size_t index) { return field("package " + std::to_string(index), 32); }

/// Ten identities for each package: the package, its tracks, their sequences, their components.
std::string package(const MXFSpec& spec, std::size_t index) {
    const MXFPackage& own = spec.packages[index];
    const auto first = static_cast<std::uint32_t>(100 + 10 * index);
    const std::string rate = property(0x4B01, be32(spec.rateNumerator) + be32(spec.rateDenominator));
    const auto track = [&](std::uint32_t number, std::uint32_t sequence) {
        return set(0x3B, number, rate + property(0x4803, identity(sequence)));
    };
    const auto sequence = [&](std::uint32_t number, std::string_view definition, std::uint32_t component,
                              std::int64_t duration) {
        return set(0x0F, number,
                   property(0x0201, label(definition)) +
                       property(0x0202, be64(static_cast<std::uint64_t>(duration))) +
                       property(0x1001, references({component})));
    };
    std::string properties =
        property(0x4401, packageID(index)) +
        property(0x4403, spec.soundDuration > 0 ? references({first + 1, first + 4, first + 7})
                                                : references({first + 1, first + 4}));
    if (!spec.created.empty()) properties += property(0x4405, spec.created);
    if (index > 0) properties += property(0x4701, identity(10));
    std::string sets = set(index == 0 ? 0x36 : 0x37, first, properties);
    if (own.timecode) {
        sets += track(first + 1, first + 2) +
                sequence(first + 2, "\x01\x03\x02\x01\x01"sv, first + 3, spec.duration);
        sets += set(0x14, first + 3,
                    property(0x1501, be64(static_cast<std::uint64_t>(own.timecode->start))) +
                        property(0x1502, be16(own.timecode->base)) +
                        property(0x1503, one(own.timecode->isDrop ? 1 : 0)));
    }
    sets +=
        track(first + 4, first + 5) + sequence(first + 5, "\x01\x03\x02\x02\x01"sv, first + 6, spec.duration);
    if (spec.soundDuration > 0)
        sets += track(first + 7, first + 8) +
                sequence(first + 8, "\x01\x03\x02\x02\x02"sv, first + 6, spec.soundDuration);
    sets += set(0x11, first + 6,
                property(0x1101, packageID(index + 1)) +
                    property(0x1201, be64(static_cast<std::uint64_t>(own.clipStart))));
    return sets;
}

std::string sets(const MXFSpec& spec) {
    std::string all;
    for (std::size_t i = 0; i < spec.packages.size(); ++i) all += package(spec, i);
    const std::string rate = property(0x3001, be32(spec.rateNumerator) + be32(spec.rateDenominator));
    const bool hasSound = spec.soundDuration > 0;
    all += set(0x28, hasSound ? 11 : 10,
               rate + property(0x3203, be32(spec.width)) + property(0x3202, be32(spec.height)) +
                   property(0x320C, one(spec.frameLayout)) + property(0x3201, label(spec.coding)));
    // A multiple descriptor, for picture, sound and ancillary data.
    if (hasSound)
        all += set(0x44, 10, rate + property(0x3F01, references({11, 12, 13}))) +
               set(0x42, 12, rate + property(0x3D03, be32(48000) + be32(1)) + property(0x3D07, be32(2))) +
               set(0x43, 13, rate);
    return all;
}

} // namespace

std::string mxfHeader(const MXFSpec& spec) { return partition(2, spec.status, 0) + sets(spec); }

std::string mxfWithFooter(const MXFSpec& header, const MXFSpec& footer, bool headerKnowsFooter) {
    const std::string front = sets(header);
    const std::uint64_t at = partition(2, header.status, 0).size() + front.size();
    std::string index = packet(partitionKey(0x11, 1), be32(1) + be64(at));
    index += be32(index.size() + 4);
    return partition(2, header.status, headerKnowsFooter ? at : 0) + front + partition(4, footer.status, at) +
           sets(footer) + index;
}

} // namespace orvane::test
