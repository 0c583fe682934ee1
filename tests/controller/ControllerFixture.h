// A controller with scheme sets in memory and its key-command table, on a
// temporary device root, driving the ISP simulator and a recording video module.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "support/ControllerTestAccess.h"
#include "support/RecordingVideoModule.h"
#include "support/TestSupport.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

// "34=40 1:2337=9" in order; a "1:" prefix names the scheme (default 0), which
// goes to p_pSchemes when given.
inline std::vector<KeyVal> keyVals(const std::string& p_strText,
                                   std::vector<u32>* p_pSchemes = nullptr) {
    std::vector<KeyVal> vecKeyVals;
    std::istringstream objIn(p_strText);
    for (std::string strToken; objIn >> strToken;) {
        const std::size_t nColon = strToken.find(':'), nEq = strToken.find('=');
        EXPECT_NE(nEq, std::string::npos) << "not a record: " << strToken;
        const auto number = [&](std::size_t p_nAt) {
            return static_cast<u32>(std::stoul(strToken.substr(p_nAt)));
        };
        // Without a scheme the key starts the token (npos + 1 is 0).
        vecKeyVals.push_back({number(nColon + 1), number(nEq + 1)});
        if (p_pSchemes != nullptr) {
            p_pSchemes->push_back(nColon == std::string::npos ? 0 : number(0));
        }
    }
    return vecKeyVals;
}

// A set whose first five records are the scheme keys (mode 0, window 00:00 to
// 24:00), followed by p_strRest.
inline std::vector<KeyVal> makeSet(const std::string& p_strRest) {
    return keyVals("8000=0 8001=0 8002=0 8003=24 8004=0 " + p_strRest);
}

inline bool contains(const std::string& p_strText, const std::string& p_strPart) {
    return p_strText.find(p_strPart) != std::string::npos;
}

class ControllerTest : public ::testing::Test {
protected:
    ControllerTest()
        : m_objIsp(IspSimulator::instance()), m_objVideo([this] { return m_objIsp.log().size(); }) {
        m_objIsp.loadDefaultProfile();
        reset();
    }
    ~ControllerTest() override {
        m_pController.reset();
        setshowBeawayFalg(true);
    }

