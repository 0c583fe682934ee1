#include "tools/FlashView.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "config/SensorFile.h"
#include "controller/ISensorController.h"
#include "platform/DeviceRoot.h"

namespace {

u32 littleEndianWord(const std::string& p_strBytes, size_t p_nAt) {
    u32 nWord = 0;
    for (size_t b = 0; b < 4; ++b) {
        nWord |= static_cast<u32>(static_cast<unsigned char>(p_strBytes[p_nAt + b])) << (8 * b);
    }
    return nWord;
}

} // namespace

std::string schemeFilePath(const ISensorController& p_objController, int p_nScheme) {
    if (p_objController.isThermalChannel()) {
        return "/mnt/mtd/code/config_file/sensor-thermal" + std::to_string(p_nScheme) + ".cfg";
    }
    return "/mnt/mtd/code/config_file/sensor" + std::to_string(p_objController.getCameraID()) +
           "_" + std::to_string(p_nScheme) + ".cfg";
}

bool readSchemeFile(const std::string& p_strDevicePath, std::vector<KeyVal>& p_vecSet) {
    // Only a regular file is read: a directory in the file's place would make
    // the stream throw.
    const std::string strHostPath = DeviceRoot::resolve(p_strDevicePath);
    std::error_code ec;
    if (!std::filesystem::is_regular_file(strHostPath, ec)) {
        return false;
    }
    std::ifstream objFile(strHostPath, std::ios::binary);
    if (!objFile) {
        return false;
    }
    const std::string strBytes((std::istreambuf_iterator<char>(objFile)),
                               std::istreambuf_iterator<char>());
    std::vector<KeyVal> vecSet(strBytes.size() / KEYVAL_FILE_RECORD);
    for (size_t i = 0; i < vecSet.size(); ++i) {
        vecSet[i].key = littleEndianWord(strBytes, KEYVAL_FILE_RECORD * i);
        vecSet[i].value = littleEndianWord(strBytes, KEYVAL_FILE_RECORD * i + 4);
    }
    p_vecSet = std::move(vecSet);
    return !p_vecSet.empty();
}
