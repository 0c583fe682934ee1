// Parameter-file and version-stamp bytes as the module reads them from flash.
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

#include "FuzzSupport.h"
#include "config/SensorFile.h"

namespace {

constexpr const char* kFile = "/mnt/mtd/code/config_file/sensor1_0.cfg";
constexpr u32 kCapacity = 170;
constexpr u32 kFill = 0xA5A5A5A5u;

} // namespace

// Input: one byte for the record count the reader expects, then the file.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    if (p_nSize == 0) {
        return 0;
    }
    sensorfuzz::FuzzWorld& objWorld = sensorfuzz::FuzzWorld::get();
    const u32 nWanted = p_pData[0] % (kCapacity + 1);
    const std::string strBytes(reinterpret_cast<const char*>(p_pData + 1), p_nSize - 1);
    objWorld.root().writeFile(kFile, strBytes);
    objWorld.root().writeFile(SENSOR_VERSION_FILE, strBytes);

    // The records the file holds are read; the entries it lacks keep what
    // they held.
    std::array<KeyVal, kCapacity> arrSet;
    arrSet.fill(KeyVal{kFill, kFill});
    keyValFromFile(kFile, arrSet.data(), nWanted);
    const std::size_t nRead = std::min<std::size_t>(strBytes.size() / 8, nWanted);
    for (std::size_t i = 0; i < kCapacity; ++i) {
        KeyVal stExpected{kFill, kFill};
        if (i < nRead) {
            std::memcpy(&stExpected, strBytes.data() + 8 * i, 8); // little-endian host
        }
        if (arrSet[i].key != stExpected.key || arrSet[i].value != stExpected.value) {
            std::abort();
        }
    }

    u32 nVersion = 0;
    getVersion(&nVersion);
    std::array<char, 64> arrBuf{};
    loadFromFile(kFile, arrBuf.data(), std::min<INT64>(getFileLen(kFile), arrBuf.size()));
    return 0;
}
