// The factory machine description: device type and hardware identity.
#pragma once

#include <string>

class MachineInfo {
public:
    int getDeviceType() const { return m_nDeviceType; }
    std::string getHardwareModel() const { return m_strHardwareModel; }
    std::string getHardwareCode() const { return m_strHardwareCode; }

    void setDeviceType(int type) { m_nDeviceType = type; }
    void setHardwareModel(const std::string& model) { m_strHardwareModel = model; }
    void setHardwareCode(const std::string& code) { m_strHardwareCode = code; }

private:
    int m_nDeviceType = 0;
    std::string m_strHardwareModel;
    std::string m_strHardwareCode;
};