    // A new controller on a device of type p_nType with a clean ISP and video module.
    void reset(int p_nType = 1) {
        m_objIsp.reset();
        m_objVideo.clear();
        setshowBeawayFalg(true);
        ISensorController::m_nChanneldDosomething = -1;
        ISensorController::m_nPassKeycmd = -1;
        m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini",
                            "[device]\ntype = " + std::to_string(p_nType) +
                                "\nhardware_model = Hi3516AV200\nhardware_code = TEST\n");
        m_pController = std::make_unique<ISensorController>();
        m_pController->setChannelID(1);
        m_pController->setVideoStreamModule(&m_objVideo);
    }
    // Installs the user sets and the factory set (last), makes p_nCurScheme
    // current and builds the key-command table.
    void install(const std::vector<std::vector<KeyVal>>& p_vecSets, int p_nCurScheme = 0) {
        ASSERT_TRUE(Access::installSets(ctl(), p_vecSets, p_nCurScheme));
        Access::buildKeyCmdMap(ctl());
        clearRecords();
    }
    // p_nUser user schemes and the factory set, all equal to p_vecSet.
    void installAlike(const std::vector<KeyVal>& p_vecSet, int p_nCurScheme = 0, int p_nUser = 2) {
        install(std::vector<std::vector<KeyVal>>(p_nUser + 1, p_vecSet), p_nCurScheme);
    }
    // One handler call that sets p_nValue.
    int call(keycmd_handler p_pHandler, u32 p_nKey, u32 p_nValue) {
        return (ctl().*p_pHandler)(p_nKey, 0, &p_nValue);
    }
    int apply(std::vector<KeyVal> p_vecList, bool p_bCache = true) {
        return ctl().setParameters(p_vecList.data(), static_cast<u32>(p_vecList.size()), p_bCache);
    }
    // One scenario of the set loop on a fresh controller whose schemes hold p_szSet:
    // p_fnPrepare adjusts it, each list of p_strLists is applied ("34=40 => -34; 34=41",
    // "=> r" for a result other than 0); the run prints every text of p_vecShown (no
    // failed assertion when there is none), sends p_szSent and stores p_szStored.
    void run(const char* p_szWhat, const char* p_szSet, const std::string& p_strLists,
             const char* p_szSent, const char* p_szStored = "",
             const std::vector<const char*>& p_vecShown = {},
             const std::function<void()>& p_fnPrepare = nullptr) {
        SCOPED_TRACE(p_szWhat);
        reset();
        installAlike(makeSet(p_szSet));
        if (p_fnPrepare) {
            p_fnPrepare();
        }
        CaptureStdout();
        std::istringstream objLists(p_strLists);
        for (std::string strList; std::getline(objLists, strList, ';');) {
            const std::size_t nArrow = strList.find("=>");
            const int nWant =
                nArrow == std::string::npos ? 0 : std::stoi(strList.substr(nArrow + 2));
            EXPECT_EQ(apply(keyVals(strList.substr(0, nArrow))), nWant) << strList;
        }
        const std::string strOut = GetCapturedStdout();
        for (const char* szText : p_vecShown) {
            EXPECT_TRUE(contains(strOut, szText)) << szText;
        }
        EXPECT_TRUE(!p_vecShown.empty() || !contains(strOut, "Assertion failed")) << strOut;
        EXPECT_EQ(sent(), p_szSent);
        expectStored(p_szStored);
    }
    // The sets hold p_szStored ("34=40 1:34=41": scheme 0 unless named).
    void expectStored(const char* p_szStored) const {
        std::vector<u32> vecSchemes;
        const std::vector<KeyVal> vecWanted = keyVals(p_szStored, &vecSchemes);
        for (std::size_t i = 0; i < vecWanted.size(); ++i) {
            EXPECT_EQ(stored(vecSchemes[i], vecWanted[i].key), vecWanted[i].value)
                << vecSchemes[i] << ':' << vecWanted[i].key;
        }
    }
    void setDebugLevel(int p_nLevel) {
        m_objRoot.writeFile("/tmp/Debug.sign", std::to_string(p_nLevel) + "\n0\n");
    }
    // What reached the ISP and the video module since the last clear, in order:
    // "34=40" an ISP set on ISP channel 0, "ch1:34=40" on channel 1, "get 167=80" a
    // read with its result, "146=70,30,0" a record as its 32-bit words, "v1:2384=2"
    // a video notice for channel 1.
    std::string sent() const {
        const std::vector<IspSimulator::LogEntry> vecCalls = m_objIsp.log();
        const std::vector<RecordingVideoModule::Notice> vecNotices = m_objVideo.notices();
        std::ostringstream objOut;
        auto itNotice = vecNotices.begin();
        for (std::size_t i = 0; i <= vecCalls.size(); ++i) {
            for (; itNotice != vecNotices.end() && itNotice->ispCallsBefore <= i; ++itNotice) {
                objOut << " v" << itNotice->channel << ':' << itNotice->key << '='
                       << itNotice->value;
            }
            if (i == vecCalls.size()) {
                break;
            }
            const IspSimulator::LogEntry& stCall = vecCalls[i];
            // The ISP library's option numbers: 0 sets, 1 reads.
            objOut << (stCall.channel != 0 ? " ch" + std::to_string(stCall.channel) + ":" : " ")
                   << (stCall.option == 0   ? ""
                       : stCall.option == 1 ? "get "
                                            : "opt" + std::to_string(stCall.option) + " ")
                   << stCall.cmd << '=';
            if (stCall.bytes.empty()) {
                objOut << stCall.value;
            }
            for (std::size_t b = 0; b + sizeof(int32_t) <= stCall.bytes.size(); b += 4) {
                int32_t nWord = 0;
                std::memcpy(&nWord, stCall.bytes.data() + b, sizeof(nWord));
                objOut << (b == 0 ? "" : ",") << nWord;
            }
        }
        return objOut.str().empty() ? std::string() : objOut.str().substr(1);
    }
    void clearRecords() {
        m_objIsp.clearLog();
        m_objVideo.clear();
    }
    u32 stored(u32 p_nScheme, u32 p_nKey) const {
        u32 nValue = 0xDEADBEEF;
        m_pController->getKeyValFromCache(p_nScheme, p_nKey, nValue);
        return nValue;
    }
    ISensorController& ctl() { return *m_pController; }

    TempDeviceRoot m_objRoot;
    IspSimulator& m_objIsp;
    RecordingVideoModule m_objVideo;
    std::unique_ptr<ISensorController> m_pController;
};

} // namespace sensortest
