#include "tools/ValueParsing.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <vector>

bool parseInt(const std::string& p_strText, int& p_nValue) {
    if (p_strText.empty() || p_strText.find_first_of(" \t") != std::string::npos) {
        return false;
    }
    errno = 0;
    char* pEnd = nullptr;
    const long long nValue = std::strtoll(p_strText.c_str(), &pEnd, 10);
    if (errno != 0 || *pEnd != '\0' || nValue < INT_MIN || nValue > INT_MAX) {
        return false;
    }
    p_nValue = static_cast<int>(nValue);
    return true;
}

bool parseSwitch(const std::string& p_strText, bool& p_bOn) {
    for (const char* szOn : {"on", "1", "yes", "true"}) {
        if (p_strText == szOn) {
            p_bOn = true;
            return true;
        }
    }
    for (const char* szOff : {"off", "0", "no", "false"}) {
        if (p_strText == szOff) {
            p_bOn = false;
            return true;
        }
    }
    return false;
}

namespace {

// Splits at ':' into numbers of one or two digits.
bool clockFields(const std::string& p_strText, std::vector<int>& p_vecFields) {
    std::string strField;
    for (size_t i = 0; i <= p_strText.size(); ++i) {
        if (i == p_strText.size() || p_strText[i] == ':') {
            int nValue = 0;
            if (strField.empty() || strField.size() > 2 || strField[0] == '-' ||
                strField[0] == '+' || !parseInt(strField, nValue)) {
                return false;
            }
            p_vecFields.push_back(nValue);
            strField.clear();
        } else {
            strField += p_strText[i];
        }
    }
    return true;
}

} // namespace

bool parseTimeOfDay(const std::string& p_strText, int& p_nHour, int& p_nMinute, int& p_nSecond) {
    std::vector<int> vecFields;
    if (!clockFields(p_strText, vecFields) || vecFields.size() < 2 || vecFields.size() > 3) {
        return false;
    }
    const int nSecond = vecFields.size() == 3 ? vecFields[2] : 0;
    if (vecFields[0] > 23 || vecFields[1] > 59 || nSecond > 59) {
        return false;
    }
    p_nHour = vecFields[0];
    p_nMinute = vecFields[1];
    p_nSecond = nSecond;
    return true;
}
