#include "Platform/MediaRecognition.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

namespace {

using namespace std::string_view_literals;

constexpr auto mediaExtensions = std::to_array<std::string_view>(
    {"264",  "265",  "360",   "3fr",  "3g2",  "3ga",   "3gp",   "3gpp",  "8svx",  "aa3",     "aac",  "aax",
     "ac3",  "ac4",  "adts",  "aif",  "aifc", "aiff",  "alac",  "amb",   "amr",   "amv",     "ape",  "apv",
     "ari",  "arw",  "arx",   "asf",  "au",   "av1",   "avc",   "avci",  "avi",   "avif",    "awb",  "bmp",
     "braw", "bw",   "bw64",  "bwf",  "caf",  "caff",  "cap",   "cin",   "cine",  "cr2",     "cr3",  "crm",
     "crw",  "dav",  "dcr",   "dff",  "dif",  "divx",  "dng",   "dnxhd", "dnxhr", "dpx",     "drc",  "dsf",
     "dss",  "dts",  "dtshd", "dv",   "eac3", "ec3",   "erf",   "evo",   "exr",   "f4a",     "f4v",  "fff",
     "flac", "flc",  "fli",   "flv",  "gif",  "gpr",   "gsm",   "gxf",   "h264",  "h265",    "hdr",  "heic",
     "heif", "hevc", "hif",   "iff",  "iiq",  "insp",  "insv",  "ircam", "ivf",   "j2c",     "j2k",  "jp2",
     "jpe",  "jpeg", "jpf",   "jpg",  "jps",  "jpx",   "jxl",   "jxs",   "k25",   "kdc",     "krw",  "latm",
     "loas", "lrf",  "lrv",   "m1a",  "m1v",  "m2a",   "m2p",   "m2t",   "m2ts",  "m2v",     "m4a",  "m4b",
     "m4e",  "m4p",  "m4r",   "m4s",  "m4v",  "mcraw", "mef",   "mj2",   "mjp2",  "mjpeg",   "mjpg", "mka",
     "mkv",  "mlp",  "mlv",   "mod",  "mogg", "mos",   "mov",   "movie", "mp1",   "mp2",     "mp2v", "mp3",
     "mp4",  "mp4a", "mp4v",  "mpa",  "mpc",  "mpe",   "mpeg",  "mpeg4", "mpg",   "mpga",    "mpv",  "mqv",
     "mrw",  "mts",  "mxf",   "nef",  "nev",  "nrw",   "nsv",   "nut",   "obu",   "oga",     "ogg",  "ogm",
     "ogv",  "ogx",  "omf",   "opus", "orf",  "osv",   "paf",   "pam",   "pbm",   "pcm",     "pct",  "pcx",
     "pef",  "pgm",  "pict",  "png",  "pnm",  "ppm",   "psb",   "psd",   "pvf",   "qt",      "r3d",  "ra",
     "raf",  "raw",  "rdc",   "rf64", "rgb",  "rgba",  "riff",  "rm",    "rmf",   "rmvb",    "rw2",  "rwl",
     "sd2",  "sf",   "sgi",   "shn",  "snd",  "sox",   "spdif", "spx",   "sr2",   "srf",     "srw",  "svx",
     "tak",  "tga",  "thd",   "thm",  "tif",  "tiff",  "tod",   "tp",    "trp",   "truehd",  "ts",   "tta",
     "vc1",  "vob",  "voc",   "vox",  "vro",  "vrw",   "w64",   "wav",   "wave",  "wavpack", "wdp",  "weba",
     "webm", "webp", "wma",   "wmv",  "wtv",  "wv",    "wve",   "x3f",   "xa",    "xavc",    "xi",   "y4m",
     "yuv",  "zax"});

/// Bytes with which only picture or sound begins.
constexpr auto signatures = std::to_array<std::string_view>({
    "RIFF"sv, // WAVE, AVI, WebP
    "RIFX"sv,
    "RF64"sv,
    "BW64"sv,
    "riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00"sv, // Wave64
    "caff\x00\x01"sv,
    "fLaC"sv,
    "OggS"sv,
    "ID3\x02"sv,
    "ID3\x03"sv,
    "ID3\x04"sv,
    "wvpk"sv,
    "MAC \x96\x0F"sv,
    "TTA1"sv,
    "tBaK"sv,
    "MPCK"sv,
    "DSD \x1C"sv,
    "FRM8\x00"sv,
    ".snd\x00"sv,
    "#!AMR"sv,
    "Creative Voice File\x1A"sv,
    "\x0B\x77"sv,                         // AC-3
    "\x7F\xFE\x80\x01"sv,                 // DTS
    "\x1A\x45\xDF\xA3"sv,                 // EBML: Matroska, WebM
    "\x30\x26\xB2\x75\x8E\x66\xCF\x11"sv, // ASF: WMV, WMA
    "FLV\x01"sv,
    ".RMF\x00"sv,
    ".ra\xFD"sv,
    "\x06\x0E\x2B\x34"sv, // the key of an SMPTE packet: MXF
    "\x00\x00\x01\xBA"sv, // MPEG program stream
    "\x00\x00\x01\xB3"sv, // MPEG video
    "\x00\x00\x01\xB0"sv, // MPEG-4 video
    "\x12\x00\x0A"sv,     // AV1
    "nut/multimedia container\x00"sv,
    "\xB7\xD8\x00\x20\x37\x49\xDA\x11"sv, // WTV
    ".SoX"sv,
    "XoS."sv,
    "\x64\xA3\x01\x00"sv, // IRCAM
    "\x64\xA3\x02\x00"sv,
    "\x64\xA3\x03\x00"sv,
    "\x64\xA3\x04\x00"sv,
    "\x72\xF8\x1F\x4E"sv,     // S/PDIF
    "\x00\x00\x01\x67"sv,     // H.264
    "\x00\x00\x00\x01\x67"sv, // the same
    "\x00\x00\x00\x01\x09"sv,
    "\x00\x00\x00\x01\x40\x01"sv, // H.265
    "\x00\x00\x00\x01\x46\x01"sv,
    "\x00\x00\x00\x00\x01\xBC"sv, // GXF
    "\x1F\x07\x00"sv,             // DV
    "ARRI\x12\x34\x56\x78"sv,
    "ARRI\x78\x56\x34\x12"sv,
    "CI\x2C\x00"sv, // Phantom
    "DKIF\x00"sv,
    "YUV4MPEG2 "sv,
    "MLVI"sv,
    "SDPX"sv,
    "XPDS"sv,
    "\x76\x2F\x31\x01"sv, // OpenEXR
    "\x80\x2A\x5F\xD7"sv, // Cineon
    "II*\x00"sv,          // TIFF, DNG and most raw pictures
    "MM\x00*"sv,
    "II+\x00"sv,
    "MM\x00+"sv,
    "IIU\x00"sv,
    "FUJIFILMCCD-RAW"sv,
    "\xFF\xD8\xFF"sv,
    "\x89PNG\x0D\x0A"sv,
    "GIF87a"sv,
    "GIF89a"sv,
    "8BPS\x00"sv,
    "\x01\xDA\x00"sv, // SGI
    "\x01\xDA\x01"sv,
    "\x0A\x05\x01\x08"sv, // PCX
    "\xFF\x4F\xFF\x51"sv, // JPEG 2000, JPEG XS, JPEG XL
    "\xFF\x10\xFF\x50"sv,
    "\xFF\x0A"sv,
    "\x00\x00\x00\x0CjP  "sv,
    "\x00\x00\x00\x0CJXL "sv,
});

bool hasSignature(const ByteCursor& head) {
    return std::ranges::any_of(signatures,
                               [&](std::string_view bytes) { return head.text().starts_with(bytes); });
}

bool isAmong(std::string_view type, const auto& types) {
    return std::ranges::find(types, type) != types.end();
}

/// Kinds whose name follows a size. What precedes the name is checked too: a text such as "Format: AIFF" has
/// a name in the same place.
bool hasSizedSignature(const ByteCursor& head) {
    constexpr std::array forms{"AIFF"sv, "AIFC"sv, "8SVX"sv};
    constexpr std::array clips{"RED1"sv, "RED2"sv}; // R3D
    const auto wordAt = [&](std::size_t at) {
        const auto word = head.slice(at, 4);
        return word ? word->text() : std::string_view();
    };
    return (wordAt(0) == "FORM" && isAmong(wordAt(8), forms)) ||
           (head.u8(0) == 0 && isAmong(wordAt(4), clips));
}

/// Pictures whose first letters may also begin a text: BMP is checked by the stated length of its file, PNM
/// by its width.
bool isPlainPicture(const ByteCursor& head, std::uint64_t fileSize) {
    constexpr std::size_t sizeAt = 2, widthAt = 3;
    const std::string_view start = head.text().substr(0, widthAt);
    if (start.starts_with("BM") && head.u32le(sizeAt) == fileSize) return true;
    const auto width = head.u8(widthAt);
    return (start == "P5\n" || start == "P6\n") && width && *width >= '1' && *width <= '9';
}

/// MLP and TrueHD: in the first unit the description of the stream follows the unit's length and time.
bool isLosslessSurround(const ByteCursor& head) {
    constexpr std::size_t descriptionAt = 4;
    constexpr std::uint32_t description = 0xF8726FBA;
    const auto word = head.u32be(descriptionAt);
    return word && (*word & ~1U) == description;
}

/// An atom that only a movie has, after others that may also begin a text; a recorder leaves free space
/// first.
bool beginsAsMovie(RandomAccessFile& file) {
    constexpr std::array telling{"ftyp"sv, "moov"sv, "mdat"sv, "moof"sv, "styp"sv, "sidx"sv};
    constexpr std::array silent{"free"sv, "skip"sv, "wide"sv, "pnot"sv, "uuid"sv, "PICT"sv, "udta"sv};
    constexpr std::uint64_t shortHeader = 8, wideHeader = 16;
    constexpr int mostAtoms = 64;
    std::uint64_t at = 0;
    for (int i = 0; i < mostAtoms; ++i) {
        const ByteCursor header = file.peek(at, wideHeader);
        const auto size = header.u32be(0);
        const auto type = header.slice(4, 4);
        if (!size || !type) return false;
        const bool isSound = *size == 0 || *size == 1 || *size >= shortHeader;
        if (isSound && isAmong(type->text(), telling)) return true;
        const std::uint64_t length = *size == 1 ? header.u64be(shortHeader).value_or(0) : *size;
        if (!isAmong(type->text(), silent) || length < shortHeader || length > file.size() - at) return false;
        at += length;
    }
    return false;
}

/// A partition pack after a run-in of up to 64 KB.
bool hasPartition(const ByteCursor& head) {
    return head.text().find("\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01"sv) !=
           std::string_view::npos;
}

/// Packets of 188 bytes, alone, after a time stamp of four bytes, or with 16 bytes of error correction.
bool isTransportStream(const ByteCursor& head) {
    struct Packets {
        std::size_t at, length;
    };
    constexpr std::array<Packets, 3> kinds{{{0, 188}, {4, 192}, {0, 204}}};
    constexpr std::size_t enough = 5;
    constexpr std::uint8_t sync = 0x47;
    return std::ranges::any_of(kinds, [&](const Packets& packets) {
        std::size_t found = 0;
        while (found < enough && head.u8(packets.at + found * packets.length) == sync) ++found;
        return found == enough;
    });
}

/// Length in bytes of the MPEG audio frame (layers 1 to 3, or ADTS) with this header; nothing if it is none.
std::optional<std::size_t> audioFrameBytes(const ByteCursor& head, std::size_t at) {
    const auto bits = head.u32be(at);
    if (!bits || *bits >> 21U != 0x7FF) return std::nullopt;
    const unsigned version = *bits >> 19U & 3U, layer = *bits >> 17U & 3U;
    if (layer == 0 && version >= 2) { // ADTS
        const auto tail = head.u16be(at + 4);
        if (!tail) return std::nullopt;
        const std::size_t length = (*bits & 3U) << 11U | *tail >> 5U;
        return length > 6 ? std::optional(length) : std::nullopt;
    }
    const unsigned rateIndex = *bits >> 12U & 15U, sampleRateIndex = *bits >> 10U & 3U;
    if (version == 1 || layer == 0 || rateIndex == 0 || rateIndex == 15 || sampleRateIndex == 3)
        return std::nullopt;
    constexpr std::array<std::array<unsigned, 15>, 5> kilobits{{
        {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
    }};
    constexpr std::array<unsigned, 3> sampleRates{44100, 48000, 32000};
    const bool isFirstVersion = version == 3, isLayer1 = layer == 3, isLayer3 = layer == 1;
    const std::size_t table = isFirstVersion ? 3 - layer : isLayer1 ? 3 : 4;
    const unsigned rate = kilobits[table][rateIndex] * 1000;
    const unsigned sampleRate = sampleRates[sampleRateIndex] >> (isFirstVersion ? 0U
                                                                 : version == 2 ? 1U
                                                                                : 2U);
    const unsigned padding = *bits >> 9U & 1U;
    if (isLayer1) return std::size_t{4} * (12 * rate / sampleRate + padding);
    return (isLayer3 && !isFirstVersion ? 72 : 144) * rate / sampleRate + padding;
}

/// Length in bytes of the LOAS frame (AAC in LATM) with this header; nothing if it is none.
std::optional<std::size_t> loasFrameBytes(const ByteCursor& head, std::size_t at) {
    constexpr unsigned sync = 0x2B7, lengthBits = 13, headerBytes = 3;
    const auto word = head.u16be(at);
    const auto low = head.u8(at + 2);
    if (!word || !low) return std::nullopt;
    const unsigned header = unsigned{*word} << 8U | *low;
    if (header >> lengthBits != sync) return std::nullopt;
    return headerBytes + (header & ((1U << lengthBits) - 1));
}

/// Three consecutive frames: the first bytes alone may be a byte order mark.
bool isMPEGAudio(const ByteCursor& head) {
    return std::ranges::any_of(std::array{audioFrameBytes, loasFrameBytes}, [&](auto* frameBytes) {
        std::size_t at = 0;
        for (int frame = 0; frame < 3; ++frame) {
            const auto length = frameBytes(head, at);
            if (!length) return false;
            at += *length;
        }
        return true;
    });
}

} // namespace

bool isMediaName(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return false;
    const std::string extension = text::lowercased(name.substr(dot + 1));
    return isAmong(extension, mediaExtensions);
}

bool beginsAsMedia(RandomAccessFile& file) {
    constexpr std::uint64_t headBytes = std::uint64_t{1} << 16U;
    if (beginsAsMovie(file)) return true;
    const std::vector<std::byte> bytes = file.read(0, headBytes + 16);
    const ByteCursor head{std::span<const std::byte>(bytes)};
    return hasSignature(head) || hasSizedSignature(head) || hasPartition(head) || isTransportStream(head) ||
           isMPEGAudio(head) || isLosslessSurround(head) || isPlainPicture(head, file.size());
}

} // namespace orvane::platform
