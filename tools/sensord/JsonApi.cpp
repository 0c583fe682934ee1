#include "tools/sensord/JsonApi.h"

#include <nlohmann/json.hpp>

#include "tools/ParamNames.h"
#include "tools/ValueParsing.h"
#include "tools/sensord/ChannelService.h"

namespace sensord {

namespace {

using nlohmann::json;

constexpr const char* API_PREFIX = "/api/v1/channels";

HttpReply jsonReply(int p_nStatus, const json& p_objBody) {
    HttpReply stReply;
    stReply.nStatus = p_nStatus;
    stReply.strBody = p_objBody.dump();
    return stReply;
}

HttpReply error(int p_nStatus, const std::string& p_strWhy) {
    return jsonReply(p_nStatus, json{{"error", p_strWhy}});
}

json stateJson(int p_nChannel, const ChannelState& p_stState) {
    static constexpr const char* POLICIES[] = {"none", "by time", "by day/night"};
    return json{{"channel", p_nChannel},
                {"up", p_stState.bUp},
                {"thermal", p_stState.bThermal},
                {"scheme", p_stState.nScheme},
                {"factorySet", p_stState.nScheme == p_stState.nSchemeSum},
                {"schemes", p_stState.nSchemeSum},
                {"mode", p_stState.nMode != 0 ? "auto" : "manual"},
                {"policy", p_stState.nPolicy >= 0 && p_stState.nPolicy <= 2
                               ? POLICIES[p_stState.nPolicy]
                               : "unknown"}};
}

json controlJson(const StyleControl& p_stControl) {
    json objControl{
        {"key", p_stControl.nId}, {"name", p_stControl.strName}, {"type", p_stControl.strType}};
    if (p_stControl.nMin) {
        objControl["min"] = *p_stControl.nMin;
    }
    if (p_stControl.nMax) {
        objControl["max"] = *p_stControl.nMax;
    }
    if (!p_stControl.vecItems.empty()) {
        json arrItems = json::array();
        for (size_t i = 0; i < p_stControl.vecItems.size(); ++i) {
            arrItems.push_back(
                {{"value", p_stControl.vecItems[i]}, {"name", p_stControl.vecItemNames[i]}});
        }
        objControl["items"] = arrItems;
    }
    return objControl;
}

// The body's one integer member, or false with the reply to give.
bool intMember(const std::string& p_strBody, const char* p_szName, int& p_nValue,
               HttpReply& p_stError) {
    const json objBody = json::parse(p_strBody, nullptr, false);
    if (objBody.is_discarded() || !objBody.is_object()) {
        p_stError = error(400, "the body is not a JSON object");
        return false;
    }
    const auto it = objBody.find(p_szName);
    if (it == objBody.end() || !it->is_number_integer() || *it < INT32_MIN || *it > INT32_MAX) {
        p_stError = error(400, std::string("the body needs \"") + p_szName + "\": a whole number");
        return false;
    }
    p_nValue = it->get<int>();
    return true;
}

} // namespace

HttpReply JsonApi::handle(const HttpRequest& p_stRequest) {
    const std::string& strPath = p_stRequest.strPath;
    const std::string strPrefix = API_PREFIX;
    if (strPath == strPrefix) {
        if (p_stRequest.strMethod != "GET") {
            return error(405, "only GET is allowed here");
        }
        json arrChannels = json::array();
        for (int n = 1; n <= m_objChannels.count(); ++n) {
            arrChannels.push_back(stateJson(n, m_objChannels.state(n)));
        }
        return jsonReply(200, arrChannels);
    }
    if (strPath.compare(0, strPrefix.size() + 1, strPrefix + "/") != 0) {
        return error(404, "no such resource");
    }
    const std::string strRest = strPath.substr(strPrefix.size() + 1);
    const size_t nSlash = strRest.find('/');
    int nChannel = 0;
    if (!parseInt(strRest.substr(0, nSlash), nChannel) || !m_objChannels.exists(nChannel)) {
        return error(404, "no channel " + strRest.substr(0, std::min<size_t>(nSlash, 16)));
    }
    return channelRequest(p_stRequest, nChannel,
                          nSlash == std::string::npos ? "" : strRest.substr(nSlash + 1));
}

HttpReply JsonApi::channelRequest(const HttpRequest& p_stRequest, int p_nChannel,
                                  const std::string& p_strRest) {
    const std::string& strMethod = p_stRequest.strMethod;
    if (p_strRest.empty() && strMethod == "GET") {
        return jsonReply(200, stateJson(p_nChannel, m_objChannels.state(p_nChannel)));
    }
    if (p_strRest == "parameters" && strMethod == "GET") {
        json objOut = stateJson(p_nChannel, m_objChannels.state(p_nChannel));
        json arrTabs = json::array();
        for (const StyleTab& stTab : m_objChannels.style(p_nChannel)->tabs()) {
            json arrControls = json::array();
            for (const StyleControl& stControl : stTab.vecControls) {
                json objControl = controlJson(stControl);
                int nValue = 0;
                if (m_objChannels.read(p_nChannel, stControl.nId, nValue)) {
                    objControl["value"] = nValue;
                }
                arrControls.push_back(objControl);
            }
            arrTabs.push_back({{"key", stTab.strKey},
                               {"name", stTab.strName.empty() ? stTab.strKey : stTab.strName},
                               {"controls", arrControls}});
        }
        objOut["tabs"] = arrTabs;
        return jsonReply(200, objOut);
    }
    if (p_strRest.compare(0, 11, "parameters/") == 0) {
        return parameterRequest(p_stRequest, p_nChannel, p_strRest.substr(11));
    }
    HttpReply stError;
    std::string strWhy;
    int nValue = 0;
    if (strMethod == "POST" && p_strRest == "flush") {
        return m_objChannels.flush(p_nChannel, strWhy) ? jsonReply(200, json{{"flushed", true}})
                                                       : error(409, strWhy);
    }
    if (strMethod == "POST" && p_strRest == "scheme") {
        if (!intMember(p_stRequest.strBody, "scheme", nValue, stError)) {
            return stError;
        }
        if (!m_objChannels.setScheme(p_nChannel, nValue, strWhy)) {
            return error(422, strWhy);
        }
        return jsonReply(200, stateJson(p_nChannel, m_objChannels.state(p_nChannel)));
    }
    if (strMethod == "POST" && p_strRest == "reset") {
        m_objChannels.reset(p_nChannel);
        return jsonReply(200, stateJson(p_nChannel, m_objChannels.state(p_nChannel)));
    }
    const bool bKnown = p_strRest.empty() || p_strRest == "parameters" || p_strRest == "flush" ||
                        p_strRest == "scheme" || p_strRest == "reset";
    return bKnown ? error(405, "method " + strMethod.substr(0, 16) + " is not allowed here")
                  : error(404, "no such resource");
}

HttpReply JsonApi::parameterRequest(const HttpRequest& p_stRequest, int p_nChannel,
                                    const std::string& p_strKey) {
    u32 nKey = 0;
    const std::shared_ptr<const StyleTree> pStyle = m_objChannels.style(p_nChannel);
    const StyleControl* pControl = keyFromText(p_strKey, nKey) ? pStyle->find(nKey) : nullptr;
    if (pControl == nullptr) {
        return error(404, "channel " + std::to_string(p_nChannel) + " has no parameter '" +
                              p_strKey.substr(0, 64) + "'");
    }
    int nValue = 0;
    if (p_stRequest.strMethod == "GET") {
        if (!m_objChannels.read(p_nChannel, nKey, nValue)) {
            return error(500, "the module could not read it");
        }
        return jsonReply(200, json{{"key", nKey}, {"name", pControl->strName}, {"value", nValue}});
    }
    if (p_stRequest.strMethod != "PUT") {
        return error(405, "only GET and PUT are allowed here");
    }
    HttpReply stError;
    if (!intMember(p_stRequest.strBody, "value", nValue, stError)) {
        return stError;
    }
    const WriteOutcome stOutcome = m_objChannels.write(p_nChannel, nKey, nValue);
    json objOut{{"key", nKey}, {"name", pControl->strName}, {"requested", nValue}};
    if (stOutcome.eKind == WriteOutcome::Kind::Refused ||
        stOutcome.eKind == WriteOutcome::Kind::Unknown) {
        objOut["error"] = stOutcome.strWhy;
        int nStored = 0;
        if (m_objChannels.read(p_nChannel, nKey, nStored)) {
            objOut["value"] = nStored;
        }
        return jsonReply(422, objOut);
    }
    objOut["value"] = stOutcome.nStored;
    if (stOutcome.eKind == WriteOutcome::Kind::Corrected) {
        objOut["corrected"] = stOutcome.strWhy;
    }
    return jsonReply(200, objOut);
}

} // namespace sensord
