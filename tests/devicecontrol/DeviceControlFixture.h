// A mini dome channel for the direct device controls.
#pragma once

#include "ChannelFixture.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace sensortest {

using Calls = std::vector<std::pair<uint32_t, int>>;    // (command, option)
using Sets = std::vector<std::pair<uint32_t, int32_t>>; // (command, value)

class DeviceControlTest : public ChannelTest {
protected:
    // A dome (type 4); "(lensId=1)" fits a lens.
    ISensorController& upDome(const std::string& p_strDetail = "(max_scheme=2)(lensId=1)",
                              int p_nChannel = 1) {
        return upMini(4, p_strDetail, p_nChannel);
    }
    // Every ISP call so far, in order.
    Calls calls() const {
        Calls vecCalls;
        for (const IspSimulator::LogEntry& stEntry : m_objIsp.log()) {
            vecCalls.emplace_back(stEntry.cmd, stEntry.option);
        }
        return vecCalls;
    }
    // The SET calls on ISP channel 0 among p_vecCmds, in order.
    Sets setsAmong(const std::vector<uint32_t>& p_vecCmds) const {
        Sets vecSets;
        for (const IspSimulator::LogEntry& st : m_objIsp.log()) {
            if (std::count(p_vecCmds.begin(), p_vecCmds.end(), st.cmd) != 0 && st.option == 0 &&
                st.channel == 0) {
                vecSets.emplace_back(st.cmd, st.value);
            }
        }
        return vecSets;
    }
    void lockLens(ISensorController& c, bool p_bOn) {
        SensorZoomFocusParam objParam;
        c.getSensorZoomFocusParam(objParam);
        objParam.setLockZoomFocusEnable(p_bOn);
        c.setSensorZoomFocusParam(objParam);
    }
};

} // namespace sensortest
