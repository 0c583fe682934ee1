#include "tools/Options.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "tools/ValueParsing.h"

namespace {

// The options every device tool takes, looked up as a program's own are.
constexpr OwnOption DEVICE_OPTIONS[] = {
    {"--device", true}, {"--root", true}, {"--fresh", false}, {"-h", false}, {"--help", false}};

template <class Options>
const OwnOption* findOption(const Options& p_lstOptions, const std::string& p_strArg) {
    const auto it =
        std::find_if(std::begin(p_lstOptions), std::end(p_lstOptions),
                     [&](const OwnOption& p_stOption) { return p_stOption.name == p_strArg; });
    return it == std::end(p_lstOptions) ? nullptr : &*it;
}

void takeDeviceOption(const std::string& p_strArg, const std::string& p_strValue,
                      DeviceOptions& p_stDevice) {
    if (p_strArg == "--device") {
        p_stDevice.strDevice = p_strValue;
    } else if (p_strArg == "--root") {
        p_stDevice.strRoot = p_strValue;
    } else if (p_strArg == "--fresh") {
        p_stDevice.bFresh = true;
    } else {
        p_stDevice.bHelp = true;
    }
}

} // namespace

bool walkOptions(int argc, char** argv, DeviceOptions& p_stDevice,
                 std::initializer_list<OwnOption> p_lstOwn, const OptionTaker& p_fnTake,
                 std::string& p_strError) {
    for (int i = 1; i < argc; ++i) {
        const std::string strArg = argv[i];
        const OwnOption* pDevice = findOption(DEVICE_OPTIONS, strArg);
        const OwnOption* pOption = pDevice != nullptr ? pDevice : findOption(p_lstOwn, strArg);
        if (pOption == nullptr) {
            p_strError = "unknown option '" + strArg + "'";
            return false;
        }
        const bool bTakesValue = pOption->bTakesValue;
        if (bTakesValue && i + 1 >= argc) {
            p_strError = "option " + strArg + " needs a value";
            return false;
        }
        const std::string strValue = bTakesValue ? argv[++i] : "";
        if (pDevice != nullptr) {
            takeDeviceOption(strArg, strValue, p_stDevice);
        } else if (!p_fnTake(strArg, strValue, p_strError)) {
            return false;
        }
    }
    return true;
}

bool parseOptions(int argc, char** argv, Options& p_stOptions, std::string& p_strError) {
    return walkOptions(
        argc, argv, p_stOptions, {{"--channel", true}, {"--script", true}, {"-c", true}},
        [&p_stOptions](const std::string& p_strName, const std::string& p_strValue,
                       std::string& p_strWhy) {
            if (p_strName == "--channel" && !parseInt(p_strValue, p_stOptions.nChannel)) {
                p_strWhy = "--channel needs a channel number, not '" + p_strValue + "'";
                return false;
            }
            if (p_strName == "--script") {
                p_stOptions.strScript = p_strValue;
            } else if (p_strName == "-c") {
                p_stOptions.vecCommands.push_back(p_strValue);
            }
            return true;
        },
        p_strError);
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
