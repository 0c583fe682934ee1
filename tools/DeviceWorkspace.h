// The working device root of sensorctl: a copy of a sample device that survives
// between runs, so parameters flushed in one run are there in the next.
#pragma once

#include <string>

class DeviceWorkspace {
public:
    // p_strDevice: a sample device name (ipc, dome, thermal, lpr) or a directory.
    // p_strRoot: the working root, or "" for the default under $HOME.
    DeviceWorkspace(const std::string& p_strDevice, const std::string& p_strRoot);

    // Copies the sample device into the root unless the root exists already.
    // Returns false with a message in p_strError when the device is unknown.
    bool prepare(std::string& p_strError);
    const std::string& root() const { return m_strRoot; }
    const std::string& source() const { return m_strSource; }

private:
    std::string m_strSource;
    std::string m_strRoot;
};
