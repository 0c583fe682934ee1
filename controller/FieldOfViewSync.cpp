// Aligning the visible channel's field of view with the thermal channel's: the
// zoom position for this channel comes from a small calibration file.
#define SNS_SOURCE_UNIT "ISensorController"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/SensorDebug.h"
#include "controller/ISensorController.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"

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

// The calibration file's lines; none when it is missing. Anything else that
// is not a small regular file is reported and read as no lines.
std::vector<std::string> readCalibrationLines() {
    std::string strText;
    const ReadStatus eStatus =
        readDeviceFile(FOV_CALIBRATION_FILE, inputcap::CALIBRATION_FILE_MAX, strText);
    SNS_ASSERT_TEXT(eStatus == ReadStatus::Ok || eStatus == ReadStatus::Missing,
                    "readDeviceFile(FOV_CALIBRATION_FILE, CALIBRATION_FILE_MAX)",
                    "%s refused: %s\n", FOV_CALIBRATION_FILE,
                    describeRead(eStatus, inputcap::CALIBRATION_FILE_MAX).c_str());
    std::vector<std::string> vecLines;
    std::string::size_type nPos = 0;
    while (nPos < strText.size()) {
        const std::string::size_type nEnd = strText.find('\n', nPos);
        std::string strLine = strText.substr(nPos, nEnd - nPos);
        if (nEnd != std::string::npos && !strLine.empty() && strLine.back() == '\r') {
            strLine.pop_back();
        }
        vecLines.push_back(std::move(strLine));
        nPos = nEnd == std::string::npos ? strText.size() : nEnd + 1;
    }
    return vecLines;
}

} // namespace

int ISensorController::sync_fov() {
    sensordiag::requestMarkerCheck();
    const std::vector<std::string> vecLines = readCalibrationLines();
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
