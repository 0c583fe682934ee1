// Style and diversity documents through mergeStyle, with a fuzzed detail text
// deciding which diversity entries apply.
#include <cstdlib>
#include <cstring>
#include <string>

#include "FuzzSupport.h"
#include "config/sensor.h"

// Input: detail text NUL base style NUL diversity document.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    sensorfuzz::FuzzWorld::get();
    const std::vector<std::string> vecParts = sensorfuzz::splitParts(p_pData, p_nSize, 3);

    ModuleConfig stConfig{};
    std::strncpy(stConfig.szDetail, vecParts[0].c_str(), sizeof(stConfig.szDetail) - 1);

    // The style text is owned the way SysConfig owns it.
    char* szStyle = newConfigText(vecParts[1].size() + 1);
    std::memcpy(szStyle, vecParts[1].c_str(), vecParts[1].size() + 1);
    std::string strDiversity = vecParts[2];

    const int nChannel = 1 + static_cast<int>(p_nSize % 2);
    mergeStyle(nChannel, &stConfig, &szStyle, strDiversity.data());
    // Whatever the documents were, the result is a NUL-terminated text.
    if (szStyle == nullptr || std::strlen(szStyle) > (1u << 24)) {
        std::abort();
    }
    freeConfigText(szStyle);
    return 0;
}
