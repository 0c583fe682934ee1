// Marks what libsensordll.so exports. The library is built with hidden
// visibility, so only declarations carrying SENSORDLL_EXPORT are part of the
// interface a camera's host links against; everything else stays internal.
#pragma once

#define SENSORDLL_EXPORT __attribute__((visibility("default")))
