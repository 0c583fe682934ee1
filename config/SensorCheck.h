// A check like SNS_ASSERT whose report names the condition by a fixed text
// instead of the source tokens. Used where the reported expression is part of
// the module's established diagnostics but the code evaluates a safer
// equivalent (a length taken once, a capacity passed along, a bounded count),
// or where line breaking would change the stringised tokens.
// The unit including this defines SNS_SOURCE_UNIT first, as for SensorDebug.h.
#pragma once

#include "common/SensorDebug.h"

#define SNS_ASSERT_TEXT(condition, text, ...)                                                      \
    static_cast<void>(                                                                             \
        sensordiag::check(static_cast<bool>(condition), text, SNS_ORIGIN_, __VA_ARGS__))
