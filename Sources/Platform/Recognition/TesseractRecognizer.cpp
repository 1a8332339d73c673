#include "Platform/Recognition/TesseractRecognizer.h"

#include "Platform/Recognition/PageLayout.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <iterator>
#include <leptonica/allheaders.h>
#include <map>
#include <optional>
#include <string_view>
#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>
#include <unistd.h>
#include <utility>

// A function of the threads library on which the recognition library may run its loops.
extern "C" [[gnu::weak]] void omp_set_max_active_levels(int levels);

namespace orvane::platform {

namespace {

using namespace recognition;

/// Pixels; larger pictures are reduced.
constexpr int fastSide = 1600, accurateSide = 2600;
/// Fewer letters are not text, and are not recognised.
constexpr int fewestLetters = 3;
/// Letters that are lower, pixels, are read in an enlarged picture.
constexpr int smallType = 20;
constexpr double leastConfidence = 0.6; ///< of a word, 0 to 1

struct Language {
    const char* code;
    const char* name;
};
constexpr std::array<Language, 2> languages{{{"eng", "English"}, {"deu", "German"}}};

/// Makes the recognition's loops run on the calling thread: its own threads cost more than they gain, and
/// slow down the others. A setting of the calling thread.
void keepToOneThread() {
    if (omp_set_max_active_levels != nullptr) omp_set_max_active_levels(0);
}

using API = tesseract::TessBaseAPI;

std::string dataFile(const std::string& folder, const Language& language) {
    return folder + "/" + language.code + ".traineddata";
}

/// The folder with the data of one of the languages: the one that the library's own variable names, or one of
/// those in which systems keep it. Searched here because the library would write to standard error.
std::string dataFolder() {
    std::vector<std::string> folders;
    if (const char* named = std::getenv("TESSDATA_PREFIX"))
        folders = {named, std::string(named) + "/tessdata"};
    else
        folders = {"/usr/share/tesseract-ocr/5/tessdata", "/usr/share/tessdata", "/usr/local/share/tessdata",
                   "/usr/share/tesseract-ocr/4.00/tessdata"};
    for (const std::string& folder : folders)
        for (const Language& language : languages)
            if (::access(dataFile(folder, language).c_str(), R_OK) == 0) return folder;
    return {};
}

/// English and German, if installed.
std::vector<Language> knownLanguages(const std::string& folder) {
    std::vector<Language> known;
    for (const Language& language : languages)
        if (!folder.empty() && ::access(dataFile(folder, language).c_str(), R_OK) == 0)
            known.push_back(language);
    return known;
}

std::unique_ptr<API> opened(const std::string& folder, const std::string& codes) {
    setMsgSeverity(L_SEVERITY_NONE);
    auto api = std::make_unique<API>();
    const std::vector<std::string> names{"debug_file"}, values{"/dev/null"};
    const bool isOpen = api->Init(folder.c_str(), codes.c_str(), tesseract::OEM_LSTM_ONLY, nullptr, 0, &names,
                                  &values, false) == 0;
    return isOpen ? std::move(api) : nullptr;
}

bool hasLetterOrDigit(std::string_view text) {
    return std::ranges::any_of(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x80 || std::isalnum(byte) != 0;
    });
}

/// Black letters on white, one bit for each pixel, with a margin and in the best size for reading.
struct Sheet {
    Pix* pix = nullptr;
    Box part;         ///< of the page
    double scale = 1; ///< pixels of the sheet for one of the page

    Sheet(const Page& page, const Box& extent, int letterHeight) {
        constexpr int margin = 12;
        part = {std::max(extent.left - margin, 0), std::max(extent.top - margin, 0),
                std::min(extent.right + margin, page.letters.width),
                std::min(extent.bottom + margin, page.letters.height)};
        pix = pixCreate(part.width(), part.height(), 1);
        for (int y = part.top; y < part.bottom; ++y)
            for (int x = part.left; x < part.right; ++x)
                if (page.letters.at(x, y) != 0) pixSetPixel(pix, x - part.left, y - part.top, 1);
        constexpr double smallest = 0.4, largest = 3, wantedLetterHeight = 30; // pixels
        scale = std::clamp(wantedLetterHeight / std::max(letterHeight, 1), smallest, largest);
        if (scale != 1) {
            Pix* grey = pixConvert1To8(nullptr, pix, 255, 0);
            Pix* larger = pixScale(grey, static_cast<float>(scale), static_cast<float>(scale));
            pixDestroy(&grey);
            pixDestroy(&pix);
            pix = pixThresholdToBinary(larger, 128);
            pixDestroy(&larger);
        }
    }
    ~Sheet() { pixDestroy(&pix); }
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;

