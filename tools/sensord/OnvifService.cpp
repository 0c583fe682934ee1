#include "tools/sensord/OnvifService.h"

#include <algorithm>
#include <cmath>
#include <ctime>

#include "common/SensorKeys.h"
#include "platform/MachineInfo.h"
#include "tools/sensord/ChannelService.h"
#include "tools/sensord/OnvifMapping.h"
#include "tools/sensord/SoapEnvelope.h"

namespace sensord {

namespace {

constexpr const char* DEVICE_PATH = "/onvif/device_service";
constexpr const char* MEDIA_PATH = "/onvif/media_service";
constexpr const char* IMAGING_PATH = "/onvif/imaging_service";
constexpr const char* PASSWORD_DIGEST_TYPE = "#PasswordDigest";
// A relative focus move steps the lens at most this often either way.
constexpr int MAX_RELATIVE_STEPS = 16;
constexpr int VIDEO_WIDTH = 1920;
constexpr int VIDEO_HEIGHT = 1080;

HttpReply invalidArg(const char* p_szDetail, const std::string& p_strReason) {
    return soapFault(400, "env:Sender", "ter:InvalidArgVal", p_szDetail, p_strReason);
}

HttpReply notAuthorized(const std::string& p_strReason) {
    return soapFault(400, "env:Sender", "ter:NotAuthorized", nullptr, p_strReason);
}

std::string token(const char* p_szPrefix, int p_nChannel) {
    return std::string(p_szPrefix) + std::to_string(p_nChannel);
}

void addRange(TiXmlElement* p_pParent, const std::string& p_strPath, double p_dMin, double p_dMax) {
    TiXmlElement* pRange = addPath(p_pParent, "tt:", p_strPath);
    add(pRange, "tt:Min", formatNumber(p_dMin));
    add(pRange, "tt:Max", formatNumber(p_dMax));
}

// The style control of a field with the shutter items cut to those the ISP
// lists for the key (when it lists any).
StyleControl effectiveControl(ChannelService& p_objChannels, int p_nChannel,
                              const StyleControl& p_stControl, const OnvifField& p_stField) {
    if (p_stField.eKind != FieldKind::ExposureTime) {
        return p_stControl;
    }
    const std::vector<int> vecIsp = p_objChannels.ispItems(p_nChannel, p_stField.nKey);
    if (vecIsp.empty()) {
        return p_stControl;
    }
    StyleControl stCut = p_stControl;
    stCut.vecItems.clear();
    stCut.vecItemNames.clear();
    for (size_t i = 0; i < p_stControl.vecItems.size(); ++i) {
        if (std::find(vecIsp.begin(), vecIsp.end(), p_stControl.vecItems[i]) != vecIsp.end()) {
            stCut.vecItems.push_back(p_stControl.vecItems[i]);
            stCut.vecItemNames.push_back(p_stControl.vecItemNames[i]);
        }
    }
    return stCut;
}

// The path of a leaf below p_pTop, local names joined by '/'.
std::string leafPath(const TiXmlElement* p_pTop, const TiXmlElement* p_pLeaf) {
    std::string strPath;
    for (const TiXmlNode* pAt = p_pLeaf; pAt != nullptr && pAt != p_pTop; pAt = pAt->Parent()) {
        const TiXmlElement* pElement = pAt->ToElement();
        strPath = localName(*pElement) + (strPath.empty() ? "" : "/" + strPath);
    }
    return strPath;
}

void collectLeaves(const TiXmlElement* p_pAt, std::vector<const TiXmlElement*>& p_vecLeaves) {
    if (p_pAt->FirstChildElement() == nullptr) {
        p_vecLeaves.push_back(p_pAt);
        return;
    }
    for (const TiXmlElement* pChild = p_pAt->FirstChildElement(); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        collectLeaves(pChild, p_vecLeaves);
    }
}

bool parseFloat(const std::string& p_strText, double& p_dValue) {
    char* pEnd = nullptr;
    p_dValue = std::strtod(p_strText.c_str(), &pEnd);
    return !p_strText.empty() && pEnd != nullptr && *pEnd == '\0' && std::isfinite(p_dValue);
}

} // namespace

const OnvifService::OperationRow OnvifService::OPERATIONS[] = {
    {DEVICE_PATH, "GetSystemDateAndTime", &OnvifService::getSystemDateAndTime, false},
    {DEVICE_PATH, "GetServices", &OnvifService::getServices, false},
    {DEVICE_PATH, "GetCapabilities", &OnvifService::getCapabilities, false},
    {DEVICE_PATH, "GetDeviceInformation", &OnvifService::getDeviceInformation, false},
    {MEDIA_PATH, "GetProfiles", &OnvifService::getProfiles, false},
    {MEDIA_PATH, "GetVideoSources", &OnvifService::getVideoSources, false},
    {IMAGING_PATH, "GetServiceCapabilities", &OnvifService::getServiceCapabilities, false},
    {IMAGING_PATH, "GetImagingSettings", &OnvifService::getImagingSettings, true},
    {IMAGING_PATH, "SetImagingSettings", &OnvifService::setImagingSettings, true},
    {IMAGING_PATH, "GetOptions", &OnvifService::getOptions, true},
    {IMAGING_PATH, "GetMoveOptions", &OnvifService::getMoveOptions, true},
    {IMAGING_PATH, "Move", &OnvifService::move, true},
    {IMAGING_PATH, "Stop", &OnvifService::stop, true},
    {IMAGING_PATH, "GetStatus", &OnvifService::getStatus, true},
    {IMAGING_PATH, "GetPresets", &OnvifService::getPresets, true},
    {IMAGING_PATH, "GetCurrentPreset", &OnvifService::getCurrentPreset, true},
    {IMAGING_PATH, "SetCurrentPreset", &OnvifService::setCurrentPreset, true},
};

OnvifService::OnvifService(ChannelService& p_objChannels, Credentials& p_objCredentials,
                           const MachineInfo& p_objMachine)
    : m_objChannels(p_objChannels), m_objCredentials(p_objCredentials), m_objMachine(p_objMachine) {
}

HttpReply OnvifService::handle(const HttpRequest& p_stRequest, AuthResult p_eHttpAuth) {
    if (p_stRequest.strBody.size() > MAX_REQUEST_BYTES) {
        return soapFault(413, "env:Sender", "ter:InvalidArgVal", nullptr,
                         "the request is larger than 64 KB");
    }
    SoapRequest stSoap;
    std::string strWhy;
    const bool bParsed = parseSoap(p_stRequest.strBody, stSoap, strWhy);
    // A client that signs in by HTTP Digest first sends the request without
    // credentials (often without a body): it must learn that they are needed.
    if (!bParsed && p_eHttpAuth != AuthResult::Ok) {
        return challenge(p_eHttpAuth);
    }
    if (!bParsed) {
        return soapFault(400, "env:Sender", "ter:WellFormed", nullptr, strWhy);
    }
    const std::string strName = localName(*stSoap.pOperation);
    const bool bOpen = p_stRequest.strPath == DEVICE_PATH && strName == "GetSystemDateAndTime";
    if (!bOpen) {
        const AuthResult eToken = checkSecurity(stSoap);
        if (eToken == AuthResult::Missing && p_eHttpAuth != AuthResult::Ok) {
            return challenge(p_eHttpAuth);
        }
        if (eToken == AuthResult::Stale) {
            return notAuthorized("the UsernameToken's creation time is too far from now");
        }
        if (eToken == AuthResult::Refused) {
            return notAuthorized("the UsernameToken was not accepted");
        }
    }
    for (const OperationRow& stRow : OPERATIONS) {
        if (p_stRequest.strPath == stRow.szPath && strName == stRow.szName) {
            // An operation on a video source is refused before it runs when
            // the source is not one of the channels.
            int nChannel = 0;
            if (stRow.bOnVideoSource) {
                HttpReply stFault;
                nChannel = channelOf(*stSoap.pOperation, stFault);
                if (nChannel == 0) {
                    return stFault;
                }
            }
            return (this->*stRow.pHandler)(p_stRequest, *stSoap.pOperation, nChannel);
        }
    }
    return soapFault(500, "env:Receiver", "ter:ActionNotSupported", nullptr,
                     "no operation " + strName.substr(0, 64) + " at " + p_stRequest.strPath);
}

HttpReply OnvifService::challenge(AuthResult p_eHttpAuth) const {
    HttpReply stReply = notAuthorized("credentials are required");
    stReply.nStatus = 401;
    stReply.vecHeaders.emplace_back(
        "WWW-Authenticate",
        m_objCredentials.digestChallenge(p_eHttpAuth == AuthResult::Stale, nowSeconds()));
    return stReply;
}

AuthResult OnvifService::checkSecurity(const SoapRequest& p_stSoap) {
    const TiXmlElement* pToken = child(child(p_stSoap.pHeader, "Security"), "UsernameToken");
    if (pToken == nullptr) {
        return AuthResult::Missing;
    }
    const TiXmlElement* pPassword = child(pToken, "Password");
    const char* szType = pPassword != nullptr ? pPassword->Attribute("Type") : nullptr;
    const std::string strType = szType != nullptr ? szType : "";
    // Only digests: a password in clear text would cross the network as it is.
    if (strType.size() < 15 ||
        strType.compare(strType.size() - 15, 15, PASSWORD_DIGEST_TYPE) != 0) {
        return AuthResult::Refused;
    }
    const AuthResult eResult = m_objCredentials.checkUsernameToken(
        childText(pToken, "Username"), elementText(pPassword), childText(pToken, "Nonce"),
        childText(pToken, "Created"), nowSeconds());
    return eResult == AuthResult::Missing ? AuthResult::Refused : eResult;
}

int OnvifService::channelOf(const TiXmlElement& p_objOperation, HttpReply& p_stFault) {
    const std::string strToken = childText(&p_objOperation, "VideoSourceToken");
    for (int n = 1; n <= m_objChannels.count(); ++n) {
        if (strToken == token("VideoSource_", n)) {
            return n;
        }
    }
    p_stFault = invalidArg("ter:NoSource", "no video source '" + strToken.substr(0, 64) + "'");
    return 0;
}

HttpReply OnvifService::getSystemDateAndTime(const HttpRequest&, const TiXmlElement&, int) {
    const std::time_t nNow = std::time(nullptr);
    std::tm stUtc{};
    gmtime_r(&nNow, &stUtc);
    SoapAnswer objAnswer;
    TiXmlElement* pTime =
        add(add(objAnswer.body(), "tds:GetSystemDateAndTimeResponse"), "tds:SystemDateAndTime");
    add(pTime, "tt:DateTimeType", "Manual");
    add(pTime, "tt:DaylightSavings", "false");
    add(add(pTime, "tt:TimeZone"), "tt:TZ", "UTC0");
    TiXmlElement* pUtc = add(pTime, "tt:UTCDateTime");
    TiXmlElement* pClock = add(pUtc, "tt:Time");
    add(pClock, "tt:Hour", std::to_string(stUtc.tm_hour));
    add(pClock, "tt:Minute", std::to_string(stUtc.tm_min));
    add(pClock, "tt:Second", std::to_string(stUtc.tm_sec));
    TiXmlElement* pDate = add(pUtc, "tt:Date");
    add(pDate, "tt:Year", std::to_string(stUtc.tm_year + 1900));
    add(pDate, "tt:Month", std::to_string(stUtc.tm_mon + 1));
    add(pDate, "tt:Day", std::to_string(stUtc.tm_mday));
    return objAnswer.reply();
}

HttpReply OnvifService::getServices(const HttpRequest& p_stRequest, const TiXmlElement&, int) {
    struct Service {
        const char* szNamespace;
        const char* szPath;
        int nMajor;
    };
    static constexpr Service SERVICES[] = {
        {"http://www.onvif.org/ver10/device/wsdl", DEVICE_PATH, 2},
        {"http://www.onvif.org/ver10/media/wsdl", MEDIA_PATH, 2},
        {"http://www.onvif.org/ver20/imaging/wsdl", IMAGING_PATH, 2},
    };
    SoapAnswer objAnswer;
    TiXmlElement* pResponse = add(objAnswer.body(), "tds:GetServicesResponse");
    for (const Service& stService : SERVICES) {
        TiXmlElement* pService = add(pResponse, "tds:Service");
        add(pService, "tds:Namespace", stService.szNamespace);
        add(pService, "tds:XAddr", "http://" + p_stRequest.strHost + stService.szPath);
        TiXmlElement* pVersion = add(pService, "tds:Version");
        add(pVersion, "tt:Major", std::to_string(stService.nMajor));
        add(pVersion, "tt:Minor", "0");
    }
    return objAnswer.reply();
}

HttpReply OnvifService::getCapabilities(const HttpRequest& p_stRequest, const TiXmlElement&, int) {
    SoapAnswer objAnswer;
    TiXmlElement* pCaps =
        add(add(objAnswer.body(), "tds:GetCapabilitiesResponse"), "tds:Capabilities");
    const std::string strBase = "http://" + p_stRequest.strHost;
    add(add(pCaps, "tt:Device"), "tt:XAddr", strBase + DEVICE_PATH);
    add(add(pCaps, "tt:Imaging"), "tt:XAddr", strBase + IMAGING_PATH);
    TiXmlElement* pMedia = add(pCaps, "tt:Media");
    add(pMedia, "tt:XAddr", strBase + MEDIA_PATH);
    TiXmlElement* pStreaming = add(pMedia, "tt:StreamingCapabilities");
    for (const char* szName : {"tt:RTPMulticast", "tt:RTP_TCP", "tt:RTP_RTSP_TCP"}) {
        add(pStreaming, szName, "false");
    }
    return objAnswer.reply();
}

HttpReply OnvifService::getDeviceInformation(const HttpRequest&, const TiXmlElement&, int) {
    SoapAnswer objAnswer;
    TiXmlElement* pInfo = add(objAnswer.body(), "tds:GetDeviceInformationResponse");
    add(pInfo, "tds:Manufacturer", "libsensordll");
    add(pInfo, "tds:Model", m_objMachine.getHardwareModel());
    add(pInfo, "tds:FirmwareVersion", "sensord 1.0");
    add(pInfo, "tds:SerialNumber", m_objMachine.getHardwareCode());
    add(pInfo, "tds:HardwareId", "device type " + std::to_string(m_objMachine.getDeviceType()));
    return objAnswer.reply();
}

void OnvifService::addProfile(TiXmlElement* p_pParent, int p_nChannel) {
    TiXmlElement* pProfile = add(p_pParent, "trt:Profiles");
    pProfile->SetAttribute("token", token("Profile_", p_nChannel));
    pProfile->SetAttribute("fixed", "true");
    add(pProfile, "tt:Name", token("Channel ", p_nChannel));
    TiXmlElement* pSource = add(pProfile, "tt:VideoSourceConfiguration");
    pSource->SetAttribute("token", token("VideoSourceConfig_", p_nChannel));
    add(pSource, "tt:Name", token("Source of channel ", p_nChannel));
    add(pSource, "tt:UseCount", "1");
    add(pSource, "tt:SourceToken", token("VideoSource_", p_nChannel));
    TiXmlElement* pBounds = add(pSource, "tt:Bounds");
    pBounds->SetAttribute("x", 0);
    pBounds->SetAttribute("y", 0);
    pBounds->SetAttribute("width", VIDEO_WIDTH);
    pBounds->SetAttribute("height", VIDEO_HEIGHT);
    TiXmlElement* pEncoder = add(pProfile, "tt:VideoEncoderConfiguration");
    pEncoder->SetAttribute("token", token("VideoEncoderConfig_", p_nChannel));
    add(pEncoder, "tt:Name", token("H.264 of channel ", p_nChannel));
    add(pEncoder, "tt:UseCount", "1");
    add(pEncoder, "tt:Encoding", "H264");
    TiXmlElement* pResolution = add(pEncoder, "tt:Resolution");
    add(pResolution, "tt:Width", std::to_string(VIDEO_WIDTH));
    add(pResolution, "tt:Height", std::to_string(VIDEO_HEIGHT));
    add(pEncoder, "tt:Quality", "5");
    TiXmlElement* pRate = add(pEncoder, "tt:RateControl");
    add(pRate, "tt:FrameRateLimit", "25");
    add(pRate, "tt:EncodingInterval", "1");
    add(pRate, "tt:BitrateLimit", "4096");
    TiXmlElement* pMulticast = add(pEncoder, "tt:Multicast");
    TiXmlElement* pAddress = add(pMulticast, "tt:Address");
    add(pAddress, "tt:Type", "IPv4");
    add(pAddress, "tt:IPv4Address", "0.0.0.0");
    add(pMulticast, "tt:Port", "0");
    add(pMulticast, "tt:TTL", "0");
    add(pMulticast, "tt:AutoStart", "false");
    add(pEncoder, "tt:SessionTimeout", "PT60S");
}

HttpReply OnvifService::getProfiles(const HttpRequest&, const TiXmlElement&, int) {
    SoapAnswer objAnswer;
    TiXmlElement* pResponse = add(objAnswer.body(), "trt:GetProfilesResponse");
    for (int n = 1; n <= m_objChannels.count(); ++n) {
        addProfile(pResponse, n);
    }
    return objAnswer.reply();
}

HttpReply OnvifService::getVideoSources(const HttpRequest&, const TiXmlElement&, int) {
    SoapAnswer objAnswer;
    TiXmlElement* pResponse = add(objAnswer.body(), "trt:GetVideoSourcesResponse");
    for (int n = 1; n <= m_objChannels.count(); ++n) {
        int nFps = 25;
        m_objChannels.read(n, KEY_SENSOR_FPS, nFps);
        TiXmlElement* pSource = add(pResponse, "trt:VideoSources");
        pSource->SetAttribute("token", token("VideoSource_", n));
        add(pSource, "tt:Framerate", std::to_string(nFps));
        TiXmlElement* pResolution = add(pSource, "tt:Resolution");
        add(pResolution, "tt:Width", std::to_string(VIDEO_WIDTH));
        add(pResolution, "tt:Height", std::to_string(VIDEO_HEIGHT));
    }
    return objAnswer.reply();
}

HttpReply OnvifService::getServiceCapabilities(const HttpRequest&, const TiXmlElement&, int) {
    SoapAnswer objAnswer;
    TiXmlElement* pCaps =
        add(add(objAnswer.body(), "timg:GetServiceCapabilitiesResponse"), "timg:Capabilities");
    pCaps->SetAttribute("ImageStabilization", "true");
    pCaps->SetAttribute("Presets", "true");
    pCaps->SetAttribute("AdaptablePreset", "false");
    return objAnswer.reply();
}

HttpReply OnvifService::getImagingSettings(const HttpRequest&, const TiXmlElement&,
                                           int p_nChannel) {
    const auto pStyle = m_objChannels.style(p_nChannel);
    SoapAnswer objAnswer;
    TiXmlElement* pSettings =
        add(add(objAnswer.body(), "timg:GetImagingSettingsResponse"), "timg:ImagingSettings");
    for (const OnvifField& stField : onvifFields()) {
        const StyleControl* pControl = pStyle->find(stField.nKey);
        int nValue = 0;
        std::string strText;
        if (pControl != nullptr && m_objChannels.read(p_nChannel, stField.nKey, nValue) &&
            toOnvif(stField, *pControl, nValue, strText)) {
            addPath(pSettings, "tt:", stField.szSetting)->InsertEndChild(TiXmlText(strText));
        }
    }
    return objAnswer.reply();
}

HttpReply OnvifService::setImagingSettings(const HttpRequest&, const TiXmlElement& p_objOperation,
                                           int p_nChannel) {
    const TiXmlElement* pSettings = child(&p_objOperation, "ImagingSettings");
    if (pSettings == nullptr) {
        return invalidArg("ter:SettingsInvalid", "the request holds no ImagingSettings");
    }
    std::vector<const TiXmlElement*> vecLeaves;
    collectLeaves(pSettings, vecLeaves);
    const auto pStyle = m_objChannels.style(p_nChannel);
    std::vector<KeyVal> vecValues;
    for (const TiXmlElement* pLeaf : vecLeaves) {
        if (pLeaf == pSettings) {
            continue; // empty settings: nothing to change
        }
        const std::string strPath = leafPath(pSettings, pLeaf);
        const OnvifField* pField = findSettingField(strPath);
        const StyleControl* pControl = pField != nullptr ? pStyle->find(pField->nKey) : nullptr;
        if (pControl == nullptr) {
            return invalidArg("ter:SettingsInvalid",
                              strPath.substr(0, 128) + " is not a setting of this video source");
        }
        int nValue = 0;
        std::string strWhy;
        if (!toModule(*pField, effectiveControl(m_objChannels, p_nChannel, *pControl, *pField),
                      elementText(pLeaf), nValue, strWhy)) {
            return invalidArg("ter:SettingsInvalid", strWhy);
        }
        for (const KeyVal& stSeen : vecValues) {
            if (stSeen.key == pField->nKey) {
                return invalidArg("ter:SettingsInvalid", strPath + " is given twice");
            }
        }
        vecValues.push_back({pField->nKey, static_cast<u32>(nValue)});
    }
    std::string strWhy;
    if (!m_objChannels.writeAll(p_nChannel, vecValues, strWhy)) {
        return invalidArg("ter:SettingsInvalid", strWhy);
    }
    // ForcePersistence defaults to true: the settings then survive a restart.
    if (!vecValues.empty() && childText(&p_objOperation, "ForcePersistence") != "false" &&
        !m_objChannels.flush(p_nChannel, strWhy)) {
        return soapFault(500, "env:Receiver", "ter:Action", nullptr,
                         "applied, but not stored on flash: " + strWhy);
    }
    SoapAnswer objAnswer;
    add(objAnswer.body(), "timg:SetImagingSettingsResponse");
    return objAnswer.reply();
}

HttpReply OnvifService::getOptions(const HttpRequest&, const TiXmlElement&, int p_nChannel) {
    const auto pStyle = m_objChannels.style(p_nChannel);
    SoapAnswer objAnswer;
    TiXmlElement* pOptions =
        add(add(objAnswer.body(), "timg:GetOptionsResponse"), "timg:ImagingOptions");
    for (const OnvifField& stField : onvifFields()) {
        const StyleControl* pControl = pStyle->find(stField.nKey);
        if (pControl == nullptr) {
            continue;
        }
        const StyleControl stControl =
            effectiveControl(m_objChannels, p_nChannel, *pControl, stField);
        double dMin = 0;
        double dMax = 0;
        if (stField.eKind == FieldKind::Mode) {
            for (const std::string& strToken : modeTokens(stField, stControl)) {
                addPath(pOptions, "tt:", stField.szOption)->InsertEndChild(TiXmlText(strToken));
            }
        } else if (fieldRange(stField, stControl, dMin, dMax)) {
            addRange(pOptions, stField.szOption, dMin, dMax);
        }
    }
    return objAnswer.reply();
}

bool OnvifService::focusRange(int p_nChannel, int& p_nMin, int& p_nMax) {
    const StyleControl* pControl = m_objChannels.style(p_nChannel)->find(KEY_MF_POSITION);
    if (pControl == nullptr || !pControl->nMin || !pControl->nMax) {
        return false;
    }
    p_nMin = *pControl->nMin;
    p_nMax = *pControl->nMax;
    return true;
}

HttpReply OnvifService::getMoveOptions(const HttpRequest&, const TiXmlElement&, int p_nChannel) {
    SoapAnswer objAnswer;
    TiXmlElement* pOptions =
        add(add(objAnswer.body(), "timg:GetMoveOptionsResponse"), "timg:MoveOptions");
    int nMin = 0;
    int nMax = 0;
    if (focusRange(p_nChannel, nMin, nMax)) {
        addRange(pOptions, "Absolute/Position", nMin, nMax);
        addRange(pOptions, "Relative/Distance", -MAX_RELATIVE_STEPS, MAX_RELATIVE_STEPS);
        addRange(pOptions, "Continuous/Speed", -1, 1);
    }
    return objAnswer.reply();
}

HttpReply OnvifService::move(const HttpRequest&, const TiXmlElement& p_objOperation,
                             int p_nChannel) {
    int nMin = 0;
    int nMax = 0;
    if (!focusRange(p_nChannel, nMin, nMax)) {
        return invalidArg("ter:NoFocus", "this video source has no focus lens");
    }
    const TiXmlElement* pFocus = child(&p_objOperation, "Focus");
    const TiXmlElement* pAbsolute = child(pFocus, "Absolute");
    const TiXmlElement* pRelative = child(pFocus, "Relative");
    const TiXmlElement* pContinuous = child(pFocus, "Continuous");
    double dValue = 0;
    bool bDone = false;
    std::atomic<bool>& bMoving = m_arrMoving[static_cast<size_t>(p_nChannel - 1)];
    if (pAbsolute != nullptr) {
        if (!parseFloat(childText(pAbsolute, "Position"), dValue) || dValue < nMin ||
            dValue > nMax) {
            return invalidArg("ter:SettingsInvalid", "the focus position is outside " +
                                                         std::to_string(nMin) + " to " +
                                                         std::to_string(nMax));
        }
        bMoving = false;
        bDone = m_objChannels.setFocus(p_nChannel, static_cast<int>(std::lround(dValue)));
    } else if (pRelative != nullptr) {
        if (!parseFloat(childText(pRelative, "Distance"), dValue) ||
            std::fabs(dValue) > MAX_RELATIVE_STEPS) {
            return invalidArg("ter:SettingsInvalid", "the focus distance is outside -" +
                                                         std::to_string(MAX_RELATIVE_STEPS) +
                                                         " to " +
                                                         std::to_string(MAX_RELATIVE_STEPS));
        }
        bMoving = false;
        const int nSteps = static_cast<int>(std::lround(dValue));
        bDone = m_objChannels.stepFocus(p_nChannel, nSteps > 0, std::abs(nSteps));
    } else if (pContinuous != nullptr) {
        if (!parseFloat(childText(pContinuous, "Speed"), dValue) || std::fabs(dValue) > 1) {
            return invalidArg("ter:SettingsInvalid", "the focus speed is outside -1 to 1");
        }
        bMoving = dValue != 0;
        bDone = dValue == 0 || m_objChannels.stepFocus(p_nChannel, dValue > 0, 1);
    } else {
        return invalidArg("ter:SettingsInvalid", "the move names no absolute, relative or "
                                                 "continuous focus move");
    }
    if (!bDone) {
        return soapFault(500, "env:Receiver", "ter:Action", nullptr, "the lens refused the move");
    }
    SoapAnswer objAnswer;
    add(objAnswer.body(), "timg:MoveResponse");
    return objAnswer.reply();
}

HttpReply OnvifService::stop(const HttpRequest&, const TiXmlElement&, int p_nChannel) {
    m_arrMoving[static_cast<size_t>(p_nChannel - 1)] = false;
    SoapAnswer objAnswer;
    add(objAnswer.body(), "timg:StopResponse");
    return objAnswer.reply();
}

HttpReply OnvifService::getStatus(const HttpRequest&, const TiXmlElement&, int p_nChannel) {
    SoapAnswer objAnswer;
    TiXmlElement* pStatus = add(add(objAnswer.body(), "timg:GetStatusResponse"), "timg:Status");
    int nMin = 0;
    int nMax = 0;
    int nPosition = 0;
    if (focusRange(p_nChannel, nMin, nMax)) {
        TiXmlElement* pFocus = add(pStatus, "tt:FocusStatus20");
        const bool bRead = m_objChannels.focusPosition(p_nChannel, nPosition);
        add(pFocus, "tt:Position", std::to_string(nPosition));
        add(pFocus, "tt:MoveStatus",
            m_arrMoving[static_cast<size_t>(p_nChannel - 1)] ? "MOVING" : "IDLE");
        if (!bRead) {
            add(pFocus, "tt:Error", "the lens did not report its position");
        }
    }
    return objAnswer.reply();
}

HttpReply OnvifService::getPresets(const HttpRequest&, const TiXmlElement&, int p_nChannel) {
    SoapAnswer objAnswer;
    TiXmlElement* pResponse = add(objAnswer.body(), "timg:GetPresetsResponse");
    for (int s = 0; s < m_objChannels.state(p_nChannel).nSchemeSum; ++s) {
        TiXmlElement* pPreset = add(pResponse, "timg:Preset");
        pPreset->SetAttribute("token", token("Scheme_", s));
        pPreset->SetAttribute("type", "Custom");
        add(pPreset, "tt:Name", token("Scheme ", s));
    }
    return objAnswer.reply();
}

HttpReply OnvifService::getCurrentPreset(const HttpRequest&, const TiXmlElement&, int p_nChannel) {
    const ChannelState stState = m_objChannels.state(p_nChannel);
    SoapAnswer objAnswer;
    TiXmlElement* pResponse = add(objAnswer.body(), "timg:GetCurrentPresetResponse");
    if (stState.nScheme >= 0 && stState.nScheme < stState.nSchemeSum) {
        TiXmlElement* pPreset = add(pResponse, "timg:Preset");
        pPreset->SetAttribute("token", token("Scheme_", stState.nScheme));
        pPreset->SetAttribute("type", "Custom");
        add(pPreset, "tt:Name", token("Scheme ", stState.nScheme));
    }
    return objAnswer.reply();
}

HttpReply OnvifService::setCurrentPreset(const HttpRequest&, const TiXmlElement& p_objOperation,
                                         int p_nChannel) {
    const std::string strToken = childText(&p_objOperation, "PresetToken");
    const int nSum = m_objChannels.state(p_nChannel).nSchemeSum;
    int nScheme = -1;
    for (int s = 0; s < nSum; ++s) {
        if (strToken == token("Scheme_", s)) {
            nScheme = s;
        }
    }
    std::string strWhy;
    if (nScheme < 0) {
        return invalidArg("ter:NoImagingPreset", "no preset '" + strToken.substr(0, 64) + "'");
    }
    if (!m_objChannels.setScheme(p_nChannel, nScheme, strWhy)) {
        return soapFault(500, "env:Receiver", "ter:Action", nullptr, strWhy);
    }
    SoapAnswer objAnswer;
    add(objAnswer.body(), "timg:SetCurrentPresetResponse");
    return objAnswer.reply();
}

} // namespace sensord
