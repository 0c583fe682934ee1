#include "tools/FlashView.h"

#include "config/SensorFile.h"
#include "controller/ISensorController.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"

std::string schemeFilePath(const ISensorController& p_objController, int p_nScheme) {
    if (p_objController.isThermalChannel()) {
        return "/mnt/mtd/code/config_file/sensor-thermal" + std::to_string(p_nScheme) + ".cfg";
    }
    return "/mnt/mtd/code/config_file/sensor" + std::to_string(p_objController.getCameraID()) +
           "_" + std::to_string(p_nScheme) + ".cfg";
}

bool readSchemeFile(const std::string& p_strDevicePath, std::vector<KeyVal>& p_vecSet,
                    std::string* p_pWhy) {
    std::string strBytes;
    const ReadStatus eStatus = readDeviceFile(p_strDevicePath, inputcap::SCHEME_FILE_MAX, strBytes);
    if (eStatus != ReadStatus::Ok || strBytes.size() < KEYVAL_FILE_RECORD) {
        if (p_pWhy != nullptr) {
            *p_pWhy = eStatus != ReadStatus::Ok ? describeRead(eStatus, inputcap::SCHEME_FILE_MAX)
                                                : std::string("holds no whole record");
        }
        return false;
    }
    std::vector<KeyVal> vecSet(strBytes.size() / KEYVAL_FILE_RECORD);
    for (size_t i = 0; i < vecSet.size(); ++i) {
        vecSet[i] = keyValFromRecord(strBytes.data() + KEYVAL_FILE_RECORD * i);
    }
    p_vecSet = std::move(vecSet);
    return true;
}
