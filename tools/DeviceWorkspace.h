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
    // An existing root that sensorctl made (it carries a marker file) must be
    // a copy of the same device. With p_bFresh such a root is replaced; any
    // other directory is left alone and reported. False with a message when
    // something is wrong.
    bool prepare(bool p_bFresh, std::string& p_strError);
    const std::string& root() const { return m_strRoot; }
    const std::string& source() const { return m_strSource; }
    // True when prepare copied the device in this run.
    bool isNew() const { return m_bNew; }

private:
    bool checkSource(std::string& p_strError) const;
    bool copySource(std::string& p_strError);

    std::string m_strSource;
    std::string m_strRoot;
    bool m_bNew = false;
};
