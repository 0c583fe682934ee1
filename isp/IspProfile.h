// Sensor profiles of the ISP simulator: what a simulated sensor answers before
// anything has been written to it.
//
// A profile is an XML document:
//
//   <SensorProfile name="ipc-2m">
//     <Command id="34" value="50"/>
//     <Record id="2496" text="ISP-SIM 1.0"/>
//     <Record id="145" words="70 30 0"/>
//     <Record id="1606" bytes="0"/>
//     <Dynamic id="2368" type="0" default="0"><Item value="0"/><Item value="1"/></Dynamic>
//     <Dynamic id="2369" type="1" default="50" min="0" max="100"/>
//     <DayNight dayThreshold="60" nightThreshold="30" level="100"/>
//     <Channel index="1">
//       <Command id="34" value="40"/>
//       <Dynamic id="16" type="0" default="0"><Item value="0"/></Dynamic>
//     </Channel>
//   </SensorProfile>
//
// Elements (all numbers decimal; unknown elements or attributes are errors, so
// a misspelt name never passes silently):
// - Command id value, optionally min and max (both) or items (numbers
//   separated by blanks): the initial 32-bit value of a command that moves
//   one 32-bit value, and the values its SET accepts (the initial value must
//   be one of them). A command never named starts at 0 and takes any value.
// - Record id and exactly one of text, words, bytes: the initial content of a
//   command that moves a record (145, 146, 154: 12 bytes; 149..152: 16 bytes;
//   2816: 16 bytes; 2496: 50 bytes; 1606: 1 byte). text is copied byte for
//   byte, words are signed 32-bit little-endian values, bytes are 0..255; the
//   rest of the record is zero. A record never named starts all zero.
// - Dynamic id type default min max, with Item value children: a command whose
//   allowed values the ISP reports. type 0 is a list (the items; min and max
//   default to the lowest and highest item, default to the first item; at
//   least one item), any other type a continuous range (min and max required,
//   default defaults to min). At most 16 dynamic commands, 64 items each, in
//   the order the ISP reports them. A dynamic command without a Command starts
//   at its default.
// - DayNight dayThreshold nightThreshold level: the light level and the
//   hysteresis of the day/night state (command 153). Night begins when the
//   level falls to nightThreshold or below, day when it rises to dayThreshold
//   or above; dayThreshold must be above nightThreshold. Defaults 60, 30, 100.
// - Channel index (0-based ISP channel, 0..3): settings for that channel only.
//   Its Command (bounds included) and Record elements replace those of the
//   document for that channel; its Dynamic elements, when it has any, replace
//   the whole dynamic list; its DayNight replaces the document's. Channels
//   cannot nest.
// Every id may appear once per scope (document or one Channel).
#pragma once

#include "common/ia_ioctrl.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace isp {

// Number of ISP channels the simulator serves (0-based): as many as the
// largest recorder-style camera brings up in one process.
constexpr int kChannelCount = 8;

// Data size of a record command, or 0 for a command that moves one 32-bit value.
std::size_t recordSize(uint32_t p_nCmd);

struct IspDynamic {
    uint32_t cmd = 0;
    ia_dynamic_params_attr_st attr{};
};

struct IspDayNight {
    int32_t dayThreshold = 60;
    int32_t nightThreshold = 30;
    int32_t level = 100;
};

// The values a SET of a plain command accepts: min..max, or one of items.
struct IspBounds {
    int32_t min = 0;
    int32_t max = 0;
    std::vector<int32_t> items; // when not empty, only these
    bool allows(int32_t p_nValue) const;
};

// What one scope (the whole document, or one Channel element) says.
struct IspChannelProfile {
    std::map<uint32_t, int32_t> values;
    std::map<uint32_t, IspBounds> bounds;
    std::map<uint32_t, std::vector<uint8_t>> records;
    std::vector<IspDynamic> dynamics;
    std::optional<IspDayNight> dayNight;
};

struct IspProfile {
    std::string name;
    IspChannelProfile common;
    std::map<int, IspChannelProfile> channels;

    // The settings of one channel: the document's, with that channel's
    // overrides applied.
    IspChannelProfile forChannel(int p_nChannel) const;
};

// Parses a profile document. On failure returns false, leaves p_stProfile
// unchanged and describes the fault in p_strError.
bool parseProfile(const std::string& p_strXml, IspProfile& p_stProfile, std::string& p_strError);

// Reads and parses a profile file given as a host path.
bool loadProfileFile(const std::string& p_strPath, IspProfile& p_stProfile,
                     std::string& p_strError);

// The built-in profile, used when none is selected.
const char* defaultProfileXml();
IspProfile defaultProfile();

} // namespace isp
