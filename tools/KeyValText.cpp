#include "tools/KeyValText.h"

#include "tools/ValueParsing.h"

namespace {

// The numbers between the parenthesis at p_nAt and the next ')', separated by
// ','; p_nAt moves past the ')'.
bool readGroup(const std::string& p_strText, size_t& p_nAt, std::vector<int>& p_vecNumbers) {
    if (p_nAt >= p_strText.size() || p_strText[p_nAt] != '(') {
        return false;
    }
    const size_t nClose = p_strText.find(')', p_nAt);
    if (nClose == std::string::npos) {
        return false;
    }
    const std::string strInside = p_strText.substr(p_nAt + 1, nClose - p_nAt - 1);
    size_t nStart = 0;
    while (true) {
        const size_t nComma = strInside.find(',', nStart);
        int nValue = 0;
        if (!parseInt(strInside.substr(nStart, nComma - nStart), nValue)) {
            return false;
        }
        p_vecNumbers.push_back(nValue);
        if (nComma == std::string::npos) {
            break;
        }
        nStart = nComma + 1;
    }
    p_nAt = nClose + 1;
    return true;
}

} // namespace

bool parsePairText(const std::string& p_strText, std::vector<KeyVal>& p_vecPairs) {
    std::vector<KeyVal> vecPairs;
    size_t nAt = 0;
    while (nAt < p_strText.size()) {
        std::vector<int> vecNumbers;
        if (!readGroup(p_strText, nAt, vecNumbers) || vecNumbers.size() != 2 || vecNumbers[0] < 0) {
            return false;
        }
        vecPairs.push_back({static_cast<u32>(vecNumbers[0]), static_cast<u32>(vecNumbers[1])});
    }
    if (vecPairs.empty()) {
        return false;
    }
    p_vecPairs = std::move(vecPairs);
    return true;
}

bool parseIdList(const std::string& p_strText, std::vector<int>& p_vecIds) {
    size_t nAt = 0;
    std::vector<int> vecIds;
    if (!readGroup(p_strText, nAt, vecIds) || nAt != p_strText.size()) {
        return false;
    }
    p_vecIds = std::move(vecIds);
    return true;
}
