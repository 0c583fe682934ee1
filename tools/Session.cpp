#include "tools/Session.h"

#include <algorithm>

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "tools/ChannelHost.h"
#include "tools/CommandLine.h"
#include "tools/CommandTable.h"
#include "tools/Console.h"
#include "tools/FlashView.h"
#include "tools/ParamNames.h"
#include "tools/ValueParsing.h"

namespace {

const char* policyName(int p_nPolicy) {
    switch (p_nPolicy) {
    case 1:
        return "by time";
    case 2:
        return "by day/night";
    default:
        return "none";
    }
}

} // namespace

Session::Session(ChannelHost& p_objHost, ToolClock& p_objClock, SimulatorControl& p_objSimulator,
                 const DeviceWorkspace& p_objWorkspace)
    : m_objHost(p_objHost), m_objClock(p_objClock), m_objSimulator(p_objSimulator),
      m_objWorkspace(p_objWorkspace), m_vecStyles(p_objHost.count()),
      m_vecStyleRead(p_objHost.count(), false), m_vecSchemeKeys(p_objHost.count()) {}

bool Session::execute(const std::string& p_strLine) {
    CommandLine objLine;
    std::string strError;
    if (!objLine.parse(p_strLine, strError)) {
        complain("%s", strError.c_str());
        return false;
    }
    if (objLine.empty()) {
        return true;
    }
    const Command* pCommand = findCommand(objLine.name());
    if (pCommand == nullptr) {
        complain("unknown command '%s' (type 'help' for the list)", objLine.name().c_str());
        return false;
    }
    if (objLine.argCount() < pCommand->nMinArgs || objLine.argCount() > pCommand->nMaxArgs) {
        complain("usage: %s", commandUsage(*pCommand).c_str());
        return false;
    }
    return pCommand->pHandler(*this, objLine);
}

ISensorController& Session::controller() {
    return m_objHost.channel(m_nChannel);
}

int Session::ispChannel() {
    return controller().getCameraID() - 1;
}

bool Session::selectChannel(int p_nNumber) {
    if (p_nNumber < 1 || static_cast<size_t>(p_nNumber) > m_objHost.count()) {
        complain("no channel %d: this device has channel%s 1%s", p_nNumber,
                 m_objHost.count() > 1 ? "s" : "", m_objHost.count() > 1 ? " and 2" : "");
        return false;
    }
    m_nChannel = static_cast<size_t>(p_nNumber - 1);
    return true;
}

const StyleTree& Session::style() {
    if (!m_vecStyleRead[m_nChannel]) {
        std::string strError;
        StyleTree objTree;
        if (!objTree.parse(controller().getUIStyleFile(), strError)) {
            complain("channel %d: %s", channelNumber(), strError.c_str());
        }
        m_vecStyles[m_nChannel] = std::move(objTree);
        m_vecStyleRead[m_nChannel] = true;
    }
    return m_vecStyles[m_nChannel];
}

const std::vector<u32>& Session::schemeKeys() {
    std::vector<u32>& vecKeys = m_vecSchemeKeys[m_nChannel];
    if (vecKeys.empty()) {
        std::vector<KeyVal> vecSet;
        if (readSchemeFile(schemeFilePath(controller(), 0), vecSet)) {
            for (const KeyVal& stRecord : vecSet) {
                vecKeys.push_back(stRecord.key);
            }
        } else {
            vecKeys = style().keys();
        }
    }
    return vecKeys;
}

bool Session::isSchemeKey(u32 p_nKey) {
    const std::vector<u32>& vecKeys = schemeKeys();
    return std::find(vecKeys.begin(), vecKeys.end(), p_nKey) != vecKeys.end();
}

void Session::forgetStyle() {
    m_vecStyleRead[m_nChannel] = false;
    m_vecSchemeKeys[m_nChannel].clear();
}

bool Session::intArg(const CommandLine& p_objLine, size_t p_nIndex, const char* p_szWhat,
                     int& p_nOut) {
    if (!parseInt(p_objLine.arg(p_nIndex), p_nOut)) {
        complain("%s '%s' is not a whole number", p_szWhat, p_objLine.arg(p_nIndex).c_str());
        return false;
    }
    return true;
}

bool Session::keyArg(const CommandLine& p_objLine, size_t p_nIndex, u32& p_nKey) {
    const std::string& strText = p_objLine.arg(p_nIndex);
    u32 nKey = 0;
    if (!keyFromText(strText, nKey)) {
        complain("unknown parameter '%s' (give a key number or a name such as brightness)",
                 strText.c_str());
        return false;
    }
    if (!isTableKey(nKey) && !isSchemeKey(nKey) && style().find(nKey) == nullptr) {
        complain("parameter %u is neither in the key-command table nor in this channel's sets",
                 nKey);
        return false;
    }
    p_nKey = nKey;
    return true;
}

bool Session::switchArg(const CommandLine& p_objLine, size_t p_nIndex, bool& p_bOn) {
    if (!parseSwitch(p_objLine.arg(p_nIndex), p_bOn)) {
        complain("'%s' is neither on nor off", p_objLine.arg(p_nIndex).c_str());
        return false;
    }
    return true;
}

std::string Session::schemeLabel(int p_nScheme) {
    if (p_nScheme >= 0 && static_cast<u32>(p_nScheme) == controller().getSchemeSum()) {
        return "factory set (" + std::to_string(p_nScheme) + ")";
    }
    return "scheme " + std::to_string(p_nScheme);
}

std::string Session::schemeSummary() {
    ISensorController& objController = controller();
    int nScheme = -1;
    int nMode = 0;
    int nPolicy = 0;
    objController.getParamScheme(nScheme);
    objController.getParamMode(nMode);
    objController.getParameter(KEY_SCHEME_MODE, nPolicy);
    return schemeLabel(nScheme) + ", mode " + (nMode != 0 ? "auto" : "manual") + ", policy " +
           policyName(nPolicy);
}
