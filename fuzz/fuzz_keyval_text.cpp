// The key/value text form: the parser on its own (with a round-trip check),
// then the whole text through setParameters(text) of a running channel.
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "config/SensorKeyVal.h"

namespace {

// Reading the printed form of what was read must give the same records.
void checkRoundTrip(const std::string& p_strText) {
    constexpr u32 kCapacity = 200;
    std::vector<KeyVal> vecFirst(kCapacity);
    u32 nFirst = 0;
    keyval_str2st(p_strText, vecFirst.data(), &nFirst, kCapacity);
    if (nFirst > kCapacity) {
        std::abort();
    }
    std::string strPrinted;
    keyval_st2str(strPrinted, vecFirst.data(), nFirst);
    std::vector<KeyVal> vecSecond(kCapacity);
    u32 nSecond = 0;
    keyval_str2st(strPrinted, vecSecond.data(), &nSecond, kCapacity);
    if (nSecond != nFirst) {
        std::abort();
    }
    for (u32 i = 0; i < nFirst; ++i) {
        if (vecFirst[i].key != vecSecond[i].key || vecFirst[i].value != vecSecond[i].value) {
            std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sensorfuzz::FuzzWorld::get().useSampleDevice("ipc");
    sensorfuzz::FuzzWorld::get().channel();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    if (p_nSize == 0) {
        return 0;
    }
    // The first byte picks the cache mode; the rest is the host's text.
    const bool bCache = (p_pData[0] & 1) != 0;
    const std::string strText(reinterpret_cast<const char*>(p_pData + 1), p_nSize - 1);
    checkRoundTrip(strText);

    ISensorController& objChannel = sensorfuzz::FuzzWorld::get().channel();
    objChannel.setParameters(strText, bCache);
    // A pass of the sensor thread consumes whatever the text posted to the
    // mailbox and runs the scheme policy the text may have chosen.
    objChannel.sensorThread();
    return 0;
}