    Box onPage(int left, int top, int right, int bottom) const {
        const auto back = [&](int value, int from) { return static_cast<int>(value / scale) + from; };
        return {back(left, part.left), back(top, part.top), back(right, part.left), back(bottom, part.top)};
    }
};

bool isStopped(void* stop, int /*words*/) {
    return static_cast<const std::stop_token*>(stop)->stop_requested();
}

class TesseractRecognizer final : public TextRecognizer {
  public:
    TesseractRecognizer(std::unique_ptr<API> fast, std::unique_ptr<API> accurate)
        : fast_(std::move(fast)), accurate_(std::move(accurate)) {}

    std::vector<TextLine> lines(const Picture& picture, RecognitionLevel level,
                                const std::stop_token& stop) override {
        throwIfStopped(stop);
        if (!picture.pixels || picture.size.width < 1 || picture.size.height < 1) return {};
        const bool isFast = level == RecognitionLevel::fast;
        Cleaned sharp = cleaned(greyOf(picture, isFast ? fastSide : accurateSide));
        Page page = pageOf(sharp, stop);
        if (page.letterCount < fewestLetters) return {};
        if (!isFast && page.smallLetterHeight < smallType) {
            const Box part = withMargin(page);
            if (part.width() * 2 <= accurateSide)
                page = pageOf(Cleaned{enlarged(sharp.grey, part), sharp.noise}, stop);
        }
        API& api = isFast || !accurate_ ? *fast_ : *accurate_;
        std::vector<TextLine> lines;
        for (Line& line : linesOf(words(api, page, level, stop), page))
            lines.push_back({std::move(line.text), line.confidence});
        return lines;
    }

  private:
    /// Dark letters or light ones, whichever are more.
    static Page pageOf(const Cleaned& picture, const std::stop_token& stop) {
        const Ink ink = inkOf(picture);
        throwIfStopped(stop);
        Page dark = recognition::pageOf(ink.dark);
        throwIfStopped(stop);
        Page light = recognition::pageOf(ink.light);
        throwIfStopped(stop);
        const auto rank = [](const Page& page) { return page.framedLetterCount + page.letterCount; };
        return rank(light) > rank(dark) ? std::move(light) : std::move(dark);
    }

    /// The area of the letters, with the rules around them.
    static Box withMargin(const Page& page) {
        Box part = page.extent;
        for (const Box& cell : page.cellBoxes) part = part.joined(cell);
        const int margin = page.letters.height / 30;
        return {std::max(part.left - margin, 0), std::max(part.top - margin, 0),
                std::min(part.right + margin, page.letters.width),
                std::min(part.bottom + margin, page.letters.height)};
    }

    std::vector<Word> words(API& api, const Page& page, RecognitionLevel level,
                            const std::stop_token& stop) const {
        std::vector<Word> found =
            wordsWithin(api, page, page.extent, page.smallLetterHeight, tesseract::PSM_SPARSE_TEXT, stop);
        if (level == RecognitionLevel::fast) return found;
        for (const Box& left : unreadInCells(page, found)) {
            auto more = wordsWithin(*fast_, page, left, left.height(), tesseract::PSM_SINGLE_LINE, stop);
            std::ranges::move(more, std::back_inserter(found));
        }
        return found;
    }

