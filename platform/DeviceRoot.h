// Maps the fixed device paths the module names ("/mnt/mtd/...", "/hd1/...",
// "/tmp/...") onto a directory of the host, so that a PC, a test or a
// simulated device can stand in for the camera's flash.
#pragma once

#include <string>

class DeviceRoot {
public:
    // Program-set root wins over $SENSOR_DEVICE_ROOT; "" clears the program-set root.
    static void set(const std::string& dir);
    // The root in force, "" = none (camera).
    static std::string get();
    // The root set by the program only ("" when none), so that a caller can
    // put back what was there before it changed the root.
    static std::string getProgramRoot();
    // Counts the calls of set, so that a reader that keeps something read
    // under the root (a marker's contents) knows cheaply when to read again.
    static unsigned generation();
    // root + devicePath, or devicePath as is when no root is in force.
    static std::string resolve(const std::string& devicePath);
};
