// Small text utilities of the framework.
#pragma once

#include <sstream>
#include <string>
#include <vector>

class StringHandler {
public:
    // Replaces pieces with the parts of text between separators, empty parts
    // included ("a,,b" gives "a", "", "b"). An empty text gives no piece; an
    // empty separator gives the whole text as one piece.
    static void split(const std::string& text, std::vector<std::string>& pieces,
                      const std::string& separator);

    // Stream extraction of a T from the start of text; T() when nothing can
    // be read ("12ab" gives 12, "ab" gives 0 for an int).
    template <class T> static T str2type(const std::string& text) {
        std::istringstream in(text);
        T value{};
        if (!(in >> value)) {
            return T{};
        }
        return value;
    }

    // Strict reading of a whole decimal int: optional sign and digits only,
    // in range; false (out unchanged) for anything else.
    static bool parseInt(const std::string& text, int& out);
};
