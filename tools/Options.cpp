#include "tools/Options.h"

#include <cstdio>

#include "tools/ValueParsing.h"

namespace {

// The value of an option that takes one, or false when it is missing.
bool takeValue(int argc, char** argv, int& p_nIndex, std::string& p_strValue) {
    if (p_nIndex + 1 >= argc) {
        return false;
    }
    p_strValue = argv[++p_nIndex];
    return true;
}

} // namespace

bool parseOptions(int argc, char** argv, Options& p_stOptions, std::string& p_strError) {
    for (int i = 1; i < argc; ++i) {
        const std::string strArg = argv[i];
        std::string strValue;
        const bool bTakesValue = strArg == "--device" || strArg == "--root" ||
                                 strArg == "--channel" || strArg == "--script" || strArg == "-c";
        if (bTakesValue && !takeValue(argc, argv, i, strValue)) {
            p_strError = "option " + strArg + " needs a value";
            return false;
        }
        if (strArg == "--device") {
            p_stOptions.strDevice = strValue;
        } else if (strArg == "--root") {
            p_stOptions.strRoot = strValue;
        } else if (strArg == "--channel") {
            if (!parseInt(strValue, p_stOptions.nChannel)) {
                p_strError = "--channel needs a channel number, not '" + strValue + "'";
                return false;
            }
        } else if (strArg == "--script") {
            p_stOptions.strScript = strValue;
        } else if (strArg == "-c") {
            p_stOptions.vecCommands.push_back(strValue);
        } else if (strArg == "--fresh") {
            p_stOptions.bFresh = true;
        } else if (strArg == "-h" || strArg == "--help") {
            p_stOptions.bHelp = true;
        } else {
            p_strError = "unknown option '" + strArg + "'";
            return false;
        }
    }
    return true;
}

void printUsage() {
    std::printf("usage: sensorctl [--device ipc|dome|thermal|lpr|PATH] [--root DIR] [--fresh]\n"
                "                 [--channel N] [--script FILE] [-c COMMAND]...\n"
                "\n"
                "Brings up the channels of a sample device on the ISP simulator and takes\n"
                "commands: from -c (each in turn), from a script on standard input, or at the\n"
                "prompt. The device is copied into a working root (default ~/.sensorctl/NAME)\n"
                "that is kept between runs, so what is flushed stays; --fresh starts it anew.\n"
                "Type 'help' for the commands. Exit status: 0, 1 when a command of a script or of\n"
                "-c failed, 2 when the command line or the device is wrong.\n");
}
