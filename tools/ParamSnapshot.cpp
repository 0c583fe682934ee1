#include "tools/ParamSnapshot.h"

#include <string>

#include "controller/ISensorController.h"
#include "tools/Console.h"
#include "tools/ParamNames.h"

ParamValues snapshot(ISensorController& p_objController, const std::vector<u32>& p_vecKeys) {
    ParamValues vecValues;
    for (const u32 nKey : p_vecKeys) {
        int nValue = 0;
        const bool bRead = p_objController.getParameter(static_cast<int>(nKey), nValue);
        vecValues.emplace_back(nKey, bRead ? std::optional<int>(nValue) : std::nullopt);
    }
    return vecValues;
}

size_t printChanges(const ParamValues& p_vecBefore, const ParamValues& p_vecAfter) {
    size_t nChanged = 0;
    for (size_t i = 0; i < p_vecBefore.size() && i < p_vecAfter.size(); ++i) {
        if (p_vecBefore[i].second != p_vecAfter[i].second) {
            say("  %s: %s -> %s", keyLabel(p_vecBefore[i].first).c_str(),
                valueText(p_vecBefore[i].second).c_str(), valueText(p_vecAfter[i].second).c_str());
            ++nChanged;
        }
    }
    return nChanged;
}

std::string valueText(const std::optional<int>& p_nValue) {
    return p_nValue ? std::to_string(*p_nValue) : std::string("(unreadable)");
}
