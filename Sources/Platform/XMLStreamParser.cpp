#include "Platform/XMLStreamParser.h"

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
/// A token that continues after a piece is read again from its start with the next piece.
constexpr std::size_t longestToken = std::size_t{1} << 20U;
/// The parser keeps memory for each open element.
constexpr int deepestElement = 256;
/// Conversion to UTF-8 makes a text at most three times longer; everything beyond that comes from entities.
/// Some expansion is harmless, and a small document may use a few long entities.
constexpr std::size_t mostGrowth = 4;
constexpr std::size_t freeGrowth = std::size_t{1} << 20U;

struct Reading {
    XML_Parser parser = nullptr;
    XMLStreamHandler* handler = nullptr;
    std::size_t budget = 0; ///< bytes of names and text that may still be passed to the handler
    int depth = 0;          ///< open elements
    bool stopped = false;
    std::exception_ptr raised;

    void stop() {
        stopped = true;
        XML_StopParser(parser, XML_FALSE);
    }

    /// Calls the handler. An exception must not cross the C library and is kept until it has returned.
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

/// Single-byte encodings that expat does not know, such as windows-1252.
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

} // namespace

bool parseXMLStream(std::string_view document, XMLStreamHandler& handler) {
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
    // Without a handler for external entities expat skips them.

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
