#include "tools/sensord/ChannelService.h"

#include <algorithm>

#include "common/SensorKeys.h"
#include "common/SensorTypes.h"
#include "controller/ISensorController.h"
#include "tools/ChannelHost.h"
#include "tools/ToolClock.h"
#include "tools/WindowCheck.h"

namespace sensord {

namespace {

// Bounds a relative focus move: each step is one ISP command.
constexpr int MAX_FOCUS_STEPS = 64;

} // namespace

ChannelService::ChannelService(ChannelHost& p_objHost, ToolClock& p_objClock)
    : m_objHost(p_objHost), m_objClock(p_objClock) {
    static_assert(ChannelHost::MAX_CHANNELS == 2, "one lock and style per channel");
}

int ChannelService::count() const {
    return static_cast<int>(m_objHost.count());
}

ChannelState ChannelService::state(int p_nChannel) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    ISensorController& objController = m_objHost.channel(static_cast<size_t>(p_nChannel - 1));
    ChannelState stState;
    objController.getParamScheme(stState.nScheme);
    objController.getParamMode(stState.nMode);
    objController.getParameter(KEY_SCHEME_MODE, stState.nPolicy);
    stState.nSchemeSum = static_cast<int>(objController.getSchemeSum());
    stState.bThermal = objController.isThermalChannel();
    stState.bUp = objController.getSensorStatus() == 1;
    return stState;
}

std::shared_ptr<const StyleTree> ChannelService::style(int p_nChannel) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    return styleLocked(p_nChannel);
}

std::shared_ptr<const StyleTree> ChannelService::styleLocked(int p_nChannel) {
    std::shared_ptr<const StyleTree>& pStyle = m_arrStyles[static_cast<size_t>(p_nChannel - 1)];
    if (!pStyle) {
        auto pTree = std::make_shared<StyleTree>();
        std::string strError;
        pTree->parse(m_objHost.channel(static_cast<size_t>(p_nChannel - 1)).getUIStyleFile(),
                     strError); // an unreadable style leaves the channel without controls
        pStyle = pTree;
    }
    return pStyle;
}

bool ChannelService::read(int p_nChannel, u32 p_nKey, int& p_nValue) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    return m_objHost.channel(static_cast<size_t>(p_nChannel - 1))
        .getParameter(static_cast<int>(p_nKey), p_nValue);
}

std::string ChannelService::checkValue(const StyleControl& p_stControl, int p_nValue) {
    if (!p_stControl.vecItems.empty()) {
        if (std::find(p_stControl.vecItems.begin(), p_stControl.vecItems.end(), p_nValue) ==
            p_stControl.vecItems.end()) {
            std::string strItems;
            for (int nItem : p_stControl.vecItems) {
                strItems += (strItems.empty() ? "" : " ") + std::to_string(nItem);
            }
            return std::to_string(p_nValue) + " is not one of " + strItems;
        }
        return "";
    }
    if ((p_stControl.nMin && p_nValue < *p_stControl.nMin) ||
        (p_stControl.nMax && p_nValue > *p_stControl.nMax)) {
        return std::to_string(p_nValue) + " is outside " +
               std::to_string(p_stControl.nMin.value_or(p_nValue)) + " to " +
               std::to_string(p_stControl.nMax.value_or(p_nValue));
    }
    return "";
}

WriteOutcome ChannelService::write(int p_nChannel, u32 p_nKey, int p_nValue) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    WriteOutcome stOutcome;
    const std::shared_ptr<const StyleTree> pStyle = styleLocked(p_nChannel);
    const StyleControl* pControl = pStyle->find(p_nKey);
    if (pControl == nullptr) {
        stOutcome.eKind = WriteOutcome::Kind::Unknown;
        stOutcome.strWhy =
            "channel " + std::to_string(p_nChannel) + " has no parameter " + std::to_string(p_nKey);
        return stOutcome;
    }
    stOutcome.strWhy = checkValue(*pControl, p_nValue);
    if (!stOutcome.strWhy.empty()) {
        return stOutcome;
    }
    ISensorController& objController = m_objHost.channel(static_cast<size_t>(p_nChannel - 1));
    const int nResult = objController.setParameter(static_cast<int>(p_nKey), p_nValue, true);
    objController.getParameter(static_cast<int>(p_nKey), stOutcome.nStored);
    if (nResult != SNS_SUCCESS) {
        stOutcome.strWhy = "the module refused it (result " + std::to_string(nResult) + ")";
        return stOutcome;
    }
    stOutcome.eKind =
        stOutcome.nStored == p_nValue ? WriteOutcome::Kind::Stored : WriteOutcome::Kind::Corrected;
    if (stOutcome.nStored != p_nValue) {
        stOutcome.strWhy = "the module corrected " + std::to_string(p_nValue) + " to " +
                           std::to_string(stOutcome.nStored);
    }
    return stOutcome;
}

