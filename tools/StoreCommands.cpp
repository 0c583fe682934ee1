// Between memory and flash: storing the current scheme, showing a scheme's
// file, sending stored values again, and the two resets.
#include <algorithm>

#include "controller/ISensorController.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/FlashView.h"
#include "tools/ParamNames.h"
#include "tools/ParamSnapshot.h"
#include "tools/Session.h"
#include "tools/ToolClock.h"
#include "tools/WindowCheck.h"

namespace {

int currentScheme(ISensorController& p_objController) {
    int nScheme = -1;
    p_objController.getParamScheme(nScheme);
    return nScheme;
}

bool isFactorySet(ISensorController& p_objController, int p_nScheme) {
    return p_nScheme < 0 || static_cast<u32>(p_nScheme) >= p_objController.getSchemeSum();
}

// Why flush wrote nothing: the window check, or the file itself.
const char* flushRefusal(int p_nResult) {
    const char* szProblem = windowProblem(p_nResult);
    return szProblem != nullptr ? szProblem : "the file could not be written";
}

// Differences between two readings of one file, by position (the sets keep
// the style's order).
size_t printFileChanges(const std::vector<KeyVal>& p_vecBefore,
                        const std::vector<KeyVal>& p_vecAfter) {
    size_t nChanged = 0;
    for (size_t i = 0; i < p_vecAfter.size(); ++i) {
        const bool bSame = i < p_vecBefore.size() && p_vecBefore[i].key == p_vecAfter[i].key &&
                           p_vecBefore[i].value == p_vecAfter[i].value;
        if (!bSame) {
            const std::string strOld =
                i < p_vecBefore.size() && p_vecBefore[i].key == p_vecAfter[i].key
                    ? std::to_string(static_cast<int>(p_vecBefore[i].value))
                    : std::string("(none)");
            say("  %s: %s -> %d on flash", keyLabel(p_vecAfter[i].key).c_str(), strOld.c_str(),
                static_cast<int>(p_vecAfter[i].value));
            ++nChanged;
        }
    }
    return nChanged;
}

// One record of a file; for the current scheme, a value not yet flushed is
// shown beside it.
void printFlashRecord(ISensorController& p_objController, const KeyVal& p_stRecord,
                      bool p_bCurrent) {
    std::string strNote;
    if (p_bCurrent) {
        const std::optional<int> nLive = snapshot(p_objController, {p_stRecord.key}).front().second;
        if (nLive != static_cast<int>(p_stRecord.value)) {
            strNote = "   (in memory: " + valueText(nLive) + ", not yet flushed)";
        }
    }
    say("  %s = %d%s", keyLabel(p_stRecord.key).c_str(), static_cast<int>(p_stRecord.value),
        strNote.c_str());
}

// The whole style's values before and after an operation that may change many.
template <typename Operation> bool showWhatChanges(Session& p_objSession, Operation p_fnOperation) {
    const std::vector<u32> vecKeys = p_objSession.schemeKeys();
    const ParamValues vecBefore = snapshot(p_objSession.controller(), vecKeys);
    if (!p_fnOperation()) {
        return false;
    }
    const size_t nChanged = printChanges(vecBefore, snapshot(p_objSession.controller(), vecKeys));
    say("  %zu parameter%s changed", nChanged, nChanged == 1 ? "" : "s");
    return true;
}

} // namespace

bool cmdFlush(Session& p_objSession, const CommandLine&) {
    ISensorController& objController = p_objSession.controller();
    const int nScheme = currentScheme(objController);
    if (isFactorySet(objController, nScheme)) {
        objController.flush();
        say("  the factory set is current: it is never written to flash");
        return true;
    }
    const std::string strFile = schemeFilePath(objController, nScheme);
    std::vector<KeyVal> vecBefore;
    readSchemeFile(strFile, vecBefore);
    const int nResult = objController.flush();
    if (nResult != SNS_SUCCESS) {
        complain("flush refused: %s; nothing was written", flushRefusal(nResult));
        return false;
    }
    std::vector<KeyVal> vecAfter;
    readSchemeFile(strFile, vecAfter);
    const size_t nChanged = printFileChanges(vecBefore, vecAfter);
    say("  scheme %d written to %s: %zu record%s, %zu changed", nScheme, strFile.c_str(),
        vecAfter.size(), vecAfter.size() == 1 ? "" : "s", nChanged);
    return true;
}

