#include "Platform/XMLStreamParser.h"

#include "Platform/Text.h"

#include <expat.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <memory>
#include <string_view>

namespace orvane::platform {

namespace {

constexpr std::size_t pieceBytes = std::size_t{1} << 16U;
/// A token that a piece leaves open is read again from its start with the next piece.
constexpr std::size_t longestToken = std::size_t{1} << 20U;
/// The parser keeps memory for each element that is open.
constexpr int deepestElement = 256;
/// Recoding to UTF-8 makes a text three times longer at most; whatever is more comes from entities. Some
/// expansion is harmless, and a small document may well use a few long entities.
constexpr std::size_t mostGrowth = 4;
constexpr std::size_t freeGrowth = std::size_t{1} << 20U;

struct Reading {
    XML_Parser parser = nullptr;
    XMLStreamHandler* handler = nullptr;
    std::size_t budget = 0; ///< bytes of names and text that the handler may still get
    int depth = 0;          ///< elements that are open
    bool stopped = false;
    std::exception_ptr raised;

    void stop() {
        stopped = true;
        XML_StopParser(parser, XML_FALSE);
    }

    /// Calls the handler. An exception must not cross the C library and waits until it has returned.
    template <class Call>
    void tell(std::size_t bytes, Call call) {
        if (stopped) return;
        if (bytes > budget) return stop();
        budget -= bytes;
        try {
            call(*handler);
        } catch (...) {
            raised = std::current_exception();
            stop();
        }
    }
};

Reading& reading(void* userData) { return *static_cast<Reading*>(userData); }

void XMLCALL startElement(void* userData, const XML_Char* name, const XML_Char** attributes) {
    const std::string_view text(name);
    if (++reading(userData).depth > deepestElement) return reading(userData).stop();
    reading(userData).tell(text.size(), [text](XMLStreamHandler& handler) { handler.startElement(text); });
    for (; attributes[0] != nullptr && attributes[1] != nullptr; attributes += 2) {
        const std::string_view key(attributes[0]), value(attributes[1]);
        reading(userData).tell(key.size() + value.size(),
                               [key, value](XMLStreamHandler& handler) { handler.attribute(key, value); });
    }
}

void XMLCALL endElement(void* userData, const XML_Char* name) {
    const std::string_view text(name);
    --reading(userData).depth;
    reading(userData).tell(0, [text](XMLStreamHandler& handler) { handler.endElement(text); });
}

void XMLCALL characters(void* userData, const XML_Char* begin, int length) {
    const std::string_view text(begin, static_cast<std::size_t>(length));
    reading(userData).tell(text.size(), [text](XMLStreamHandler& handler) { handler.characters(text); });
}

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

/// Single-byte encodings that expat does not know by itself, such as windows-1252.
int XMLCALL unknownEncoding(void*, const XML_Char* name, XML_Encoding* encoding) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(name, &status));
    if (U_FAILURE(status) || !converter || ucnv_getMaxCharSize(converter.get()) != 1) return XML_STATUS_ERROR;
    for (std::size_t byte = 0; byte < 256; ++byte) {
        const char source = static_cast<char>(byte);
        std::array<UChar, 4> units{};
        status = U_ZERO_ERROR;
        const auto count = ucnv_toUChars(converter.get(), units.data(), 4, &source, 1, &status);
        const bool isCharacter = U_SUCCESS(status) && count == 1 && units[0] != 0xFFFD;
        encoding->map[byte] = isCharacter ? units[0] : -1;
    }
    encoding->data = nullptr;
    encoding->convert = nullptr;
    encoding->release = nullptr;
    return XML_STATUS_OK;
}

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

// --- what recorders write in thousands

