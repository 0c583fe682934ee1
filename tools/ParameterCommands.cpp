// Parameters by key and in the module's text forms: read, write (with what
// changed and where it was stored), ranges, the key-command row and the raw
// diagnostic pass-through.
#include <algorithm>
#include <string>

#include "controller/ISensorController.h"
#include "controller/KeyCmdTable.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/FlashView.h"
#include "tools/KeyValText.h"
#include "tools/ParamNames.h"
#include "tools/ParamSnapshot.h"
#include "tools/Session.h"

namespace {

constexpr const char* NO_CACHE = "nocache";
constexpr int SENSOR_CHECK_READ = 2;

std::string joinValues(const std::vector<int>& p_vecValues) {
    std::string strText;
    for (const int nValue : p_vecValues) {
        strText += (strText.empty() ? "" : " ") + std::to_string(nValue);
    }
    return strText;
}

// A value outside the items of a list control, or outside a slider's bounds,
// is refused before it is sent.
bool isAllowed(Session& p_objSession, u32 p_nKey, int p_nValue) {
    const StyleControl* pControl = p_objSession.style().find(p_nKey);
    if (pControl == nullptr) {
        return true;
    }
    const auto& vecItems = pControl->vecItems;
    if (!vecItems.empty() &&
        std::find(vecItems.begin(), vecItems.end(), p_nValue) == vecItems.end()) {
        complain("%s allows only %s; %d is not one of them", keyLabel(p_nKey).c_str(),
                 joinValues(vecItems).c_str(), p_nValue);
        return false;
    }
    if ((pControl->nMin && p_nValue < *pControl->nMin) ||
        (pControl->nMax && p_nValue > *pControl->nMax)) {
        complain("%s takes %s to %s; %d is outside", keyLabel(p_nKey).c_str(),
                 pControl->nMin ? std::to_string(*pControl->nMin).c_str() : "any",
                 pControl->nMax ? std::to_string(*pControl->nMax).c_str() : "any", p_nValue);
        return false;
    }
    return true;
}

bool cacheArg(const CommandLine& p_objLine, size_t p_nIndex, bool& p_bCache) {
    p_bCache = true;
    if (p_objLine.argCount() <= p_nIndex) {
        return true;
    }
    if (p_objLine.arg(p_nIndex) != NO_CACHE) {
        complain("expected '%s' or nothing, not '%s'", NO_CACHE, p_objLine.arg(p_nIndex).c_str());
        return false;
    }
    p_bCache = false;
    return true;
}

// The value of the key in the current scheme's file on flash, if there is one.
std::optional<int> flashValue(Session& p_objSession, int p_nScheme, u32 p_nKey) {
    std::vector<KeyVal> vecSet;
    if (!readSchemeFile(schemeFilePath(p_objSession.controller(), p_nScheme), vecSet)) {
        return std::nullopt;
    }
    for (const KeyVal& stRecord : vecSet) {
        if (stRecord.key == p_nKey) {
            return static_cast<int>(stRecord.value);
        }
    }
    return std::nullopt;
}

// Where a stored value now lives: the scheme in memory, and whether flash agrees.
std::string storageNote(Session& p_objSession, u32 p_nKey, int p_nStored) {
    int nScheme = -1;
    p_objSession.controller().getParamScheme(nScheme);
    if (static_cast<u32>(nScheme) >= p_objSession.controller().getSchemeSum()) {
        return "stored in the factory set, which never reaches flash";
    }
    const std::optional<int> nOnFlash = flashValue(p_objSession, nScheme, p_nKey);
    if (nOnFlash && *nOnFlash == p_nStored) {
        return "stored in scheme " + std::to_string(nScheme) + ", the same as on flash";
    }
    return "stored in scheme " + std::to_string(nScheme) + " (flash has " + valueText(nOnFlash) +
           "; 'flush' keeps it)";
}

void reportSet(Session& p_objSession, u32 p_nKey, const std::optional<int>& p_nBefore, int p_nAsked,
               bool p_bCache) {
    const std::string strLabel = keyLabel(p_nKey);
    const bool bInSets = p_objSession.isSchemeKey(p_nKey);
    if (!bInSets) {
        say("  %s: %d sent to the ISP (not a parameter of this channel's schemes: not stored)",
            strLabel.c_str(), p_nAsked);
        return;
    }
    if (!p_bCache) {
        say("  %s: %d sent to the ISP; the scheme keeps %s", strLabel.c_str(), p_nAsked,
            valueText(p_nBefore).c_str());
        return;
    }
    if (p_nBefore && *p_nBefore == p_nAsked) {
        say("  %s is already %d: nothing sent", strLabel.c_str(), p_nAsked);
        return;
    }
    int nStored = p_nAsked;
    p_objSession.controller().getParameter(static_cast<int>(p_nKey), nStored);
    const std::string strAdjusted =
        nStored != p_nAsked ? " (the module adjusted " + std::to_string(p_nAsked) + ")" : "";
    say("  %s: %s -> %d%s, %s", strLabel.c_str(), valueText(p_nBefore).c_str(), nStored,
        strAdjusted.c_str(), storageNote(p_objSession, p_nKey, nStored).c_str());
}

// Every key of the pairs must be known and every value allowed.
bool checkPairs(Session& p_objSession, const std::vector<KeyVal>& p_vecPairs) {
    for (const KeyVal& stPair : p_vecPairs) {
        if (!isTableKey(stPair.key) && !p_objSession.isSchemeKey(stPair.key)) {
            complain("parameter %u is neither in the key-command table nor in this channel's "
                     "sets; nothing was set",
                     stPair.key);
            return false;
        }
        if (!isAllowed(p_objSession, stPair.key, static_cast<int>(stPair.value))) {
            return false;
        }
    }
    return true;
}

void printPairs(const std::vector<KeyVal>& p_vecPairs) {
    for (const KeyVal& stPair : p_vecPairs) {
        say("  %s = %d", keyLabel(stPair.key).c_str(), static_cast<int>(stPair.value));
    }
}

} // namespace

