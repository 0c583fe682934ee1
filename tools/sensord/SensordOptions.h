// sensord's command line.
#pragma once

#include <string>

#include "tools/Options.h"

struct SensordOptions : DeviceOptions {
    std::string strHost = "127.0.0.1";
    int nPort = 8080; // 0: any free port (the one taken is printed)
    std::string strUser;
    std::string strPasswordFile;
};

// False with a message for an unknown option, a missing value or a bad address.
bool parseSensordOptions(int argc, char** argv, SensordOptions& p_stOptions,
                         std::string& p_strError);
// The password: the first line of the file, at most 256 bytes, not empty.
bool readPasswordFile(const std::string& p_strFile, std::string& p_strPassword,
                      std::string& p_strError);
void printSensordUsage();
