// The host's command runner, as far as the module uses it: removing files by
// pattern. Understood without a shell: "rm [-f|-r|-rf ...] PATTERN..." where
// each PATTERN is an absolute device path, resolved through DeviceRoot and
// expanded with glob(3) (*, ?, [..] in any component). Exactly the matching
// files are unlinked; directories are never removed, and under a device root
// nothing outside that root is touched.
//
// Returns 0 on success, 1 when something could not be removed (or, without
// -f, a pattern matched nothing), -1 for a command that is refused: anything
// other than rm, an unknown option, shell syntax, a relative path or a ".."
// component. A refused command removes nothing. timeoutSec is accepted for
// the host's interface; the removal runs in-process and needs no timeout.
#pragma once

int sy_system(const char* cmd, int timeoutSec);
