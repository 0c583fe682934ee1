// A mini channel brought up for the direct device controls: the sensor thread
// is stopped so that the ISP log holds only what the test's own calls sent.
#pragma once

#include "ChannelFixture.h"
#include "support/ControllerTestAccess.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace sensortest {

class DeviceControlTest : public ChannelTest {
protected:
    // A dome (type 4) with the given module detail; "(lensId=1)" fits a lens.
    ISensorController& upMini(const std::string& p_strDetail = "(max_scheme=2)(lensId=1)",
                              int p_nChannel = 1) {
        useMiniDevice(4, p_strDetail);
        ISensorController& c = bringUp(p_nChannel);
        ISensorControllerTestAccess::stopThread(c);
        m_objIsp.clearLog();
        return c;
    }

    // Every ISP call of the test so far as (command, option), in order.
    std::vector<std::pair<uint32_t, int>> calls() const {
        std::vector<std::pair<uint32_t, int>> vecCalls;
        for (const IspSimulator::LogEntry& stEntry : m_objIsp.log()) {
            vecCalls.emplace_back(stEntry.cmd, stEntry.option);
        }
        return vecCalls;
    }

    // The SET calls among p_vecCmds, in order, as (command, value).
    std::vector<std::pair<uint32_t, int32_t>> setsAmong(const std::vector<uint32_t>& p_vecCmds,
                                                        int p_nChannel = 0) const {
        std::vector<std::pair<uint32_t, int32_t>> vecSets;
        for (const IspSimulator::LogEntry& stEntry : m_objIsp.log()) {
            const bool bWanted =
                std::find(p_vecCmds.begin(), p_vecCmds.end(), stEntry.cmd) != p_vecCmds.end();
            if (bWanted && stEntry.option == 0 && stEntry.channel == p_nChannel) {
                vecSets.emplace_back(stEntry.cmd, stEntry.value);
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
