// Common set-up for the configuration tests: a fresh device root, the ISP
// simulator on its built-in profile without dynamic commands, the error log.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"
#include "config/SensorKeyVal.h"
#include "isp/IspSimulator.h"
#include "support/TestSupport.h"

namespace configtest {

// A set as "(key,value)" groups, values signed.
inline std::string text(const KeyVal* p_pSet, u32 p_nCount) {
    std::string strOut;
    keyval_st2str(strOut, p_pSet, p_nCount);
    return strOut;
}

inline bool contains(const std::string& p_strText, const std::string& p_strPart) {
    return p_strText.find(p_strPart) != std::string::npos;
}

class ConfigTest : public ::testing::Test {
protected:
    ConfigTest() { reset(); }
    ~ConfigTest() override { reset(); }

    static IspSimulator& isp() { return IspSimulator::instance(); }

    // The error log and its older generations, emptied by the call.
    std::string takeLog() {
        std::string strText;
        for (const std::string strSuffix : {".3", ".2", ".1", ""}) {
            const std::string strPath = "/mnt/mtd/log/SensorError.log" + strSuffix;
            if (m_objRoot.exists(strPath)) {
                strText += m_objRoot.readFile(strPath);
                std::remove(m_objRoot.hostPath(strPath).c_str());
            }
        }
        return strText;
    }
    // True when the error log received p_strText since it was last taken.
    bool logged(const std::string& p_strText) { return contains(takeLog(), p_strText); }
    void expectLogged(std::initializer_list<const char*> p_lstTexts) {
        const std::string strLog = takeLog();
        for (const char* szText : p_lstTexts) {
            EXPECT_TRUE(contains(strLog, szText)) << szText << " not in:\n" << strLog;
        }
    }

    // ISP channel 0 lists p_nCmd as dynamic with these allowed items.
    void dynamic(uint32_t p_nCmd, int p_nDefault, const std::vector<int>& p_vecItems) {
        ia_dynamic_params_attr_st stAttr{};
        stAttr.default_val = p_nDefault;
        stAttr.items_cnt = static_cast<int>(p_vecItems.size());
        std::copy_n(p_vecItems.begin(),
                    std::min<std::size_t>(p_vecItems.size(), IA_DYNAMIC_ITEM_MAX), stAttr.item);
        m_vecDynamic.push_back(p_nCmd);
        isp().setDynamicCommands(0, m_vecDynamic);
        isp().setAttribute(0, p_nCmd, stAttr);
    }

    sensortest::TempDeviceRoot m_objRoot;
    std::vector<uint32_t> m_vecDynamic;

private:
    static void reset() {
        isp().loadDefaultProfile();
        isp().setDynamicCommands(-1, {});
        setshowBeawayFalg(true);
    }
};

} // namespace configtest
