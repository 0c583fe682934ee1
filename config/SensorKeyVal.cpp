// The key/value text form and the ISP's correction of parameter lists.
#define SNS_SOURCE_UNIT "SensorKeyVal"

#include "config/SensorKeyVal.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "common/SensorDebug.h"
#include "common/ia_ioctrl.h"
#include "config/SensorFile.h"

namespace {

// Reads one "(%d,%d)" group as scanf would: blanks allowed before each number,
// the "(" and "," exactly. Numbers wrap to 32 bits as the "%d" text form
// prints them (a value above 2^31 appears negative).
bool readGroup(const std::string& p_strGroup, KeyVal& p_stOut) {
    const char* pPos = p_strGroup.c_str();
    if (*pPos != '(') {
        return false;
    }
    char* pEnd = nullptr;
    const long long nKey = std::strtoll(pPos + 1, &pEnd, 10);
    if (pEnd == pPos + 1 || *pEnd != ',') {
        return false;
    }
    pPos = pEnd + 1;
    const long long nValue = std::strtoll(pPos, &pEnd, 10);
    if (pEnd == pPos) {
        return false;
    }
    p_stOut.key = static_cast<u32>(nKey);
    p_stOut.value = static_cast<u32>(nValue);
    return true;
}

// Index of the first entry with the key, or p_nKeyValNum when there is none.
u32 findFirst(const KeyVal* p_pKeyval, u32 p_nKeyValNum, u32 p_nKey) {
    for (u32 i = 0; i < p_nKeyValNum; ++i) {
        if (p_pKeyval[i].key == p_nKey) {
            return i;
        }
    }
    return p_nKeyValNum;
}

} // namespace

void keyval_st2str(std::string& p_strOut, const KeyVal* p_pKeyval, u32 p_nKeyValNum) {
    if (p_pKeyval == nullptr) {
        return;
    }
    // Room for two full signed 32-bit numbers, so no group is ever cut.
    std::array<char, 32> szGroup{};
    for (u32 i = 0; i < p_nKeyValNum; ++i) {
        std::snprintf(szGroup.data(), szGroup.size(), "(%d,%d)", static_cast<int>(p_pKeyval[i].key),
                      static_cast<int>(p_pKeyval[i].value));
        p_strOut += szGroup.data();
    }
}

int keyval_str2st(const std::string& p_strIn, KeyVal* p_pKeyval, u32* p_pnKeyValNum,
                  u32 p_nCapacity) {
    if (p_pnKeyValNum == nullptr) {
        return SNS_FAILED;
    }
    *p_pnKeyValNum = 0;
    if (p_pKeyval == nullptr && p_nCapacity > 0) {
        return SNS_FAILED;
    }
    std::size_t nPos = 0;
    while (nPos < p_strIn.size()) {
        const std::size_t nOpen = p_strIn.find('(', nPos);
        if (nOpen == std::string::npos || nOpen + 1 == p_strIn.size()) {
            break;
        }
        // The group ends at the first ")" after its "(": a stray ")" before
        // it is text outside the groups.
        const std::size_t nClose = p_strIn.find(')', nOpen);
        if (nClose == std::string::npos) {
            break;
        }
        KeyVal stEntry{};
        if (readGroup(p_strIn.substr(nOpen, nClose - nOpen + 1), stEntry)) {
            if (*p_pnKeyValNum == p_nCapacity) {
                return SNS_FAILED;
            }
            p_pKeyval[(*p_pnKeyValNum)++] = stEntry;
        }
        nPos = nClose + 1;
    }
    return SNS_SUCCESS;
}

int keyval_correct(int p_nChannel_id, KeyVal* p_pKeyval, u32 p_nKeyValNum) {
    if (p_pKeyval == nullptr) {
        // NULL would be expanded before SNS_ASSERT prints it; the text is fixed here.
        SNS_ASSERT_TEXT(false, "NULL != p_pKeyval", "");
        return SNS_FAILED;
    }
    ia_dynamic_cmd_list_st dnaCmdList{};
    const int nRet =
        ia_ioctrl_v2(p_nChannel_id, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &dnaCmdList);
    SNS_ASSERT_TEXT(SNS_SUCCESS == nRet,
                    "SNS_SUCCESS == ia_ioctrl_v2(p_nChannel_id, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, "
                    "IA_CMD_OPT_GET, (void*)(&dnaCmdList))",
                    "");
    clampDynamicCmdList(dnaCmdList);

    for (int i = 0; i < dnaCmdList.cmd_cnt; ++i) {
        const u32 nCmd = dnaCmdList.cmd_list[i];
        const u32 index = findFirst(p_pKeyval, p_nKeyValNum, nCmd);
        if (index == p_nKeyValNum) {
            // Logged at every level from 0 up, but never an abort: a set
            // without a dynamic command is a finding, not a fault.
            sensordiag::printTagged(-1, sensordiag::COLOUR_RED, "[sensor assert]", true,
                                    SNS_ORIGIN_, "cmd_list[%d]=%d\n", i, static_cast<int>(nCmd));
            continue;
        }
        KeyVal& stEntry = p_pKeyval[index];
        SNS_DBG("before correct: (%d,%d)\n", static_cast<int>(stEntry.key),
                static_cast<int>(stEntry.value));
        const int nCorrected = ia_ioctrl_v2(p_nChannel_id, static_cast<ia_cmd_e>(stEntry.key),
                                            IA_CMD_OPT_CORRECT_PARAM, &stEntry.value);
        SNS_ASSERT_TEXT(SNS_SUCCESS == nCorrected,
                        "SNS_SUCCESS == ia_ioctrl_v2(p_nChannel_id, "
                        "(ia_cmd_e)p_pKeyval[index].key, IA_CMD_OPT_CORRECT_PARAM, "
                        "&p_pKeyval[index].value)",
                        "");
        SNS_DBG("after correct: (%d,%d)\n", static_cast<int>(stEntry.key),
                static_cast<int>(stEntry.value));
    }
    return SNS_SUCCESS;
}
