// Every bound on what crosses into the module from outside, in one place:
// files on flash or in /tmp (anyone who can write there can feed them), the
// texts of the host's requests, and the module configuration's counts.
// Each reader takes its cap from here; a README table lists the same numbers.
#pragma once

#include <cstddef>

namespace inputcap {

constexpr std::size_t KiB = 1024;
constexpr std::size_t MiB = 1024 * KiB;

// ---- Files: the most a reader takes in; a larger file is refused whole ----
// Style and style diversity documents, and the merged style read back.
constexpr std::size_t STYLE_FILE_MAX = 8 * MiB;
// A scheme file may be longer than the set that reads it (a set that lost
// keys); beyond this slack it is not a scheme file of this module.
constexpr std::size_t SCHEME_FILE_SLACK = 4 * KiB;
// The most of a scheme file read without a set to size it (sensorctl, and the
// loader that matches a file of other keys to the set): 8192 records, far
// more than any style's set.
constexpr std::size_t SCHEME_FILE_MAX = 64 * KiB;
// "/tmp/Debug.sign": two short lines. Only this much is ever read, whatever
// the file holds, because it is checked before diagnostics.
constexpr std::size_t MARKER_FILE_MAX = 64;
// The field-of-view calibration file, the machine description (INI) and the
// module configuration (XML): a few lines or a few modules each.
constexpr std::size_t CALIBRATION_FILE_MAX = 16 * KiB;
constexpr std::size_t MACHINE_INFO_MAX = 16 * KiB;
constexpr std::size_t MODULE_CONFIG_MAX = 64 * KiB;
// Small files of sensorctl and the ISP simulator: the working-root marker and
// a sensor profile.
constexpr std::size_t TOOL_MARKER_MAX = 4 * KiB;
constexpr std::size_t ISP_PROFILE_MAX = 1 * MiB;

// ---- XML: element nesting refused before the parser recurses into it ----
constexpr int XML_DEPTH_MAX = 256;

// ---- Module configuration ----
// "max_scheme": each user scheme is one file on flash and one set in memory,
// so the count is held to 16 (files "sensorC_0.cfg" to "sensorC_15.cfg",
// every one of which the factory reset and a version change remove).
constexpr int SCHEME_SUM_MIN = 0;
constexpr int SCHEME_SUM_MAX = 16;

// ---- Text interface ----
// A request longer than this, or with more ids than this, is refused whole.
// The whole set as text (at most 256 groups of two 11-character numbers)
// fits with room to spare.
constexpr std::size_t TEXT_REQUEST_MAX = 16 * KiB;
constexpr std::size_t TEXT_IDS_MAX = 256;

} // namespace inputcap
