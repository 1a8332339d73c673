#include "OrvaneSyncApp/ViewModels/Results/ShellWord.h"

namespace orvane {

ShellWord shellWordAt(std::string_view text, std::size_t at) {
    ShellWord word;
    bool isInQuotes = false;
    std::size_t i = at;
    for (; i < text.size(); ++i) {
        if (text[i] == '\'') {
            isInQuotes = !isInQuotes;
            word.isQuoted = true;
        } else if (!isInQuotes && text[i] == '\\' && i + 1 < text.size()) {
            word.text += text[++i];
        } else if (!isInQuotes && std::string_view(" ,;)").find(text[i]) != std::string_view::npos) {
            break;
        } else {
            word.text += text[i];
        }
    }
    word.length = i - at;
    return word;
}

} // namespace orvane
