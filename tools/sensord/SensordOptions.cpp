#include "tools/sensord/SensordOptions.h"

#include <cstdio>
#include <fstream>

#include "tools/ValueParsing.h"

namespace {

constexpr size_t MAX_PASSWORD_BYTES = 256;

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
    for (int i = 1; i < argc; ++i) {
        const std::string strArg = argv[i];
        const bool bTakesValue = strArg == "--device" || strArg == "--root" ||
                                 strArg == "--listen" || strArg == "--user" ||
                                 strArg == "--password-file";
        if (bTakesValue && i + 1 >= argc) {
            p_strError = "option " + strArg + " needs a value";
            return false;
        }
        const std::string strValue = bTakesValue ? argv[++i] : "";
        if (strArg == "--device") {
            p_stOptions.strDevice = strValue;
        } else if (strArg == "--root") {
            p_stOptions.strRoot = strValue;
        } else if (strArg == "--listen") {
            if (!parseListen(strValue, p_stOptions)) {
                p_strError = "--listen needs HOST:PORT, not '" + strValue + "'";
                return false;
            }
        } else if (strArg == "--user") {
            p_stOptions.strUser = strValue;
        } else if (strArg == "--password-file") {
            p_stOptions.strPasswordFile = strValue;
        } else if (strArg == "--fresh") {
            p_stOptions.bFresh = true;
        } else if (strArg == "-h" || strArg == "--help") {
            p_stOptions.bHelp = true;
        } else {
            p_strError = "unknown option '" + strArg + "'";
            return false;
        }
    }
    if (p_stOptions.strUser.empty() != p_stOptions.strPasswordFile.empty()) {
        p_strError = "--user and --password-file go together";
        return false;
    }
    return true;
}

bool readPasswordFile(const std::string& p_strFile, std::string& p_strPassword,
                      std::string& p_strError) {
    std::ifstream objFile(p_strFile);
    std::string strLine;
    if (!objFile || !std::getline(objFile, strLine)) {
        p_strError = "cannot read a password from " + p_strFile;
        return false;
    }
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
