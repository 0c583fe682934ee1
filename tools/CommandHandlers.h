// The handlers the command table points at, one group per source file.
#pragma once

#include "tools/CommandTable.h"

// SessionCommands.cpp: the session itself.
bool cmdHelp(Session&, const CommandLine&);
bool cmdQuit(Session&, const CommandLine&);
bool cmdChannel(Session&, const CommandLine&);
bool cmdStatus(Session&, const CommandLine&);
bool cmdDebug(Session&, const CommandLine&);
bool cmdSleep(Session&, const CommandLine&);

// ParameterCommands.cpp: parameters by key and in text form.
bool cmdGet(Session&, const CommandLine&);
bool cmdSet(Session&, const CommandLine&);
bool cmdSetText(Session&, const CommandLine&);
bool cmdGetText(Session&, const CommandLine&);
bool cmdAll(Session&, const CommandLine&);
bool cmdRange(Session&, const CommandLine&);
bool cmdKeyCmd(Session&, const CommandLine&);
bool cmdCheck(Session&, const CommandLine&);

// SchemeCommands.cpp: schemes, mode and time windows.
bool cmdScheme(Session&, const CommandLine&);
bool cmdMode(Session&, const CommandLine&);
bool cmdWindow(Session&, const CommandLine&);
bool cmdJudge(Session&, const CommandLine&);
bool cmdWaitScheme(Session&, const CommandLine&);

// StoreCommands.cpp: flash, restore and resets.
bool cmdFlush(Session&, const CommandLine&);
bool cmdFlash(Session&, const CommandLine&);
bool cmdRestore(Session&, const CommandLine&);
bool cmdRestoreAe(Session&, const CommandLine&);
bool cmdResetLast(Session&, const CommandLine&);
bool cmdReset(Session&, const CommandLine&);

// PendingCommands.cpp: values a refusal kept from the ISP.
bool cmdPending(Session&, const CommandLine&);

// StyleCommands.cpp: the style the host's pages are built from.
bool cmdStyle(Session&, const CommandLine&);
bool cmdUiFiles(Session&, const CommandLine&);

// LensCommands.cpp: zoom, focus, iris and the lens lock.
bool cmdZoom(Session&, const CommandLine&);
bool cmdZoomIn(Session&, const CommandLine&);
bool cmdZoomOut(Session&, const CommandLine&);
bool cmdFocus(Session&, const CommandLine&);
bool cmdFocusNear(Session&, const CommandLine&);
bool cmdFocusFar(Session&, const CommandLine&);
bool cmdFocusMode(Session&, const CommandLine&);
bool cmdIris(Session&, const CommandLine&);
bool cmdIrisUp(Session&, const CommandLine&);
bool cmdIrisDown(Session&, const CommandLine&);
bool cmdPtz(Session&, const CommandLine&);
bool cmdAfStatistic(Session&, const CommandLine&);
bool cmdExecStatus(Session&, const CommandLine&);
bool cmdVersion(Session&, const CommandLine&);
bool cmdLock(Session&, const CommandLine&);
bool cmdSyncFov(Session&, const CommandLine&);

// ShutterCommands.cpp: the maximum shutter along the ISP's list.
bool cmdShutter(Session&, const CommandLine&);
bool cmdShutterUp(Session&, const CommandLine&);
bool cmdShutterDown(Session&, const CommandLine&);

// AccessorCommands.cpp: the typed accessors, one command each.
const std::vector<Command>& accessorCommands();
bool cmdShowFlags(Session&, const CommandLine&);

// SimulatorCommands.cpp: the simulated sensor and clock.
bool cmdSimulator(Session&, const CommandLine&);
bool cmdDay(Session&, const CommandLine&);
bool cmdNight(Session&, const CommandLine&);
bool cmdLight(Session&, const CommandLine&);
bool cmdTime(Session&, const CommandLine&);
bool cmdFail(Session&, const CommandLine&);
bool cmdIsp(Session&, const CommandLine&);
bool cmdLog(Session&, const CommandLine&);
