// Every request sensord serves, as it comes off the network: method, path,
// Authorization header and body fuzzed. When the input asks for it the
// harness signs the request with a valid HTTP Digest header, so that the
// fuzzed bodies reach the ONVIF operations and the JSON API behind it.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "FuzzSupport.h"
#include "tools/HostBringUp.h"
#include "tools/sensord/ChannelService.h"
#include "tools/sensord/Credentials.h"
#include "tools/sensord/RequestHandler.h"

namespace {

constexpr const char* PASSWORD = "fuzz";
constexpr const char* METHODS[] = {"GET", "POST", "PUT", "DELETE"};
constexpr const char* PATHS[] = {
    "/onvif/device_service",
    "/onvif/media_service",
    "/onvif/imaging_service",
    "/api/v1/channels",
    "/api/v1/channels/1",
    "/api/v1/channels/1/parameters",
    "/api/v1/channels/1/parameters/34",
    "/api/v1/channels/1/scheme",
    "/api/v1/channels/1/flush",
    "/",
};

// One device brought up for the whole run, as sensord brings it up; the
// channels' threads pause a second between passes on the tool clock.
struct Served {
    std::string strDir;
    std::unique_ptr<HostBringUp> pBringUp;
    std::unique_ptr<sensord::ChannelService> pChannels;
    std::unique_ptr<sensord::Credentials> pCredentials;
    std::unique_ptr<sensord::RequestHandler> pHandler;
};

std::unique_ptr<Served> g_pServed;

// At exit: the channels are released while the statics their start-up made
// (reference counts, loggers) still stand, so this is registered after the
// bring-up; then the root is removed.
void release() {
    if (g_pServed) {
        const std::string strDir = g_pServed->strDir;
        g_pServed.reset();
        std::filesystem::remove_all(strDir);
    }
}

std::string digestFor(const std::string& p_strMethod, const std::string& p_strPath) {
    const std::string strChallenge =
        g_pServed->pCredentials->digestChallenge(false, sensord::nowSeconds());
    const size_t nStart = strChallenge.find("nonce=\"") + 7;
    const std::string strNonce =
        strChallenge.substr(nStart, strChallenge.find('"', nStart) - nStart);
    const std::string strHa1 = sensord::md5Hex(std::string("admin:sensord:") + PASSWORD);
    const std::string strResponse = sensord::md5Hex(strHa1 + ":" + strNonce + ":00000001:f:auth:" +
                                                    sensord::md5Hex(p_strMethod + ":" + p_strPath));
    return "Digest username=\"admin\", realm=\"sensord\", nonce=\"" + strNonce + "\", uri=\"" +
           p_strPath + "\", qop=auth, nc=00000001, cnonce=\"f\", response=\"" + strResponse + "\"";
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (std::getenv("SENSOR_FUZZ_VERBOSE") == nullptr &&
        std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 0;
    }
    const char* szTmp = std::getenv("TMPDIR");
    std::string strTemplate =
        std::string(szTmp != nullptr ? szTmp : "/tmp") + "/sensord-fuzz-XXXXXX";
    if (mkdtemp(strTemplate.data()) == nullptr) {
        std::abort();
    }
    g_pServed = std::make_unique<Served>();
    g_pServed->strDir = strTemplate;
    g_pServed->pBringUp = std::make_unique<HostBringUp>(
        std::string(SENSOR_SOURCE_DIR) + "/devices/ipc", strTemplate + "/root");
    std::string strError;
    if (!g_pServed->pBringUp->prepareRoot(false, strError) ||
        !g_pServed->pBringUp->bringUpChannels(strError)) {
        std::fprintf(stderr, "%s\n", strError.c_str());
        std::abort();
    }
    g_pServed->pChannels = std::make_unique<sensord::ChannelService>(g_pServed->pBringUp->host(),
                                                                     g_pServed->pBringUp->clock());
    g_pServed->pCredentials = std::make_unique<sensord::Credentials>("admin", PASSWORD);
    g_pServed->pHandler = std::make_unique<sensord::RequestHandler>(
        *g_pServed->pChannels, *g_pServed->pCredentials, g_pServed->pBringUp->host().machine());
    std::atexit(release);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    if (p_nSize < 2) {
        return 0;
    }
    // Byte 0: method (bits 0-1), sign it (bit 2), fuzzed path (bit 3); byte 1: path.
    const std::vector<std::string> vecParts = sensorfuzz::splitParts(p_pData + 2, p_nSize - 2, 3);
    sensord::HttpRequest stRequest;
    stRequest.strMethod = METHODS[p_pData[0] & 3];
    stRequest.strPath =
        (p_pData[0] & 8) != 0 ? vecParts[0] : PATHS[p_pData[1] % (sizeof(PATHS) / sizeof(*PATHS))];
    stRequest.strHost = "127.0.0.1:8080";
    stRequest.strAuthorization =
        (p_pData[0] & 4) != 0 ? digestFor(stRequest.strMethod, stRequest.strPath) : vecParts[1];
    stRequest.strBody = vecParts[2];
    const sensord::HttpReply stReply = g_pServed->pHandler->handle(stRequest);
    if (stReply.nStatus < 200 || stReply.nStatus > 599) {
        std::abort();
    }
    return 0;
}
