// A controller with scheme sets in memory and its key-command table, on a
// temporary device root, driving the ISP simulator and a recording video
// module.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "support/ControllerTestAccess.h"
#include "support/RecordingVideoModule.h"
#include "support/TestSupport.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;
using Notice = RecordingVideoModule::Notice;

// One ISP call as the tests compare it: a 32-bit value as one word, a record
// as its 32-bit words.
struct IspCall {
    int channel;
    uint32_t cmd;
    int option;
    std::vector<int32_t> words;
    bool operator==(const IspCall& p_stOther) const {
        return channel == p_stOther.channel && cmd == p_stOther.cmd && option == p_stOther.option &&
               words == p_stOther.words;
    }
};
void PrintTo(const IspCall& p_stCall, std::ostream* p_pOut);
void PrintTo(const Notice& p_stNotice, std::ostream* p_pOut);

// A SET of one value on ISP channel 0 (camera 1).
IspCall setCall(uint32_t p_nCmd, std::vector<int32_t> p_vecWords, int p_nChannel = 0);

// A set whose first five records are the scheme keys (mode p_nSchemeMode,
// window 00:00 to 24:00), followed by p_listRest.
std::vector<KeyVal> makeSet(std::initializer_list<KeyVal> p_listRest, u32 p_nSchemeMode = 0);

// Colour prefix and suffix of the diagnostics.
std::string coloured(int p_nColour, const std::string& p_strText);

class ControllerTest : public ::testing::Test {
protected:
    ControllerTest();
    ~ControllerTest() override;

    // Rebuilds the controller on a device of the given type (machine description).
    void useDeviceType(int p_nType);
    // Installs the user sets and the factory set (last), makes p_nCurScheme
    // current and builds the key-command table.
    void install(const std::vector<std::vector<KeyVal>>& p_vecSets, int p_nCurScheme = 0);
    void setDebugLevel(int p_nLevel);
    // ISP calls and video notices since the last clear.
    std::vector<IspCall> ispCalls() const;
    void clearRecords();
    u32 stored(u32 p_nScheme, u32 p_nKey) const;
    bool holds(u32 p_nScheme, u32 p_nKey) const;

    ISensorController& ctl() { return *m_pController; }

    TempDeviceRoot m_objRoot;
    IspSimulator& m_objIsp;
    RecordingVideoModule m_objVideo;
    std::unique_ptr<ISensorController> m_pController;
};

} // namespace sensortest