    /// The search for text in a whole picture skips single letters and digits. Returns the parts of a cell
    /// that it did not read, row by row.
    static std::vector<Box> unreadInCells(const Page& page, const std::vector<Word>& read) {
        std::map<std::int32_t, std::vector<Box>> rows;
        for (const Box& letter : page.letterBoxes) {
            const std::int32_t cell = page.cellAt(letter);
            const auto covers = [&](const Word& word) {
                return word.box.overlapAcross(letter) > 0 && word.box.overlapDown(letter) > 0;
            };
            if (cell < 0 || std::ranges::any_of(read, covers)) continue;
            auto& own = rows[cell];
            const auto row = std::ranges::find_if(
                own, [&](const Box& box) { return box.overlapDown(letter) * 2 > letter.height(); });
            if (row == own.end())
                own.push_back(letter);
            else
                *row = row->joined(letter);
        }
        std::vector<Box> unread;
        for (const auto& [cell, own] : rows) unread.insert(unread.end(), own.begin(), own.end());
        constexpr std::size_t most = 40; // with more it is no form
        if (unread.size() > most) unread.clear();
        return unread;
    }

    static std::vector<Word> wordsWithin(API& api, const Page& page, const Box& part, int letterHeight,
                                         tesseract::PageSegMode mode, std::stop_token stop) {
        throwIfStopped(stop);
        const Sheet sheet(page, part, letterHeight);
        keepToOneThread();
        api.SetPageSegMode(mode);
        api.SetImage(sheet.pix);
        api.SetSourceResolution(300);
        tesseract::ETEXT_DESC monitor;
        monitor.cancel = isStopped;
        monitor.cancel_this = &stop;
        const bool isDone = api.Recognize(&monitor) == 0;
        std::vector<Word> words;
        const std::unique_ptr<tesseract::ResultIterator> found(isDone ? api.GetIterator() : nullptr);
        if (found) do {
                if (auto word = wordAt(*found, sheet)) words.push_back(std::move(*word));
            } while (found->Next(tesseract::RIL_WORD));
        api.Clear();
        throwIfStopped(stop);
        return words;
    }

    static std::optional<Word> wordAt(const tesseract::ResultIterator& found, const Sheet& sheet) {
        constexpr tesseract::PageIteratorLevel level = tesseract::RIL_WORD;
        const std::unique_ptr<char[]> text(found.GetUTF8Text(level));
        int left = 0, top = 0, right = 0, bottom = 0;
        if (!text || !found.BoundingBox(level, &left, &top, &right, &bottom)) return std::nullopt;
        Word word{text.get(), sheet.onPage(left, top, right, bottom),
                  static_cast<double>(found.Confidence(level)) / 100};
        if (word.confidence < leastConfidence || !hasLetterOrDigit(word.text)) return std::nullopt;
        return word;
    }

    const std::unique_ptr<API> fast_;
    const std::unique_ptr<API> accurate_; ///< null: the same as the fast one
};

} // namespace

std::unique_ptr<TextRecognizer> tesseractRecognizer() {
    const std::string folder = dataFolder();
    const auto known = knownLanguages(folder);
    auto fast = known.empty() ? nullptr : opened(folder, known.front().code);
    if (!fast) return nullptr;
    std::string all;
    for (const Language& language : known) all.append(all.empty() ? "" : "+").append(language.code);
    auto accurate = known.size() > 1 ? opened(folder, all) : nullptr;
    return std::make_unique<TesseractRecognizer>(std::move(fast), std::move(accurate));
}

TextRecognitionState tesseractState() {
    const std::string folder = dataFolder();
    const auto known = knownLanguages(folder);
    const std::string library = std::string("Tesseract ") + API::Version();
    if (known.empty())
        return {false, library + " has no data of a language, so slates can't be read: install "
                                 "tesseract-ocr-eng, and tesseract-ocr-deu for slates in German"};
    std::string names;
    for (const Language& language : known) {
        if (!opened(folder, language.code))
            return {false, library + " can't read " + dataFile(folder, language) +
                               ", so slates can't be read: install tesseract-ocr-" + language.code +
                               " again"};
        names.append(names.empty() ? "" : ", ").append(language.name);
    }
    for (const Language& language : languages)
        if (::access(dataFile(folder, language).c_str(), R_OK) != 0)
            names += std::string("; for ") + language.name + " install tesseract-ocr-" + language.code;
    return {true, library + ": " + names};
}

} // namespace orvane::platform
