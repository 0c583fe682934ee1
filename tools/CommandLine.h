// One command as typed: a name and its arguments, split at blanks. Double
// quotes keep blanks inside one argument; a '#' at the start of a word begins
// a comment that runs to the end of the line.
#pragma once

#include <string>
#include <vector>

class CommandLine {
public:
    // False with a message for an unbalanced quote.
    bool parse(const std::string& p_strLine, std::string& p_strError);

    bool empty() const { return m_vecWords.empty(); }
    const std::string& name() const { return m_vecWords.front(); }
    size_t argCount() const { return m_vecWords.empty() ? 0 : m_vecWords.size() - 1; }
    const std::string& arg(size_t p_nIndex) const { return m_vecWords.at(p_nIndex + 1); }

private:
    std::vector<std::string> m_vecWords;
};
