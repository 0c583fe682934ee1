// Every request sensord serves, whatever the HTTP library: the size cap, the
// credentials, then the ONVIF services, the JSON API or the tuning page.
#pragma once

#include "tools/sensord/Credentials.h"
#include "tools/sensord/JsonApi.h"
#include "tools/sensord/OnvifService.h"
#include "tools/sensord/Reply.h"

class MachineInfo;

namespace sensord {

class ChannelService;

// The page's files, built into the binary (PageAssets.cpp is generated
// from tools/sensord/page/).
struct PageAsset {
    const char* szPath;
    const char* szContentType;
    const char* szBody;
};
const PageAsset* findPageAsset(const std::string& p_strPath);

class RequestHandler {
public:
    RequestHandler(ChannelService& p_objChannels, Credentials& p_objCredentials,
                   const MachineInfo& p_objMachine);
    HttpReply handle(const HttpRequest& p_stRequest);

private:
    Credentials& m_objCredentials;
    OnvifService m_objOnvif;
    JsonApi m_objApi;
};

} // namespace sensord
