// Common set-up for the configuration tests: a fresh device root, the ISP
// simulator on its built-in profile, and access to the error log.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"
#include "isp/IspSimulator.h"
#include "support/TestSupport.h"

namespace configtest {

constexpr const char* ERROR_LOG = "/mnt/mtd/log/SensorError.log";

class ConfigTest : public ::testing::Test {
protected:
    void SetUp() override { resetGlobals(); }
    void TearDown() override { resetGlobals(); }

    static IspSimulator& isp() { return IspSimulator::instance(); }

    // Everything the error log (with its rotated files) received since the
    // previous call; the log starts empty again afterwards.
    std::string takeErrorLog() {
        std::string strText;
        for (const char* szSuffix : {".3", ".2", ".1", ""}) {
            const std::string strPath = std::string(ERROR_LOG) + szSuffix;
            if (m_objRoot.exists(strPath)) {
                strText += m_objRoot.readFile(strPath);
                std::remove(m_objRoot.hostPath(strPath).c_str());
            }
        }
        return strText;
    }

    // A dynamic command with a list of allowed items on ISP channel 0.
    static ia_dynamic_params_attr_st listAttr(int p_nDefault, const std::vector<int>& p_vecItems) {
        ia_dynamic_params_attr_st stAttr{};
        stAttr.param_type = 0;
        stAttr.default_val = p_nDefault;
        stAttr.items_cnt = static_cast<int>(p_vecItems.size());
        for (std::size_t i = 0; i < p_vecItems.size() && i < IA_DYNAMIC_ITEM_MAX; ++i) {
            stAttr.item[i] = p_vecItems[i];
        }
        if (!p_vecItems.empty()) {
            stAttr.min_val = p_vecItems.front();
            stAttr.max_val = p_vecItems.back();
        }
        return stAttr;
    }

    sensortest::TempDeviceRoot m_objRoot;

private:
    static void resetGlobals() {
        isp().loadDefaultProfile();
        setshowBeawayFalg(true);
    }
};

} // namespace configtest
