// The ONVIF door: device, media and imaging (ver20) services over SOAP 1.2.
// One video source, profile and set of imaging settings per channel; the
// imaging presets are the channel's parameter schemes.
#pragma once

#include <array>
#include <atomic>
#include <string>

#include "tools/sensord/Credentials.h"
#include "tools/sensord/Reply.h"

class MachineInfo;
class TiXmlElement;

namespace sensord {

class ChannelService;
struct SoapRequest;

class OnvifService {
public:
    OnvifService(ChannelService& p_objChannels, Credentials& p_objCredentials,
                 const MachineInfo& p_objMachine);

    // p_eHttpAuth: what HTTP Digest made of the request's Authorization header.
    HttpReply handle(const HttpRequest& p_stRequest, AuthResult p_eHttpAuth);

private:
    // The channel is that of the request's VideoSourceToken for an operation on
    // a video source, 0 for the others.
    using Operation = HttpReply (OnvifService::*)(const HttpRequest&, const TiXmlElement&,
                                                  int p_nChannel);
    struct OperationRow {
        const char* szPath;
        const char* szName;
        Operation pHandler;
        bool bOnVideoSource;
    };

    AuthResult checkSecurity(const SoapRequest& p_stSoap);
    // 401 with a fresh HTTP Digest challenge and a NotAuthorized fault.
    HttpReply challenge(AuthResult p_eHttpAuth) const;
    // The channel a VideoSourceToken names, or 0 after filling p_stFault.
    int channelOf(const TiXmlElement& p_objOperation, HttpReply& p_stFault);

    HttpReply getSystemDateAndTime(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getServices(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getCapabilities(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getDeviceInformation(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getProfiles(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getVideoSources(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getServiceCapabilities(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getImagingSettings(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply setImagingSettings(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getOptions(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getMoveOptions(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply move(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply stop(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getStatus(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getPresets(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply getCurrentPreset(const HttpRequest&, const TiXmlElement&, int p_nChannel);
    HttpReply setCurrentPreset(const HttpRequest&, const TiXmlElement&, int p_nChannel);

    void addProfile(TiXmlElement* p_pParent, int p_nChannel);
    bool focusRange(int p_nChannel, int& p_nMin, int& p_nMax);

    static const OperationRow OPERATIONS[];

    ChannelService& m_objChannels;
    Credentials& m_objCredentials;
    const MachineInfo& m_objMachine;
    // A continuous focus move runs until Stop; the lens steps once per Move.
    std::array<std::atomic<bool>, 2> m_arrMoving{};
};

} // namespace sensord
