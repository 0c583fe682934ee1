// Helpers shared by the test executables.
#pragma once

#include "platform/ModuleConfigure.h"

#include <string>
#include <vector>

namespace sensortest {

// A fresh temporary directory that becomes the device root for the lifetime of
// the object; removed with everything in it afterwards.
class TempDeviceRoot {
public:
    TempDeviceRoot();
    ~TempDeviceRoot();
    TempDeviceRoot(const TempDeviceRoot&) = delete;
    TempDeviceRoot& operator=(const TempDeviceRoot&) = delete;

    const std::string& path() const { return m_strPath; }
    // Absolute host path of a device path under this root.
    std::string hostPath(const std::string& devicePath) const;
    // Writes a file at a device path, creating parent directories.
    void writeFile(const std::string& devicePath, const std::string& content) const;
    std::string readFile(const std::string& devicePath) const;
    bool exists(const std::string& devicePath) const;

private:
    std::string m_strPath;
};

// The per-process directory that holds every temporary root.
std::string scratchDir();

// The modules the device under the current root configures for its machine,
// read as a host reads them; empty when none matches.
std::vector<ModuleConfigure> deviceModules();

// The source tree, for tests that read the sample devices.
std::string sourceDir();

} // namespace sensortest
