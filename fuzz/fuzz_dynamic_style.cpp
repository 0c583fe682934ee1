// The dynamic style and the factory set with fuzzed ISP answers: the input's
// tail drives which commands the simulator calls dynamic and with which
// counts and items, the rest of the input is the style text.
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "common/SensorKeys.h"
#include "config/SensorFile.h"
#include "config/SensorKeyVal.h"
#include "isp/IspSimulator.h"

namespace {

// Keys the style pruning treats specially, plus ordinary list controls, so
// that the fuzzer meets the interesting paths without guessing numbers.
constexpr std::array<u32, 14> kKeys = {49, 50, 51, 55,   56,   1537, 2337,
                                       34, 10, 11, 2368, 2369, 2048, 2064};
constexpr u32 kCapacity = 170;

u32 pickCommand(FuzzedDataProvider& p_objIn) {
    const std::size_t nPick = p_objIn.ConsumeIntegralInRange<std::size_t>(0, kKeys.size());
    return nPick < kKeys.size() ? kKeys[nPick] : p_objIn.ConsumeIntegral<u32>();
}

ia_dynamic_params_attr_st makeAttribute(FuzzedDataProvider& p_objIn) {
    ia_dynamic_params_attr_st stAttr{};
    stAttr.param_type = p_objIn.ConsumeBool() ? 0 : p_objIn.ConsumeIntegral<int32_t>();
    stAttr.default_val = p_objIn.ConsumeIntegralInRange<int32_t>(-2, 300);
    stAttr.min_val = p_objIn.ConsumeIntegral<int32_t>();
    stAttr.max_val = p_objIn.ConsumeIntegral<int32_t>();
    // Counts beyond the record on purpose: the module must keep inside it.
    stAttr.items_cnt = p_objIn.ConsumeIntegralInRange<int32_t>(-3, IA_DYNAMIC_ITEM_MAX + 8);
    for (int32_t& nItem : stAttr.item) {
        nItem = p_objIn.ConsumeIntegralInRange<int32_t>(-1, 260);
    }
    return stAttr;
}

void programIsp(FuzzedDataProvider& p_objIn) {
    IspSimulator& objIsp = IspSimulator::instance();
    objIsp.reset();
    objIsp.enableLog(false);
    std::vector<u32> vecCmds(
        p_objIn.ConsumeIntegralInRange<std::size_t>(0, IA_DYNAMIC_CMD_MAX + 4));
    for (u32& nCmd : vecCmds) {
        nCmd = pickCommand(p_objIn);
        if (p_objIn.ConsumeBool()) {
            objIsp.setAttribute(0, nCmd, makeAttribute(p_objIn));
        }
    }
    objIsp.setDynamicCommands(0, vecCmds);
    if (p_objIn.ConsumeIntegralInRange(0, 7) == 0) {
        objIsp.failCommand(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, -5);
    }
    if (p_objIn.ConsumeIntegralInRange(0, 7) == 0) {
        objIsp.failCommand(0, pickCommand(p_objIn), IA_CMD_OPT_GET_PARAM_RNAGE, -6);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sensorfuzz::FuzzWorld::get();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    FuzzedDataProvider objIn(p_pData, p_nSize);
    programIsp(objIn);
    const bool bShowWDR = objIn.ConsumeBool();
    const bool bShowLDC = objIn.ConsumeBool();
    setshowBeawayFalg(objIn.ConsumeBool());
    const std::string strStyle = objIn.ConsumeRemainingBytesAsString();

    std::string strDna;
    getDnaStyle(1, strStyle.c_str(), strDna, bShowWDR, bShowLDC);

    std::array<KeyVal, kCapacity> arrSet{};
    u32 nCount = 0;
    getFctData(1, strStyle.c_str(), arrSet.data(), &nCount, kCapacity, bShowWDR, bShowLDC);
    if (nCount > kCapacity) {
        std::abort();
    }
    keyval_correct(0, arrSet.data(), nCount);
    return 0;
}
