// Aligning the visible channel's field of view with the thermal channel's: the
// zoom position for this channel comes from a small calibration file.
#define SNS_SOURCE_UNIT "ISensorController"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/SensorDebug.h"
#include "controller/ISensorController.h"
#include "platform/VXFile.h"

namespace {

constexpr const char* FOV_CALIBRATION_FILE = "/mnt/mtd/hd1/program/config/sync_fov.ini";

// The value after "needle...=" when a comma follows somewhere after the "=".
void readEntry(const std::string& p_strLine, const std::string& p_strNeedle, int& p_nValue) {
    const size_t nAt = p_strLine.find(p_strNeedle);
    if (nAt == std::string::npos) {
        return;
    }
    const size_t nEqual = p_strLine.find('=', nAt);
    if (nEqual == std::string::npos || p_strLine.find(',', nEqual) == std::string::npos) {
        return;
    }
    p_nValue = std::atoi(p_strLine.c_str() + nEqual + 1);
}

} // namespace

int ISensorController::sync_fov() {
    sensordiag::requestMarkerCheck();
    VXFile objFile;
    std::vector<std::string> vecLines;
    if (objFile.open(FOV_CALIBRATION_FILE, VXFile::modeRead)) {
        vecLines = objFile.ReadLines();
        objFile.close();
    }
    const std::string strZoom = "zoom" + std::to_string(m_nCameraID);
    const std::string strFocus = "focus" + std::to_string(m_nCameraID);
    int nZoom = -1;
    int nFocus = -1;
    for (const std::string& strLine : vecLines) {
        readEntry(strLine, strZoom, nZoom);
        readEntry(strLine, strFocus, nFocus);
        std::printf("zoom= %d,focus= %d \n", nZoom, nFocus);
        if (nZoom > 0 && nFocus > 0) {
            break;
        }
    }
    if (nZoom > 0) {
        setZoomValue(nZoom);
    }
    return 1;
}
