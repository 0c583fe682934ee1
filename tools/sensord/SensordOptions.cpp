#include "tools/sensord/SensordOptions.h"

#include <cstdio>

#include "platform/FileReader.h"
#include "tools/ValueParsing.h"

namespace {

constexpr size_t MAX_PASSWORD_BYTES = 256;
// Enough for the longest first line allowed and its line end, and to tell a
// longer one.
constexpr size_t PASSWORD_FILE_READ_BYTES = MAX_PASSWORD_BYTES + 3;

bool parseListen(const std::string& p_strValue, SensordOptions& p_stOptions) {
    const size_t nColon = p_strValue.rfind(':');
    int nPort = 0;
    if (nColon == std::string::npos || nColon == 0 ||
        !parseInt(p_strValue.substr(nColon + 1), nPort) || nPort < 0 || nPort > 65535) {
        return false;
    }
    p_stOptions.strHost = p_strValue.substr(0, nColon);
    p_stOptions.nPort = nPort;
    return true;
}

} // namespace

bool parseSensordOptions(int argc, char** argv, SensordOptions& p_stOptions,
                         std::string& p_strError) {
    const bool bWalked = walkOptions(
        argc, argv, p_stOptions, {{"--listen", true}, {"--user", true}, {"--password-file", true}},
        [&p_stOptions](const std::string& p_strName, const std::string& p_strValue,
                       std::string& p_strWhy) {
            if (p_strName == "--listen" && !parseListen(p_strValue, p_stOptions)) {
                p_strWhy = "--listen needs HOST:PORT, not '" + p_strValue + "'";
                return false;
            }
            if (p_strName == "--user") {
                p_stOptions.strUser = p_strValue;
            } else if (p_strName == "--password-file") {
                p_stOptions.strPasswordFile = p_strValue;
            }
            return true;
        },
        p_strError);
    if (!bWalked) {
        return false;
    }
    if (p_stOptions.strUser.empty() != p_stOptions.strPasswordFile.empty()) {
        p_strError = "--user and --password-file go together";
        return false;
    }
    return true;
}

// Read through the bounded reader: a FIFO or device given as the file is
// refused instead of blocking start-up, and a huge file costs one short read.
bool readPasswordFile(const std::string& p_strFile, std::string& p_strPassword,
                      std::string& p_strError) {
    std::string strText;
    const ReadStatus eStatus =
        readHostFile(p_strFile, PASSWORD_FILE_READ_BYTES, strText, Oversize::TakePrefix);
    if (eStatus != ReadStatus::Ok) {
        p_strError = "cannot read a password from " + p_strFile + ": " +
                     describeRead(eStatus, PASSWORD_FILE_READ_BYTES);
        return false;
    }
    std::string strLine = strText.substr(0, strText.find('\n'));
    if (!strLine.empty() && strLine.back() == '\r') {
        strLine.pop_back();
    }
    if (strLine.empty() || strLine.size() > MAX_PASSWORD_BYTES) {
        p_strError = "the password in " + p_strFile + " must be 1 to 256 bytes on its first line";
        return false;
    }
    p_strPassword = strLine;
    return true;
}

void printSensordUsage() {
    std::printf(
        "usage: sensord [--device ipc|dome|thermal|lpr|PATH] [--root DIR] [--fresh]\n"
        "               [--listen HOST:PORT] [--user NAME --password-file FILE]\n"
        "\n"
        "Brings up the channels of a device on the ISP simulator, as sensorctl does, and\n"
        "serves them on one HTTP port: ONVIF at /onvif/device_service, /onvif/media_service\n"
        "and /onvif/imaging_service, the tuning page at /, its JSON API at /api/v1/.\n"
        "Without --user, a random password is made and printed, and only 127.0.0.1 is\n"
        "served. --listen defaults to 127.0.0.1:8080; port 0 takes a free port. Stops on\n"
        "SIGTERM or SIGINT. Exit status: 0, 2 when the command line or the device is wrong.\n");
}
