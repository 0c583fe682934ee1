// Id-list requests: getParameters, the ISP pass-through SensorCheck and the
// range query, on a running channel.
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sensorfuzz::FuzzWorld::get().useSampleDevice("ipc");
    sensorfuzz::FuzzWorld::get().channel();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    const std::string strText(reinterpret_cast<const char*>(p_pData), p_nSize);
    ISensorController& objChannel = sensorfuzz::FuzzWorld::get().channel();

    std::vector<std::string> vecIds;
    const bool bWellFormed = objChannel.parseSensorParameter(strText, vecIds);

    std::string strOut = "untouched";
    const int nResult = objChannel.getParameters(strText, strOut);
    // A malformed request is refused and leaves the reply alone.
    if (nResult != (bWellFormed ? 1 : 0) || (!bWellFormed && strOut != "untouched")) {
        std::abort();
    }

    std::string strCheck = strText;
    objChannel.SensorCheck(strCheck);

    for (const std::string& strId : vecIds) {
        int nDefault = 0;
        std::string strRange;
        objChannel.getSensorParamRange(std::atoi(strId.c_str()), nDefault, strRange);
    }
    return 0;
}
