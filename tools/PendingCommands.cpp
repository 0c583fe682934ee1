// Values the module could not send: a refusal stopped the scheme switch or
// reset that should have carried them to the ISP.
#include "controller/ISensorController.h"
#include "tools/CommandHandlers.h"
#include "tools/Console.h"
#include "tools/ParamNames.h"
#include "tools/ParamSnapshot.h"
#include "tools/Session.h"

bool cmdPending(Session& p_objSession, const CommandLine&) {
    ISensorController& objController = p_objSession.controller();
    const std::vector<u32> vecKeys = objController.getPendingKeys();
    if (vecKeys.empty()) {
        say("  nothing pending: the ISP holds every value of the current scheme");
        return true;
    }
    say("  %zu values of the current scheme are not on the ISP yet; each is sent at its next "
        "set, or at the next scheme switch, reset or restore:",
        vecKeys.size());
    for (const auto& [nKey, nValue] : snapshot(objController, vecKeys)) {
        say("  %s = %d (pending)", keyLabel(nKey).c_str(), nValue.value_or(-1));
    }
    return true;
}