constexpr std::size_t longestPlain = 65536;
constexpr std::size_t deepestPlain = 64;

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
bool isInName(char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == ':'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

/// Control characters are none of XML's, and a carriage return means a line feed there.
bool isPlain(char c) { return static_cast<unsigned char>(c) >= ' ' || c == '\t' || c == '\n'; }

std::string_view withoutDeclaration(std::string_view document) {
    for (const std::string_view usual :
         {R"(<?xml version="1.0" encoding="UTF-8"?>)", R"(<?xml version="1.0" encoding="utf-8"?>)",
          R"(<?xml version="1.0"?>)"})
        if (document.starts_with(usual)) return document.substr(usual.size());
    return document;
}

/// Goes over a document, and says whether it is one of those that are read here. `Handler`: called as an
/// XMLStreamHandler.
template <class Handler>
bool goOver(std::string_view rest, Handler& handler) {
    std::array<std::string_view, deepestPlain> open;
    std::size_t depth = 0;
    bool hasRoot = false;
    while (!rest.empty()) {
        const std::string_view text = rest.substr(0, rest.find('<'));
        if (depth == 0 && !std::ranges::all_of(text, isBlank)) return false;
        if (depth > 0 && !text.empty()) handler.characters(text);
        rest.remove_prefix(text.size());
        if (rest.empty()) break;
        const bool isEnd = rest.starts_with("</");
        rest.remove_prefix(isEnd ? 2 : 1);
        const auto end = std::ranges::find_if_not(rest, isInName);
        const std::string_view name = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        rest.remove_prefix(name.size());
        if (name.empty() || !isLetter(name.front())) return false;
        if (isEnd) {
            if (depth == 0 || open[--depth] != name || !rest.starts_with('>')) return false;
            rest.remove_prefix(1);
            handler.endElement(name);
            continue;
        }
        const bool isEmpty = rest.starts_with("/>");
        if ((!isEmpty && !rest.starts_with('>')) || depth == deepestPlain || (depth == 0 && hasRoot))
            return false;
        rest.remove_prefix(isEmpty ? 2 : 1);
        hasRoot = true;
        handler.startElement(name);
        if (isEmpty)
            handler.endElement(name);
        else
            open[depth++] = name;
    }
    return hasRoot && depth == 0;
}

struct Nobody {
    static void startElement(std::string_view) {}
    static void endElement(std::string_view) {}
    static void characters(std::string_view) {}
};

} // namespace

bool parsePlainXML(std::string_view document, XMLStreamHandler& handler) {
    constexpr std::string_view noncharacters = "\xEF\xBF"; // U+FFFE and U+FFFF, with harmless neighbours
    const std::string_view body = withoutDeclaration(document);
    if (document.size() > longestPlain || !std::ranges::all_of(body, isPlain) ||
        body.find('&') != std::string_view::npos || body.find("]]>") != std::string_view::npos ||
        body.find(noncharacters) != std::string_view::npos || !text::isValidUTF8(body))
        return false;
    Nobody nobody;
    if (!goOver(body, nobody)) return false; // before anybody is told
    return goOver(body, handler);
}

bool parseXMLStream(std::string_view document, XMLStreamHandler& handler) {
    return parsePlainXML(document, handler) || parseXMLStreamWithLibrary(document, handler);
}

bool parseXMLStreamWithLibrary(std::string_view document, XMLStreamHandler& handler) {
    const std::unique_ptr<XML_ParserStruct, FreeParser> parser(XML_ParserCreate(nullptr));
    if (!parser) return false;
    Reading state;
    state.parser = parser.get();
    state.handler = &handler;
    state.budget = document.size() * mostGrowth + freeGrowth;
    XML_SetUserData(parser.get(), &state);
    XML_SetElementHandler(parser.get(), startElement, endElement);
    XML_SetCharacterDataHandler(parser.get(), characters);
    XML_SetUnknownEncodingHandler(parser.get(), unknownEncoding, nullptr);
    // Without a handler for external entities expat passes over them.

    bool wellFormed = true;
    std::size_t handed = 0;
    for (bool isLast = false; wellFormed && !isLast;) {
        const std::string_view piece = document.substr(handed, pieceBytes);
        handed += piece.size();
        isLast = handed == document.size();
        wellFormed =
            XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), isLast) == XML_STATUS_OK;
        const XML_Index understood = XML_GetCurrentByteIndex(parser.get());
        if (handed - std::min(handed, static_cast<std::size_t>(std::max<XML_Index>(understood, 0))) >
            longestToken)
            wellFormed = false;
    }
    if (state.raised) std::rethrow_exception(state.raised);
    return wellFormed && !state.stopped;
}

} // namespace orvane::platform
