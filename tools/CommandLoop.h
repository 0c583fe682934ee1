// Where a session's commands come from: -c arguments, a script on standard
// input, or a person at a terminal. Each returns how many commands failed.
#pragma once

#include <istream>
#include <string>
#include <vector>

class Session;

// Runs the commands in order, each echoed first, until one asks to quit.
int runCommandList(Session& p_objSession, const std::vector<std::string>& p_vecCommands);
// Runs the stream's lines until its end or a quit. At a terminal a prompt
// naming channel, scheme and mode stands before each line; otherwise each line
// is echoed so that the output reads like the session it was.
int runCommandStream(Session& p_objSession, std::istream& p_objIn, bool p_bInteractive);
