// One HTTP request as sensord's handlers see it, and their reply. The HTTP
// library fills the one and sends the other; everything between is plain
// code that tests and the fuzz target call directly.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace sensord {

struct HttpRequest {
    std::string strMethod; // "GET", "POST", ...
    std::string strPath;   // without the query
    std::string strBody;
    std::string strHost;          // the Host header, for the addresses ONVIF hands out
    std::string strAuthorization; // the Authorization header, or ""
};

struct HttpReply {
    int nStatus = 200;
    std::string strContentType = "application/json";
    std::string strBody;
    std::vector<std::pair<std::string, std::string>> vecHeaders;
};

// Requests larger than this are refused before they are read further.
constexpr size_t MAX_REQUEST_BYTES = 64 * 1024;

} // namespace sensord
