// The typed accessors the host's other modules use, one command each: without
// a value the command reads, with one it writes and shows the value before
// and after. Which route (stored, direct, special) each takes is the module's.
#include <array>
#include <optional>

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/ParamNames.h"
#include "tools/Session.h"
#include "tools/ValueParsing.h"

namespace {

using Getter = bool (*)(ISensorController&, int&);
using Setter = bool (*)(ISensorController&, int);

struct Accessor {
    const char* szName;
    u32 nKey; // shown beside the name
    const char* szHelp;
    Getter pGet; // null: write only
    Setter pSet; // null: read only
};

// clang-format off
#define ACC_GET(method) [](ISensorController& c, int& v) { return c.method(v); }
#define ACC_SET(method) [](ISensorController& c, int v) { return c.method(v); }
// clang-format on

constexpr std::array<Accessor, 29> ACCESSORS = {{
    {"dnmode", KEY_DN_MODE, "day/night mode", ACC_GET(getDNMode), ACC_SET(setDNMode)},
    {"dnstate", 153, "the ISP's day/night state (0 day)", ACC_GET(getDNState), ACC_SET(setDNState)},
    {"wdr", KEY_WDR_MODE, "WDR switch", ACC_GET(getWDRSwitch), ACC_SET(setWDRSwitch)},
    {"wdr-strength", KEY_WDR_STRG, "WDR strength", ACC_GET(getWDRStrength),
     ACC_SET(setWDRStrength)},
    {"wdr-isp", KEY_WDR_MODE, "WDR as the ISP has it", ACC_GET(getWDR), nullptr},
    {"hlc", KEY_HLC_SWITCH, "HLC switch", ACC_GET(getHLCSwitch), ACC_SET(setHLCSwitch)},
    {"hlc-strength", KEY_HLC_STRG, "HLC strength", ACC_GET(getHLCStrength),
     ACC_SET(setHLCStrength)},
    {"blc", KEY_BLC_SWITCH, "BLC switch", ACC_GET(getBLCSwitch), ACC_SET(setBLCSwitch)},
    {"blc-strength", KEY_BLC_STRG, "BLC strength", ACC_GET(getBLCStrength),
     ACC_SET(setBLCStrength)},
    {"defog", KEY_DEFLG_SWITCH, "defog switch", ACC_GET(getDefogSwitch), ACC_SET(setDefogSwitch)},
    {"defog-strength", KEY_DEFLG_STRG, "defog strength", ACC_GET(getDefogStrength),
     ACC_SET(setDefogStrength)},
    {"nr2d", KEY_2D_NR_SWITCH, "2D noise reduction switch", ACC_GET(get2DSwitch),
     ACC_SET(set2DSwitch)},
    {"nr2d-mode", KEY_2D_NR_MODE, "2D noise reduction mode", ACC_GET(get2DMode),
     ACC_SET(set2DMode)},
    {"nr2d-auto", KEY_2D_NR_STRG_A, "2D automatic maximum strength", ACC_GET(get2DAutoMaxStrength),
     ACC_SET(set2DAutoMaxStrength)},
    {"nr2d-manual", KEY_2D_NR_STRG_M, "2D manual maximum strength", ACC_GET(get2DManualMaxStrength),
     ACC_SET(set2DManualMaxStrength)},
    {"nr3d", KEY_3D_NR_SWITCH, "3D noise reduction switch", ACC_GET(get3DSwitch),
     ACC_SET(set3DSwitch)},
    {"nr3d-mode", KEY_3D_NR_MODE, "3D noise reduction mode", ACC_GET(get3DMode),
     ACC_SET(set3DMode)},
    {"nr3d-auto", KEY_3D_NR_STRG_A, "3D automatic maximum strength", ACC_GET(get3DAutoMaxStrength),
     ACC_SET(set3DAutoMaxStrength)},
    {"nr3d-manual", KEY_3D_NR_STRG_M, "3D manual maximum strength", ACC_GET(get3DManualMaxStrength),
     ACC_SET(set3DManualMaxStrength)},
    {"beaway", KEY_BEAWAY, "beaway (mirror 1 and 2 exchanged)", ACC_GET(getBeaway),
     ACC_SET(setBeaway)},
    {"mirror", KEY_MIRROR, "mirror; a write is flushed at once", ACC_GET(getMirrorValue),
     ACC_SET(setMirrorMode)},
    {"ir", KEY_IR_SWITCH, "infrared; on switches white light off", ACC_GET(getIRSwitch),
     ACC_SET(setIRSwitch)},
    {"white", KEY_WHITE_SWITCH, "white light; on switches infrared off", ACC_GET(getWhiteSwitch),
     ACC_SET(setWhiteSwitch)},
    {"white-mode", KEY_WHITE_MODE, "white light mode", ACC_GET(getWhiteMode),
     ACC_SET(setWhiteMode)},
    {"light-type", KEY_LIGHT_TYPE, "light type 0..3 (2 intelligent)", ACC_GET(getLightType),
     ACC_SET(setLightType)},
    {"exposure-strategy", 225, "exposure strategy (write only)", nullptr,
     ACC_SET(setExposureStrategy)},
    {"irled", 178, "infrared LED information (write only)", nullptr,
     [](ISensorController& c, int v) { return c.setIrLedInfo(&v); }},
    {"heat", 1606, "heater status (read only)",
     [](ISensorController& c, int& v) {
         bool bHeat = false;
         const bool bDone = c.getHeatStatus(bHeat);
         v = bHeat ? 1 : 0;
         return bDone;
     },
     nullptr},
    {"temp", 1607, "temperature (read only)", ACC_GET(getTempValue), nullptr},
}};

#undef ACC_GET
#undef ACC_SET

const Accessor* findAccessor(const std::string& p_strName) {
    for (const Accessor& stAccessor : ACCESSORS) {
        if (p_strName == stAccessor.szName) {
            return &stAccessor;
        }
    }
    return nullptr;
}

std::optional<int> read(ISensorController& p_objController, const Accessor& p_stAccessor) {
    int nValue = 0;
    if (p_stAccessor.pGet == nullptr || !p_stAccessor.pGet(p_objController, nValue)) {
        return std::nullopt;
    }
    return nValue;
}

bool writeAccessor(Session& p_objSession, const Accessor& p_stAccessor,
                   const std::string& p_strText) {
    const std::string strLabel =
        std::string(p_stAccessor.szName) + " (" + keyLabel(p_stAccessor.nKey) + ")";
    if (p_stAccessor.pSet == nullptr) {
        complain("%s can only be read", strLabel.c_str());
        return false;
    }
    int nValue = 0;
    if (!parseInt(p_strText, nValue)) {
        complain("%s: '%s' is not a whole number", p_stAccessor.szName, p_strText.c_str());
        return false;
    }
    ISensorController& objController = p_objSession.controller();
    const std::optional<int> nBefore = read(objController, p_stAccessor);
    if (!p_stAccessor.pSet(objController, nValue)) {
        complain("%s = %d refused by the module", strLabel.c_str(), nValue);
        return false;
    }
    const std::optional<int> nAfter = read(objController, p_stAccessor);
    if (nBefore && nAfter) {
        say("  %s: %d -> %d", strLabel.c_str(), *nBefore, *nAfter);
    } else {
        say("  %s: %d written", strLabel.c_str(), nValue);
    }
    return true;
}

bool cmdAccessor(Session& p_objSession, const CommandLine& p_objLine) {
    const Accessor* pAccessor = findAccessor(p_objLine.name());
    if (pAccessor == nullptr) {
        complain("no accessor '%s'", p_objLine.name().c_str());
        return false;
    }
    if (p_objLine.argCount() == 1) {
        return writeAccessor(p_objSession, *pAccessor, p_objLine.arg(0));
    }
    const std::string strLabel =
        std::string(pAccessor->szName) + " (" + keyLabel(pAccessor->nKey) + ")";
    if (pAccessor->pGet == nullptr) {
        complain("%s can only be written", strLabel.c_str());
        return false;
    }
    const std::optional<int> nValue = read(p_objSession.controller(), *pAccessor);
    if (!nValue) {
        complain("%s cannot be read: refused", strLabel.c_str());
        return false;
    }
    say("  %s = %d", strLabel.c_str(), *nValue);
    return true;
}

std::vector<Command> buildCommands() {
    std::vector<Command> vecCommands;
    for (const Accessor& stAccessor : ACCESSORS) {
        const char* szArgs =
            stAccessor.pGet == nullptr ? "VALUE" : (stAccessor.pSet == nullptr ? "" : "[VALUE]");
        // A read-only accessor given a value (or the reverse) is told so by
        // cmdAccessor rather than by a bare usage line.
        vecCommands.push_back({stAccessor.szName, szArgs, stAccessor.szHelp, 0, 1, cmdAccessor});
    }
    vecCommands.push_back({"showflags", "[wdr|beaway on|off]",
                           "show, or set, whether the style shows WDR and beaway", 0, 2,
                           cmdShowFlags});
    return vecCommands;
}

} // namespace

