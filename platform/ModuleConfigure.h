// One module of the device's module configuration: its id and two texts.
#pragma once

#include <string>

class ModuleConfigure {
public:
    int getModuleId() const { return m_nModuleId; }
    const std::string& getDetail() const { return m_strDetail; }
    const std::string& getParameters() const { return m_strParameters; }

    void setModuleId(int id) { m_nModuleId = id; }
    void setDetail(const std::string& detail) { m_strDetail = detail; }
    void setParameters(const std::string& parameters) { m_strParameters = parameters; }

private:
    int m_nModuleId = 0;
    std::string m_strDetail;
    std::string m_strParameters;
};
