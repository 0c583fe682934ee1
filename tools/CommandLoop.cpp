#include "tools/CommandLoop.h"

#include <cstdio>

#include "controller/ISensorController.h"
#include "tools/Console.h"
#include "tools/Session.h"

namespace {

void printPrompt(Session& p_objSession) {
    int nScheme = -1;
    int nMode = 0;
    p_objSession.controller().getParamScheme(nScheme);
    p_objSession.controller().getParamMode(nMode);
    std::printf("ch%d s%d %s> ", p_objSession.channelNumber(), nScheme,
                nMode != 0 ? "auto" : "manual");
    std::fflush(stdout);
}

bool isBlankOrComment(const std::string& p_strLine) {
    const size_t nFirst = p_strLine.find_first_not_of(" \t\r");
    return nFirst == std::string::npos || p_strLine[nFirst] == '#';
}

int runEchoed(Session& p_objSession, const std::string& p_strLine) {
    if (isBlankOrComment(p_strLine)) {
        return 0;
    }
    say("> %s", p_strLine.c_str());
    return p_objSession.execute(p_strLine) ? 0 : 1;
}

} // namespace

int runCommandList(Session& p_objSession, const std::vector<std::string>& p_vecCommands) {
    int nFailed = 0;
    for (const std::string& strCommand : p_vecCommands) {
        nFailed += runEchoed(p_objSession, strCommand);
        if (p_objSession.quitRequested()) {
            break;
        }
    }
    return nFailed;
}

int runCommandStream(Session& p_objSession, std::istream& p_objIn, bool p_bInteractive) {
    int nFailed = 0;
    std::string strLine;
    while (!p_objSession.quitRequested()) {
        if (p_bInteractive) {
            printPrompt(p_objSession);
        }
        if (!std::getline(p_objIn, strLine)) {
            if (p_bInteractive) {
                say("");
            }
            break;
        }
        if (p_bInteractive) {
            nFailed += p_objSession.execute(strLine) ? 0 : 1;
        } else {
            nFailed += runEchoed(p_objSession, strLine);
        }
    }
    return nFailed;
}
