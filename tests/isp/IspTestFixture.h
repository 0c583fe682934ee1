// Common set-up for the simulator tests: the process-wide simulator, back on
// the built-in profile before every test.
#pragma once

#include "common/ia_ioctrl.h"
#include "isp/IspSimulator.h"

#include <gtest/gtest.h>

#include <cstdint>

class IspTest : public ::testing::Test {
protected:
    void SetUp() override { sim().loadDefaultProfile(); }

    static IspSimulator& sim() { return IspSimulator::instance(); }

    static int call(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData) {
        return ia_ioctrl_v2(p_nChannel, static_cast<ia_cmd_e>(p_nCmd), p_nOption, p_pData);
    }
    static int32_t get(int p_nChannel, uint32_t p_nCmd) {
        int32_t nValue = -12345;
        EXPECT_EQ(call(p_nChannel, p_nCmd, IA_CMD_OPT_GET, &nValue), 0);
        return nValue;
    }
    static int set(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue) {
        return call(p_nChannel, p_nCmd, IA_CMD_OPT_SET, &p_nValue);
    }
    static int32_t correct(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue, int p_nExpect = 0) {
        EXPECT_EQ(call(p_nChannel, p_nCmd, IA_CMD_OPT_CORRECT_PARAM, &p_nValue), p_nExpect);
        return p_nValue;
    }
};
