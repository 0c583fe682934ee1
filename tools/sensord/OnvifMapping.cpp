#include "tools/sensord/OnvifMapping.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/SensorKeys.h"

namespace sensord {

namespace {

constexpr ModeToken OFF_ON[] = {{"OFF", 0}, {"ON", 1}};
// Shutter and gain priority are automatic exposure with a preference.
constexpr ModeToken EXPOSURE_MODES[] = {{"AUTO", 0}, {"MANUAL", 3}, {"AUTO", 1}, {"AUTO", 2}};
// Semi-automatic focus reads as automatic.
constexpr ModeToken FOCUS_MODES[] = {{"AUTO", 0}, {"MANUAL", 2}, {"AUTO", 1}};
// The IR-cut filter is in (ON) by day and out (OFF) at night; the module's
// timed day/night switching reads as AUTO.
constexpr ModeToken IR_CUT_MODES[] = {{"AUTO", 0}, {"ON", 1}, {"OFF", 2}, {"AUTO", 3}};
// Digital WDR and HDR both read as ON; ON writes digital WDR.
constexpr ModeToken WDR_MODES[] = {{"OFF", 0}, {"ON", 1}, {"ON", 2}};
// The module's indoor, outdoor and tracking presets are automatic balances.
constexpr ModeToken WB_MODES[] = {
    {"AUTO", 0}, {"MANUAL", 1}, {"AUTO", 2}, {"AUTO", 3}, {"AUTO", 4}};

template <size_t N>
constexpr OnvifField modeField(const char* p_szSetting, const char* p_szOption, u32 p_nKey,
                               const ModeToken (&p_arrModes)[N]) {
    return {p_szSetting, p_szOption, p_nKey, FieldKind::Mode, p_arrModes, N};
}
constexpr OnvifField field(const char* p_szSetting, const char* p_szOption, u32 p_nKey,
                           FieldKind p_eKind) {
    return {p_szSetting, p_szOption, p_nKey, p_eKind, nullptr, 0};
}

constexpr std::array<OnvifField, 21> FIELDS = {{
    modeField("BacklightCompensation/Mode", "BacklightCompensation/Mode", KEY_BLC_SWITCH, OFF_ON),
    field("BacklightCompensation/Level", "BacklightCompensation/Level", KEY_BLC_STRG,
          FieldKind::Level),
    field("Brightness", "Brightness", KEY_BRIGHTNESS, FieldKind::Level),
    field("ColorSaturation", "ColorSaturation", KEY_SATURATION, FieldKind::Level),
    field("Contrast", "Contrast", KEY_CONTRAST, FieldKind::Level),
    modeField("Exposure/Mode", "Exposure/Mode", KEY_EXPOSE_MODE, EXPOSURE_MODES),
    field("Exposure/MinExposureTime", "Exposure/MinExposureTime", KEY_MIN_SHUTTER,
          FieldKind::ExposureTime),
    field("Exposure/MaxExposureTime", "Exposure/MaxExposureTime", KEY_MAX_SHUTTER,
          FieldKind::ExposureTime),
    field("Exposure/MaxGain", "Exposure/MaxGain", KEY_MAX_GAIN, FieldKind::Level),
    field("Exposure/ExposureTime", "Exposure/ExposureTime", KEY_FIX_SHUTTER,
          FieldKind::ExposureTime),
    field("Exposure/Gain", "Exposure/Gain", KEY_FIX_GAIN, FieldKind::Level),
    modeField("Focus/AutoFocusMode", "Focus/AutoFocusModes", KEY_AUTO_FOCUS_MODE, FOCUS_MODES),
    modeField("IrCutFilter", "IrCutFilterModes", KEY_DN_MODE, IR_CUT_MODES),
    field("Sharpness", "Sharpness", KEY_SHARPNESS, FieldKind::Level),
    modeField("WideDynamicRange/Mode", "WideDynamicRange/Mode", KEY_WDR_MODE, WDR_MODES),
    field("WideDynamicRange/Level", "WideDynamicRange/Level", KEY_WDR_STRG, FieldKind::Level),
    modeField("WhiteBalance/Mode", "WhiteBalance/Mode", KEY_WB_MODE, WB_MODES),
    field("WhiteBalance/CrGain", "WhiteBalance/YrGain", KEY_R_GAIN, FieldKind::Level),
    field("WhiteBalance/CbGain", "WhiteBalance/YbGain", KEY_B_GAIN, FieldKind::Level),
    modeField("Extension/ImageStabilization/Mode", "Extension/ImageStabilization/Mode",
              KEY_ANTI_SHAKE_SWITCH, OFF_ON),
    field("Extension/ImageStabilization/Level", "Extension/ImageStabilization/Level",
          KEY_ANTI_SHAKE_STRG, FieldKind::Level),
}};

// An exposure given in microseconds names the shutter item within 1 %.
constexpr double EXPOSURE_TOLERANCE = 0.01;

bool offers(const StyleControl& p_stControl, int p_nValue) {
    return p_stControl.vecItems.empty() ||
           std::find(p_stControl.vecItems.begin(), p_stControl.vecItems.end(), p_nValue) !=
               p_stControl.vecItems.end();
}

bool parseNumber(const std::string& p_strText, double& p_dValue) {
    const char* szBegin = p_strText.c_str();
    char* pEnd = nullptr;
    p_dValue = std::strtod(szBegin, &pEnd);
    while (pEnd != nullptr && (*pEnd == ' ' || *pEnd == '\n' || *pEnd == '\t' || *pEnd == '\r')) {
        ++pEnd;
    }
    return pEnd != szBegin && pEnd != nullptr && *pEnd == '\0' && std::isfinite(p_dValue);
}

} // namespace

FieldList onvifFields() {
    return {FIELDS.data(), FIELDS.data() + FIELDS.size()};
}

const OnvifField* findSettingField(const std::string& p_strPath) {
    for (const OnvifField& stField : FIELDS) {
        if (p_strPath == stField.szSetting) {
            return &stField;
        }
    }
    return nullptr;
}

std::string formatNumber(double p_dValue) {
    char szText[32];
    std::snprintf(szText, sizeof(szText), "%.6g", p_dValue);
    return szText;
}

double itemMicroseconds(const std::string& p_strName) {
    int nDenominator = 0;
    int nConsumed = 0;
    if (std::sscanf(p_strName.c_str(), "1/%d%n", &nDenominator, &nConsumed) == 1 &&
        static_cast<size_t>(nConsumed) == p_strName.size() && nDenominator > 0) {
        return 1e6 / nDenominator;
    }
    return -1;
}

bool toOnvif(const OnvifField& p_stField, const StyleControl& p_stControl, int p_nValue,
             std::string& p_strText) {
    switch (p_stField.eKind) {
    case FieldKind::Level:
        p_strText = std::to_string(p_nValue);
        return true;
    case FieldKind::Mode:
        for (size_t i = 0; i < p_stField.nModes; ++i) {
            if (p_stField.pModes[i].nValue == p_nValue) {
                p_strText = p_stField.pModes[i].szToken;
                return true;
            }
        }
        return false;
    case FieldKind::ExposureTime:
        for (size_t i = 0; i < p_stControl.vecItems.size(); ++i) {
            const double dMicro = itemMicroseconds(p_stControl.vecItemNames[i]);
            if (p_stControl.vecItems[i] == p_nValue && dMicro > 0) {
                p_strText = formatNumber(dMicro);
                return true;
            }
        }
        return false;
    }
    return false;
}

bool toModule(const OnvifField& p_stField, const StyleControl& p_stControl,
              const std::string& p_strText, int& p_nValue, std::string& p_strWhy) {
    double dValue = 0;
    if (p_stField.eKind == FieldKind::Mode) {
        for (size_t i = 0; i < p_stField.nModes; ++i) {
            if (p_strText == p_stField.pModes[i].szToken &&
                offers(p_stControl, p_stField.pModes[i].nValue)) {
                p_nValue = p_stField.pModes[i].nValue;
                return true;
            }
        }
        p_strWhy = std::string(p_stField.szSetting) + ": '" + p_strText.substr(0, 64) +
                   "' is not a mode this channel offers";
        return false;
    }
    if (!parseNumber(p_strText, dValue) || std::fabs(dValue) > 1e9) {
        p_strWhy = std::string(p_stField.szSetting) + ": '" + p_strText.substr(0, 64) +
                   "' is not a number";
        return false;
    }
    if (p_stField.eKind == FieldKind::ExposureTime) {
        for (size_t i = 0; i < p_stControl.vecItems.size(); ++i) {
            const double dMicro = itemMicroseconds(p_stControl.vecItemNames[i]);
            if (dMicro > 0 && std::fabs(dValue - dMicro) <= dMicro * EXPOSURE_TOLERANCE) {
                p_nValue = p_stControl.vecItems[i];
                return true;
            }
        }
        p_strWhy = std::string(p_stField.szSetting) + ": " + formatNumber(dValue) +
                   " us is not an exposure time this channel offers";
        return false;
    }
    // Levels are whole numbers in the module: the nearest one is taken.
    p_nValue = static_cast<int>(std::lround(dValue));
    if ((p_stControl.nMin && p_nValue < *p_stControl.nMin) ||
        (p_stControl.nMax && p_nValue > *p_stControl.nMax)) {
        p_strWhy = std::string(p_stField.szSetting) + ": " + formatNumber(dValue) + " is outside " +
                   std::to_string(p_stControl.nMin.value_or(p_nValue)) + " to " +
                   std::to_string(p_stControl.nMax.value_or(p_nValue));
        return false;
    }
    return true;
}

std::vector<std::string> modeTokens(const OnvifField& p_stField, const StyleControl& p_stControl) {
    std::vector<std::string> vecTokens;
    for (size_t i = 0; i < p_stField.nModes; ++i) {
        const std::string strToken = p_stField.pModes[i].szToken;
        if (offers(p_stControl, p_stField.pModes[i].nValue) &&
            std::find(vecTokens.begin(), vecTokens.end(), strToken) == vecTokens.end()) {
            vecTokens.push_back(strToken);
        }
    }
    return vecTokens;
}

bool fieldRange(const OnvifField& p_stField, const StyleControl& p_stControl, double& p_dMin,
                double& p_dMax) {
    if (p_stField.eKind == FieldKind::ExposureTime) {
        bool bAny = false;
        for (const std::string& strName : p_stControl.vecItemNames) {
            const double dMicro = itemMicroseconds(strName);
            if (dMicro > 0) {
                p_dMin = bAny ? std::min(p_dMin, dMicro) : dMicro;
                p_dMax = bAny ? std::max(p_dMax, dMicro) : dMicro;
                bAny = true;
            }
        }
        return bAny;
    }
    if (!p_stControl.nMin || !p_stControl.nMax) {
        return false;
    }
    p_dMin = *p_stControl.nMin;
    p_dMax = *p_stControl.nMax;
    return true;
}

} // namespace sensord
