// The small JSON API the tuning page uses (documented in the README):
//   GET  /api/v1/channels                       every channel's state
//   GET  /api/v1/channels/{n}                    one channel's state
//   GET  /api/v1/channels/{n}/parameters         tabs, controls, current values
//   GET  /api/v1/channels/{n}/parameters/{key}   one value
//   PUT  /api/v1/channels/{n}/parameters/{key}   {"value": V}
//   POST /api/v1/channels/{n}/flush | scheme {"scheme": S} | reset
#pragma once

#include "tools/sensord/Reply.h"

namespace sensord {

class ChannelService;

class JsonApi {
public:
    explicit JsonApi(ChannelService& p_objChannels) : m_objChannels(p_objChannels) {}
    HttpReply handle(const HttpRequest& p_stRequest);

private:
    HttpReply channelRequest(const HttpRequest& p_stRequest, int p_nChannel,
                             const std::string& p_strRest);
    HttpReply parameterRequest(const HttpRequest& p_stRequest, int p_nChannel,
                               const std::string& p_strKey);

    ChannelService& m_objChannels;
};

} // namespace sensord