bool cmdGet(Session& p_objSession, const CommandLine& p_objLine) {
    std::vector<u32> vecKeys;
    for (size_t i = 0; i < p_objLine.argCount(); ++i) {
        u32 nKey = 0;
        if (!p_objSession.keyArg(p_objLine, i, nKey)) {
            return false;
        }
        vecKeys.push_back(nKey);
    }
    bool bAll = true;
    for (const auto& [nKey, nValue] : snapshot(p_objSession.controller(), vecKeys)) {
        if (nValue) {
            say("  %s = %d", keyLabel(nKey).c_str(), *nValue);
        } else {
            complain("%s cannot be read: the scheme does not hold it and the ISP refused it",
                     keyLabel(nKey).c_str());
            bAll = false;
        }
    }
    return bAll;
}

bool cmdSet(Session& p_objSession, const CommandLine& p_objLine) {
    u32 nKey = 0;
    int nValue = 0;
    bool bCache = true;
    if (!p_objSession.keyArg(p_objLine, 0, nKey) ||
        !p_objSession.intArg(p_objLine, 1, "value", nValue) || !cacheArg(p_objLine, 2, bCache) ||
        !isAllowed(p_objSession, nKey, nValue)) {
        return false;
    }
    ISensorController& objController = p_objSession.controller();
    const std::optional<int> nBefore = snapshot(objController, {nKey}).front().second;
    const int nResult = objController.setParameter(static_cast<int>(nKey), nValue, bCache);
    if (nResult != SNS_SUCCESS) {
        complain("the module refused %s = %d (result %d); nothing was stored",
                 keyLabel(nKey).c_str(), nValue, nResult);
        return false;
    }
    reportSet(p_objSession, nKey, nBefore, nValue, bCache);
    return true;
}

bool cmdSetText(Session& p_objSession, const CommandLine& p_objLine) {
    std::vector<KeyVal> vecPairs;
    bool bCache = true;
    if (!parsePairText(p_objLine.arg(0), vecPairs)) {
        complain("'%s' is not a list of (KEY,VALUE) pairs such as (34,60)(2337,100)",
                 p_objLine.arg(0).c_str());
        return false;
    }
    if (!cacheArg(p_objLine, 1, bCache) || !checkPairs(p_objSession, vecPairs)) {
        return false;
    }
    std::vector<u32> vecKeys;
    for (const KeyVal& stPair : vecPairs) {
        vecKeys.push_back(stPair.key);
    }
    ISensorController& objController = p_objSession.controller();
    const ParamValues vecBefore = snapshot(objController, vecKeys);
    const int nResult = objController.setParameters(p_objLine.arg(0), bCache);
    const size_t nChanged = printChanges(vecBefore, snapshot(objController, vecKeys));
    if (nResult != SNS_SUCCESS) {
        complain("the module refused the text at key %d (result %d); pairs before it stay "
                 "applied",
                 -nResult, nResult);
        return false;
    }
    say("  %zu pair%s applied, %zu stored value%s changed", vecPairs.size(),
        vecPairs.size() == 1 ? "" : "s", nChanged, nChanged == 1 ? "" : "s");
    return true;
}

