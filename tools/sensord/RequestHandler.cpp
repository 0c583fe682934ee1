#include "tools/sensord/RequestHandler.h"

namespace sensord {

RequestHandler::RequestHandler(ChannelService& p_objChannels, Credentials& p_objCredentials,
                               const MachineInfo& p_objMachine)
    : m_objCredentials(p_objCredentials), m_objOnvif(p_objChannels, p_objCredentials, p_objMachine),
      m_objApi(p_objChannels) {}

HttpReply RequestHandler::handle(const HttpRequest& p_stRequest) {
    const int64_t nNow = nowSeconds();
    const AuthResult eAuth = m_objCredentials.checkDigest(
        p_stRequest.strMethod, p_stRequest.strPath, p_stRequest.strAuthorization, nNow);
    if (p_stRequest.strPath.compare(0, 7, "/onvif/") == 0) {
        if (p_stRequest.strMethod != "POST") {
            HttpReply stReply;
            stReply.nStatus = 405;
            stReply.strContentType = "text/plain";
            stReply.strBody = "ONVIF services take SOAP requests by POST\n";
            return stReply;
        }
        return m_objOnvif.handle(p_stRequest, eAuth);
    }
    HttpReply stReply;
    if (eAuth != AuthResult::Ok) {
        stReply.nStatus = 401;
        stReply.strContentType = "text/plain";
        stReply.strBody = "sign in with the user and password sensord was started with\n";
        stReply.vecHeaders.emplace_back(
            "WWW-Authenticate", m_objCredentials.digestChallenge(eAuth == AuthResult::Stale, nNow));
        return stReply;
    }
    if (p_stRequest.strBody.size() > MAX_REQUEST_BYTES) {
        stReply.nStatus = 413;
        stReply.strBody = "{\"error\":\"the request is larger than 64 KB\"}";
        return stReply;
    }
    if (p_stRequest.strPath.compare(0, 8, "/api/v1/") == 0) {
        return m_objApi.handle(p_stRequest);
    }
    const PageAsset* pAsset = findPageAsset(p_stRequest.strPath);
    if (pAsset == nullptr || p_stRequest.strMethod != "GET") {
        stReply.nStatus = pAsset == nullptr ? 404 : 405;
        stReply.strContentType = "text/plain";
        stReply.strBody = pAsset == nullptr ? "not found\n" : "only GET is allowed here\n";
        return stReply;
    }
    stReply.strContentType = pAsset->szContentType;
    stReply.strBody = pAsset->szBody;
    return stReply;
}

} // namespace sensord
