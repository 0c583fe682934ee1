// Every command of sensorctl: its name, its arguments, one line of help and
// the function that carries it out, in groups as `help` lists them.
#pragma once

#include <string>
#include <vector>

class CommandLine;
class Session;

// Carries out one command whose argument count has been checked; false when
// it failed (the handler has said why, and changed nothing it could avoid).
using CommandHandler = bool (*)(Session&, const CommandLine&);

struct Command {
    const char* szName;
    const char* szArgs; // as shown in help: "KEY VALUE [nocache]"
    const char* szHelp;
    size_t nMinArgs;
    size_t nMaxArgs;
    CommandHandler pHandler;
};

struct CommandGroup {
    const char* szTitle;
    std::vector<Command> vecCommands;
};

const std::vector<CommandGroup>& commandGroups();
// The command of that name, or null.
const Command* findCommand(const std::string& p_strName);
// "set KEY VALUE [nocache]"
std::string commandUsage(const Command& p_stCommand);
