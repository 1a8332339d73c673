#include "Platform/EmbeddedXML.h"

#include "Platform/Media/MovieAtoms.h"
#include "Platform/WaveChunks.h"

#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

namespace orvane::platform {

namespace {

using namespace std::string_view_literals;

constexpr std::uint64_t longestDocument = std::uint64_t{1} << 20U;
constexpr std::size_t mostDocuments = 8;
constexpr auto xmpIdentity = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC"sv;

class XMLFinder {
  public:
    explicit XMLFinder(RandomAccessFile& file) : file_(file) {}

    std::vector<std::string> read() {
        if (const auto form = WaveChunks::formOf(file_))
            readChunks(*form);
        else
            readAtoms();
        camera_.insert(camera_.end(), std::make_move_iterator(xmp_.begin()),
                       std::make_move_iterator(xmp_.end()));
        return std::move(camera_);
    }

  private:
    void add(std::vector<std::string>& documents, std::uint64_t at, std::uint64_t size) {
        if (size == 0 || size > longestDocument || documents.size() >= mostDocuments) return;
        const std::vector<std::byte> bytes = file_.read(at, size);
        std::string_view text = ByteCursor(bytes).text();
        text = text.substr(0, text.find('\0'));
        if (!text.empty()) documents.emplace_back(text);
    }

    void readChunks(WaveChunks::Form form) {
        constexpr std::size_t signatureBytes = 4;
        WaveChunks reader(file_, form);
        while (const auto chunk = reader.next()) {
            if (form == WaveChunks::Form::wave && chunk->is("_PMX")) add(xmp_, chunk->body, chunk->size);
            if (form == WaveChunks::Form::aiff && chunk->is("APPL") && chunk->size > signatureBytes &&
                file_.peek(chunk->body, signatureBytes).text() == "XMP ")
                add(xmp_, chunk->body + signatureBytes, chunk->size - signatureBytes);
        }
    }

    void readAtoms() {
        AtomReader atoms(file_, 0, file_.size());
        while (const auto atom = atoms.next()) {
            takeIdentified(*atom);
            if (atom->type == fourCC("meta")) readMeta(*atom);
            if (atom->type == fourCC("moov")) readMovie(*atom);
        }
    }

    void readMovie(const Atom& movie) {
        AtomReader atoms(file_, movie);
        while (const auto atom = atoms.next()) {
            takeIdentified(*atom);
            if (atom->type != fourCC("udta")) continue;
            if (const auto packet = findChild(file_, *atom, fourCC("XMP_")))
                add(xmp_, packet->body, packet->bodySize());
        }
    }

    void takeIdentified(const Atom& atom) {
        if (atom.type != fourCC("uuid") || peekBody(file_, atom, xmpIdentity.size()).text() != xmpIdentity)
            return;
        add(xmp_, atom.body + xmpIdentity.size(), atom.bodySize() - xmpIdentity.size());
    }

    void readMeta(const Atom& meta) {
        constexpr std::uint64_t versionBytes = 4;
        if (meta.bodySize() < versionBytes) return;
        AtomReader atoms(file_, meta.body + versionBytes, meta.end);
        while (const auto atom = atoms.next())
            if (atom->type == fourCC("xml ") && atom->bodySize() > versionBytes)
                add(camera_, atom->body + versionBytes, atom->bodySize() - versionBytes);
    }

    RandomAccessFile& file_;
    std::vector<std::string> camera_, xmp_;
};

} // namespace

std::vector<std::string> readEmbeddedXML(RandomAccessFile& file) { return XMLFinder(file).read(); }

} // namespace orvane::platform
