#include "Platform/Media/MovieMetadata.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <string_view>

namespace orvane::platform {

namespace {

constexpr std::size_t mostItems = 10000;
/// Longer texts are cut; a date or a rate is far shorter.
constexpr std::size_t longestText = 4096;
constexpr std::size_t longestKey = 1024;
constexpr std::size_t versionBytes = 4;
constexpr unsigned copyrightSign = 0xA9;

/// A four-character key as text: the copyright sign with which QuickTime's own keys begin is 0xA9 in the
/// file.
std::string keyText(std::uint32_t type) {
    std::string text;
    for (unsigned shift = 32; shift > 0; shift -= 8) text += static_cast<char>(type >> (shift - 8) & 0xFFU);
    return text::decoded(text, text::Encoding::macRoman);
}

std::string commonKey(std::string_view key) {
    const bool isDate = key == "com.apple.quicktime.creationdate" || key == "\xC2\xA9"
                                                                            "day";
    return isDate ? "creationDate" : "";
}

/// UTF-8, or UTF-16 with a byte order mark; up to the first NUL.
std::string unicodeText(std::string_view bytes) {
    if (bytes.starts_with("\xFE\xFF")) return text::decoded(bytes.substr(2), text::Encoding::utf16BE);
    if (bytes.starts_with("\xFF\xFE")) return text::decoded(bytes.substr(2), text::Encoding::utf16LE);
    return text::validUTF8(bytes.substr(0, bytes.find('\0')));
}

/// A big-endian number of 1 to 8 bytes.
std::optional<double> integerValue(const ByteCursor& bytes, bool isSigned) {
    if (bytes.empty() || bytes.size() > 8) return std::nullopt;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) value = value << 8U | *bytes.u8(i);
    if (!isSigned) return static_cast<double>(value);
    const auto unused = static_cast<unsigned>(64 - 8 * bytes.size());
    return static_cast<double>(static_cast<std::int64_t>(value << unused) >> unused);
}

/// The well-known value types of QuickTime metadata.
void setValue(MediaMetadataItem& item, std::uint32_t type, const ByteCursor& value) {
    switch (type) {
    case 1: // UTF-8
    case 4: // UTF-8 for sorting
        item.string = text::validUTF8(value.text());
        break;
    case 2: // UTF-16
    case 5: // UTF-16 for sorting
        item.string = text::decoded(value.text(), text::Encoding::utf16BE);
        break;
    case 21: // signed, of the value's own length
    case 65: // signed, 8 to 64 bits
    case 66:
    case 67:
    case 74:
        item.number = integerValue(value, true);
        break;
    case 22: // unsigned, of the value's own length
    case 75: // unsigned, 8 to 64 bits
    case 76:
    case 77:
    case 78:
        item.number = integerValue(value, false);
        break;
    case 23: // 32-bit float
        if (const auto bits = value.u32be(0)) item.number = std::bit_cast<float>(*bits);
        break;
    case 24: // 64-bit float
        if (const auto bits = value.u64be(0)) item.number = std::bit_cast<double>(*bits);
        break;
    default:
        break; // pictures, binary
    }
}

class ItemReader {
  public:
    ItemReader(RandomAccessFile& file, std::vector<MediaMetadataItem>& items) : file_(file), items_(items) {}

    void meta(const Atom& atom) {
        // QuickTime's "meta" begins with its children, MPEG-4's with version and flags.
        constexpr std::size_t firstTypeAt = 4;
        const bool isPlain = peekBody(file_, atom, 8).u32be(firstTypeAt) == fourCC("hdlr");
        AtomReader atoms(file_, atom.body + (isPlain ? 0 : versionBytes), atom.end);
        std::vector<std::string> keys;
        std::optional<Atom> list;
        while (const auto child = atoms.next()) {
            if (child->type == fourCC("keys") && keys.empty()) keys = readKeys(*child);
            if (child->type == fourCC("ilst") && !list) list = child;
        }
        if (list) itemList(*list, keys);
    }

    void userData(const Atom& atom) {
        AtomReader atoms(file_, atom);
        while (const auto child = atoms.next()) {
            if (child->type == fourCC("meta"))
                meta(*child);
            else if (child->type >> 24U == copyrightSign)
                internationalTexts(*child);
            else if (child->type == fourCC("name"))
                addText(keyText(child->type), unicodeText(peekBody(file_, *child, longestText).text()));
            else if (is3GPPText(child->type))
                text3GPP(*child);
        }
    }