bool cmdGetText(Session& p_objSession, const CommandLine& p_objLine) {
    std::vector<int> vecIds;
    if (!parseIdList(p_objLine.arg(0), vecIds)) {
        complain("'%s' is not an id list such as (34,2337,49)", p_objLine.arg(0).c_str());
        return false;
    }
    std::string strOut;
    p_objSession.controller().getParameters(p_objLine.arg(0), strOut);
    std::vector<KeyVal> vecPairs;
    if (!strOut.empty() && !parsePairText(strOut, vecPairs)) {
        complain("the module's reply '%s' is not a list of pairs", strOut.c_str());
        return false;
    }
    say("  reply %s", strOut.empty() ? "(empty)" : strOut.c_str());
    printPairs(vecPairs);
    if (vecPairs.size() < vecIds.size()) {
        say("  %zu of the %zu keys could not be read and are left out",
            vecIds.size() - vecPairs.size(), vecIds.size());
    }
    return true;
}

bool cmdAll(Session& p_objSession, const CommandLine&) {
    std::string strOut;
    p_objSession.controller().getAllParameters(strOut);
    std::vector<KeyVal> vecPairs;
    if (!strOut.empty() && !parsePairText(strOut, vecPairs)) {
        complain("the module's reply '%s' is not a list of pairs", strOut.c_str());
        return false;
    }
    say("  %zu parameters", vecPairs.size());
    printPairs(vecPairs);
    return true;
}

bool cmdRange(Session& p_objSession, const CommandLine& p_objLine) {
    u32 nKey = 0;
    if (!p_objSession.keyArg(p_objLine, 0, nKey)) {
        return false;
    }
    int nDefault = 0;
    std::string strRange;
    if (!p_objSession.controller().getSensorParamRange(static_cast<int>(nKey), nDefault,
                                                       strRange)) {
        complain("no range for %s: only the shutter, iris and focus-limit keys the ISP lists as "
                 "dynamic have one",
                 keyLabel(nKey).c_str());
        return false;
    }
    if (strRange.empty()) {
        say("  %s: the ISP allows a continuous range (no list of values)", keyLabel(nKey).c_str());
    } else {
        say("  %s: default %d, allowed %s", keyLabel(nKey).c_str(), nDefault, strRange.c_str());
    }
    return true;
}

bool cmdKeyCmd(Session& p_objSession, const CommandLine& p_objLine) {
    u32 nKey = 0;
    if (!p_objSession.keyArg(p_objLine, 0, nKey)) {
        return false;
    }
    const KeyCmdRow* pRow = keyCmdRowOf(nKey);
    if (pRow == nullptr) {
        say("  %u has no key-command row: it is sent to the ISP as command %u", nKey, nKey);
    } else if (pRow->func == nullptr) {
        say("  %s: stored only, never sent to the ISP", keyLabel(nKey).c_str());
    } else {
        say("  %s: ISP command %u, handler %s", keyLabel(nKey).c_str(), pRow->ia_cmd,
            pRow->func_name);
    }
    return true;
}

bool cmdCheck(Session& p_objSession, const CommandLine& p_objLine) {
    std::vector<int> vecFields;
    if (!parseIdList(p_objLine.arg(0), vecFields) || vecFields.size() != 3) {
        complain("'%s' is not a request of three numbers such as (5,2,7)",
                 p_objLine.arg(0).c_str());
        return false;
    }
    std::string strText = p_objLine.arg(0);
    const int nResult = p_objSession.controller().SensorCheck(strText);
    if (nResult != SNS_SUCCESS) {
        complain("the ISP answered the diagnostic request with %d", nResult);
        return false;
    }
    if (vecFields[1] == SENSOR_CHECK_READ) {
        say("  diagnostic read: reply %s", strText.c_str());
    } else {
        say("  diagnostic write accepted");
    }
    return true;
}
