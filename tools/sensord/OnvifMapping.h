// ONVIF imaging fields and the module's keys: one table (OnvifMapping.cpp)
// and the conversions both ways. A field's range or list comes from the
// channel's pruned style control (the module prunes it by the ISP's ranges);
// a field whose key the channel lacks is left out.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "tools/StyleTree.h"

namespace sensord {

enum class FieldKind {
    Level,        // a number, the module's value as it stands
    Mode,         // a token of an ONVIF enumeration
    ExposureTime, // microseconds <-> the index of a shutter list item "1/N"
};

struct ModeToken {
    const char* szToken;
    int nValue; // the first row of a token is the value written for it
};

struct OnvifField {
    const char* szSetting; // path below ImagingSettings, "Exposure/MaxExposureTime"
    const char* szOption;  // path below ImagingOptions, "Exposure/MaxExposureTime"
    u32 nKey;
    FieldKind eKind;
    const ModeToken* pModes; // Mode only
    size_t nModes;
};

struct FieldList {
    const OnvifField* pBegin;
    const OnvifField* pEnd;
    const OnvifField* begin() const { return pBegin; }
    const OnvifField* end() const { return pEnd; }
};

// The table, in the order of the ImagingSettings20 schema.
FieldList onvifFields();
const OnvifField* findSettingField(const std::string& p_strPath);

// The ONVIF text of a module value; false when the value has no ONVIF form
// (the field is then left out of the answer).
bool toOnvif(const OnvifField& p_stField, const StyleControl& p_stControl, int p_nValue,
             std::string& p_strText);
// The module value of an ONVIF text; false with the reason when the text is
// not a value the control allows.
bool toModule(const OnvifField& p_stField, const StyleControl& p_stControl,
              const std::string& p_strText, int& p_nValue, std::string& p_strWhy);
// The tokens of a Mode field the control offers, each once.
std::vector<std::string> modeTokens(const OnvifField& p_stField, const StyleControl& p_stControl);
// The smallest and largest ONVIF value of a Level or ExposureTime field;
// false when the control gives no bounds.
bool fieldRange(const OnvifField& p_stField, const StyleControl& p_stControl, double& p_dMin,
                double& p_dMax);
// "40000" for 1/25 s; the item name's exposure in microseconds, or < 0.
double itemMicroseconds(const std::string& p_strName);
std::string formatNumber(double p_dValue);

} // namespace sensord
