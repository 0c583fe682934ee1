#include "tools/CommandLine.h"

#include <cctype>

bool CommandLine::parse(const std::string& p_strLine, std::string& p_strError) {
    std::vector<std::string> vecWords;
    std::string strWord;
    bool bInWord = false;
    bool bQuoted = false;
    for (const char c : p_strLine) {
        if (bQuoted) {
            if (c == '"') {
                bQuoted = false;
            } else {
                strWord += c;
            }
        } else if (c == '"') {
            bQuoted = true;
            bInWord = true;
        } else if (std::isspace(static_cast<unsigned char>(c))) {
            if (bInWord) {
                vecWords.push_back(strWord);
                strWord.clear();
                bInWord = false;
            }
        } else if (c == '#' && !bInWord) {
            break;
        } else {
            strWord += c;
            bInWord = true;
        }
    }
    if (bQuoted) {
        p_strError = "a quote is not closed";
        return false;
    }
    if (bInWord) {
        vecWords.push_back(strWord);
    }
    m_vecWords = std::move(vecWords);
    return true;
}
