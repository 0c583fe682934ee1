// sensorctl's command line.
#pragma once

#include <string>
#include <vector>

struct Options {
    std::string strDevice = "ipc";
    std::string strRoot;
    bool bFresh = false;
    bool bHelp = false;
    int nChannel = 1;
    std::string strScript; // run first, before -c or standard input
    std::vector<std::string> vecCommands;
};

// False with a message for an unknown option or a missing value.
bool parseOptions(int argc, char** argv, Options& p_stOptions, std::string& p_strError);
void printUsage();