bool ChannelService::writeAll(int p_nChannel, const std::vector<KeyVal>& p_vecValues,
                              std::string& p_strWhy) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    const std::shared_ptr<const StyleTree> pStyle = styleLocked(p_nChannel);
    for (const KeyVal& stValue : p_vecValues) {
        const StyleControl* pControl = pStyle->find(stValue.key);
        p_strWhy = pControl == nullptr
                       ? "the channel has no parameter " + std::to_string(stValue.key)
                       : checkValue(*pControl, static_cast<int>(stValue.value));
        if (!p_strWhy.empty()) {
            return false;
        }
    }
    ISensorController& objController = m_objHost.channel(static_cast<size_t>(p_nChannel - 1));
    std::vector<KeyVal> vecBefore;
    for (const KeyVal& stValue : p_vecValues) {
        int nOld = 0;
        objController.getParameter(static_cast<int>(stValue.key), nOld);
        const int nResult = objController.setParameter(static_cast<int>(stValue.key),
                                                       static_cast<int>(stValue.value), true);
        if (nResult != SNS_SUCCESS) {
            for (auto it = vecBefore.rbegin(); it != vecBefore.rend(); ++it) {
                objController.setParameter(static_cast<int>(it->key), static_cast<int>(it->value),
                                           true);
            }
            p_strWhy = "the module refused parameter " + std::to_string(stValue.key) + " (result " +
                       std::to_string(nResult) + "); nothing was changed";
            return false;
        }
        vecBefore.push_back({stValue.key, static_cast<u32>(nOld)});
    }
    return true;
}

bool ChannelService::flush(int p_nChannel, std::string& p_strWhy) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    const int nResult = m_objHost.channel(static_cast<size_t>(p_nChannel - 1)).flush();
    if (nResult != SNS_SUCCESS) {
        const char* szProblem = windowProblem(nResult);
        p_strWhy = szProblem != nullptr ? szProblem : "the scheme file could not be written";
        return false;
    }
    return true;
}

bool ChannelService::setScheme(int p_nChannel, int p_nScheme, std::string& p_strWhy) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    ISensorController& objController = m_objHost.channel(static_cast<size_t>(p_nChannel - 1));
    const int nSum = static_cast<int>(objController.getSchemeSum());
    if (p_nScheme < 0 || p_nScheme > nSum) {
        p_strWhy = "scheme " + std::to_string(p_nScheme) + " does not exist: 0 to " +
                   std::to_string(nSum - 1) + " are the user schemes, " + std::to_string(nSum) +
                   " the factory set";
        return false;
    }
    if (!objController.setParamScheme(p_nScheme)) {
        p_strWhy = "the module refused to switch to scheme " + std::to_string(p_nScheme);
        return false;
    }
    return true;
}

void ChannelService::reset(int p_nChannel) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    // The reset runs init again, whose first pass would pause a second.
    ToolClock::QuickHostWaits objQuick(m_objClock);
    m_objHost.channel(static_cast<size_t>(p_nChannel - 1)).resetParameters();
    m_arrStyles[static_cast<size_t>(p_nChannel - 1)].reset();
}

std::vector<int> ChannelService::ispItems(int p_nChannel, u32 p_nKey) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    int nDefault = 0;
    std::string strRange;
    std::vector<int> vecItems;
    if (m_objHost.channel(static_cast<size_t>(p_nChannel - 1))
            .getSensorParamRange(static_cast<int>(p_nKey), nDefault, strRange)) {
        size_t nPos = 0;
        while (nPos < strRange.size()) {
            const size_t nEnd = std::min(strRange.find(' ', nPos), strRange.size());
            vecItems.push_back(std::atoi(strRange.substr(nPos, nEnd - nPos).c_str()));
            nPos = nEnd + 1;
        }
    }
    return vecItems;
}

bool ChannelService::setFocus(int p_nChannel, int p_nPosition) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    return m_objHost.channel(static_cast<size_t>(p_nChannel - 1)).setFocusValue(p_nPosition);
}

bool ChannelService::stepFocus(int p_nChannel, bool p_bFar, int p_nSteps) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    ISensorController& objController = m_objHost.channel(static_cast<size_t>(p_nChannel - 1));
    for (int i = 0; i < std::min(p_nSteps, MAX_FOCUS_STEPS); ++i) {
        if (!(p_bFar ? objController.focusFar() : objController.focusNear())) {
            return false;
        }
    }
    return true;
}

bool ChannelService::focusPosition(int p_nChannel, int& p_nPosition) {
    std::lock_guard<std::mutex> objLock(lockOf(p_nChannel));
    return m_objHost.channel(static_cast<size_t>(p_nChannel - 1)).getFocusValue(p_nPosition);
}

} // namespace sensord