  private:
    void add(MediaMetadataItem item) {
        if (items_.size() >= mostItems) return;
        item.commonKey = commonKey(item.key);
        items_.push_back(std::move(item));
    }
    void addText(std::string key, std::string text) {
        add({std::move(key), {}, std::move(text), std::nullopt});
    }

    std::vector<std::string> readKeys(const Atom& atom) {
        constexpr std::size_t listHeaderBytes = versionBytes + 4;
        std::vector<std::string> keys;
        AtomReader atoms(file_, atom.body + listHeaderBytes, atom.end);
        while (const auto key = atoms.next())
            keys.push_back(text::validUTF8(peekBody(file_, *key, longestKey).text()));
        return keys;
    }

    void itemList(const Atom& list, const std::vector<std::string>& keys) {
        AtomReader atoms(file_, list);
        while (const auto item = atoms.next()) {
            // With a table of keys, the type of an item is the number of its key, counting from 1.
            const bool isNumber = item->type >= 1 && item->type <= keys.size();
            std::string key = isNumber ? keys[item->type - 1] : keyText(item->type);
            values(*item, std::move(key));
        }
    }

    void values(const Atom& item, std::string key) {
        constexpr std::size_t valueHeaderBytes = 8; // type, locale
        std::string domain;
        AtomReader atoms(file_, item);
        while (const auto child = atoms.next()) {
            // The free form "----" states its key in a domain and a name.
            if (child->type == fourCC("mean")) domain = freeFormText(*child);
            if (child->type == fourCC("name")) key = domain + "." + freeFormText(*child);
            if (child->type != fourCC("data")) continue;
            const ByteCursor body = peekBody(file_, *child, longestText);
            const auto type = body.u32be(0);
            if (!type) continue;
            MediaMetadataItem read;
            read.key = key;
            constexpr std::uint32_t typeMask = 0xFFFFFF;
            setValue(read, *type & typeMask, body.from(valueHeaderBytes));
            add(std::move(read));
        }
    }

    std::string freeFormText(const Atom& atom) {
        return text::validUTF8(peekBody(file_, atom, longestKey).from(versionBytes).text());
    }

    /// Any number of texts, each with its length and language.
    void internationalTexts(const Atom& atom) {
        constexpr std::size_t textHeaderBytes = 4;
        const ByteCursor body = peekBody(file_, atom, longestText);
        if (body.u32be(4) == fourCC("data")) return values(atom, keyText(atom.type));
        std::size_t at = 0;
        while (const auto language = body.u16be(at + 2)) {
            const std::size_t length = *body.u16be(at);
            const ByteCursor behind = body.from(at + textHeaderBytes);
            const auto text = behind.slice(0, std::min(length, behind.size()));
            addText(keyText(atom.type), internationalText(text->text(), *language));
            at += textHeaderBytes + length;
        }
    }

    static std::string internationalText(std::string_view bytes, std::uint16_t language) {
        constexpr std::uint16_t firstISOLanguage = 0x400; // below: Macintosh languages and their encodings
        if (language < firstISOLanguage && !text::isValidUTF8(bytes))
            return text::decoded(bytes.substr(0, bytes.find('\0')), text::Encoding::macRoman);
        return unicodeText(bytes);
    }

    static bool is3GPPText(std::uint32_t type) {
        constexpr std::array types = {fourCC("titl"), fourCC("dscp"), fourCC("cprt"), fourCC("perf"),
                                      fourCC("auth"), fourCC("gnre"), fourCC("albm")};
        return std::ranges::find(types, type) != types.end();
    }

    void text3GPP(const Atom& atom) {
        constexpr std::size_t languageBytes = 2;
        const ByteCursor body = peekBody(file_, atom, longestText);
        addText(keyText(atom.type), unicodeText(body.from(versionBytes + languageBytes).text()));
    }

    RandomAccessFile& file_;
    std::vector<MediaMetadataItem>& items_;
};

} // namespace

void readMetadata(RandomAccessFile& file, const Atom& meta, std::vector<MediaMetadataItem>& into) {
    ItemReader(file, into).meta(meta);
}

void readUserData(RandomAccessFile& file, const Atom& udta, std::vector<MediaMetadataItem>& into) {
    ItemReader(file, into).userData(udta);
}

} // namespace orvane::platform
