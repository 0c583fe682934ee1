#include "platform/StringHandler.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>

void StringHandler::split(const std::string& text, std::vector<std::string>& pieces,
                          const std::string& separator) {
    pieces.clear();
    if (text.empty()) {
        return;
    }
    if (separator.empty()) {
        pieces.push_back(text);
        return;
    }
    std::string::size_type begin = 0;
    for (;;) {
        const std::string::size_type at = text.find(separator, begin);
        if (at == std::string::npos) {
            pieces.push_back(text.substr(begin));
            return;
        }
        pieces.push_back(text.substr(begin, at - begin));
        begin = at + separator.size();
    }
}

bool StringHandler::parseInt(const std::string& text, int& out) {
    const char* begin = text.c_str();
    // strtol skips leading blanks; a whole number has none.
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front()))) {
        return false;
    }
    errno = 0;
    char* end = nullptr;
    const long v = std::strtol(begin, &end, 10);
    if (end == begin || *end != '\0' || errno != 0 || v < INT_MIN || v > INT_MAX) {
        return false;
    }
    out = static_cast<int>(v);
    return true;
}
