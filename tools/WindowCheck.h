// What the module's check of a scheme's time window (paramCheck, which flush
// runs first) found, in words.
#pragma once

// "the window starts after 24:00 (505)"; null for a code that names no
// problem of the window (0 = valid, or another component's code).
const char* windowProblem(int p_nCheck);
