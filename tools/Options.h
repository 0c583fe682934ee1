// The command lines of sensorctl and sensord: the device options both take,
// one walker over argv, and each program's own options.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// Which device is brought up, and where its working root lives.
struct DeviceOptions {
    std::string strDevice = "ipc";
    std::string strRoot;
    bool bFresh = false;
    bool bHelp = false;
};

// An option of a program's own, and whether the next argument is its value.
struct OwnOption {
    std::string_view name;
    bool bTakesValue;
};
// Takes one of the program's own options with its value ("" when it takes
// none); false with p_strError set refuses it.
using OptionTaker = std::function<bool(const std::string& p_strName, const std::string& p_strValue,
                                       std::string& p_strError)>;

// Walks argv in order: the device options go into p_stDevice, the program's
// own to p_fnTake. An unknown option, or one whose value is missing, is
// refused with its reason in p_strError.
bool walkOptions(int argc, char** argv, DeviceOptions& p_stDevice,
                 std::initializer_list<OwnOption> p_lstOwn, const OptionTaker& p_fnTake,
                 std::string& p_strError);

struct Options : DeviceOptions {
    int nChannel = 1;
    std::string strScript; // run first, before -c or standard input
    std::vector<std::string> vecCommands;
};

bool parseOptions(int argc, char** argv, Options& p_stOptions, std::string& p_strError);
void printUsage();