const std::vector<Command>& accessorCommands() {
    static const std::vector<Command> s_vecCommands = buildCommands();
    return s_vecCommands;
}

bool cmdShowFlags(Session& p_objSession, const CommandLine& p_objLine) {
    ISensorController& objController = p_objSession.controller();
    if (p_objLine.argCount() == 1) {
        complain("usage: showflags [wdr|beaway on|off]");
        return false;
    }
    if (p_objLine.argCount() == 2) {
        bool bOn = false;
        const std::string& strFlag = p_objLine.arg(0);
        if (strFlag != "wdr" && strFlag != "beaway") {
            complain("no show flag '%s': there are wdr and beaway", strFlag.c_str());
            return false;
        }
        if (!p_objSession.switchArg(p_objLine, 1, bOn)) {
            return false;
        }
        if (strFlag == "wdr") {
            objController.setShowWDRFalg(bOn);
        } else {
            objController.setShowBeawayFalg(bOn);
        }
        p_objSession.forgetStyle();
    }
    bool bWdr = false;
    bool bBeaway = false;
    objController.getShowWDRFalg(bWdr);
    objController.getShowBeawayFalg(bBeaway);
    say("  show WDR %s, show beaway %s", bWdr ? "on" : "off", bBeaway ? "on" : "off");
    return true;
}