bool cmdFlash(Session& p_objSession, const CommandLine& p_objLine) {
    ISensorController& objController = p_objSession.controller();
    const int nCurrent = currentScheme(objController);
    int nScheme = isFactorySet(objController, nCurrent) ? 0 : nCurrent;
    if (p_objLine.argCount() >= 1) {
        if (!p_objSession.intArg(p_objLine, 0, "scheme", nScheme)) {
            return false;
        }
        if (isFactorySet(objController, nScheme)) {
            complain("scheme %d has no file: user schemes are 0 to %u", nScheme,
                     objController.getSchemeSum() - 1);
            return false;
        }
    }
    std::vector<u32> vecWanted;
    for (size_t i = 1; i < p_objLine.argCount(); ++i) {
        u32 nKey = 0;
        if (!p_objSession.keyArg(p_objLine, i, nKey)) {
            return false;
        }
        vecWanted.push_back(nKey);
    }
    const std::string strFile = schemeFilePath(objController, nScheme);
    std::vector<KeyVal> vecSet;
    std::string strWhy;
    if (!readSchemeFile(strFile, vecSet, &strWhy)) {
        complain("%s: %s", strFile.c_str(), strWhy.c_str());
        return false;
    }
    say("  %s: %zu records", strFile.c_str(), vecSet.size());
    for (const KeyVal& stRecord : vecSet) {
        const bool bWanted = vecWanted.empty() || std::find(vecWanted.begin(), vecWanted.end(),
                                                            stRecord.key) != vecWanted.end();
        if (bWanted) {
            printFlashRecord(objController, stRecord, nScheme == nCurrent);
        }
    }
    return true;
}

bool cmdRestore(Session& p_objSession, const CommandLine& p_objLine) {
    u32 nKey = 0;
    if (!p_objSession.keyArg(p_objLine, 0, nKey)) {
        return false;
    }
    if (!p_objSession.isSchemeKey(nKey)) {
        complain("%s is not in the current scheme: there is no stored value to send",
                 keyLabel(nKey).c_str());
        return false;
    }
    const int nResult = p_objSession.controller().restore(static_cast<int>(nKey));
    if (nResult != SNS_SUCCESS) {
        complain("restoring %s failed (result %d)", keyLabel(nKey).c_str(), nResult);
        return false;
    }
    int nValue = 0;
    p_objSession.controller().getParameter(static_cast<int>(nKey), nValue);
    say("  %s: stored value %d sent to the ISP again", keyLabel(nKey).c_str(), nValue);
    return true;
}

bool cmdRestoreAe(Session& p_objSession, const CommandLine&) {
    if (!p_objSession.controller().restoreAeMode()) {
        complain("the focus or exposure mode could not be sent again");
        return false;
    }
    say("  stored focus and exposure modes sent to the ISP again");
    return true;
}

bool cmdResetLast(Session& p_objSession, const CommandLine&) {
    return showWhatChanges(p_objSession, [&p_objSession] {
        if (!p_objSession.controller().resetToLastParameters()) {
            complain("the scheme's file could not be applied in full");
            return false;
        }
        say("  the scheme's file applied again; unsaved changes undone");
        return true;
    });
}

bool cmdReset(Session& p_objSession, const CommandLine&) {
    const bool bDone = showWhatChanges(p_objSession, [&p_objSession] {
        // The reset runs init again, whose first pass would pause a second.
        ToolClock::QuickHostWaits objQuick(p_objSession.clock());
        if (!p_objSession.controller().resetParameters()) {
            complain("channel %d reset to factory settings, but its files could not all be "
                     "written anew: flash may still hold old values",
                     p_objSession.channelNumber());
            return false;
        }
        say("  channel %d reset to factory settings: its scheme files were removed and "
            "written anew",
            p_objSession.channelNumber());
        return true;
    });
    p_objSession.forgetStyle();
    return bDone;
}
