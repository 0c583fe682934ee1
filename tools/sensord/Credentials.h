// Who may ask sensord anything: one user and password, checked two ways.
// ONVIF clients prove it in the SOAP header (WS-Security UsernameToken with
// PasswordDigest); browsers and other HTTP clients with HTTP Digest. All
// digests and random bytes come from OpenSSL.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_set>

namespace sensord {

std::string base64Encode(const std::string& p_strBytes);
// False for text that is not base64.
bool base64Decode(const std::string& p_strText, std::string& p_strBytes);
std::string sha1(const std::string& p_strBytes); // raw 20 bytes
std::string md5Hex(const std::string& p_strText);
// p_nBytes random bytes from OpenSSL's generator; empty when it fails.
std::string randomBytes(size_t p_nBytes);
// A password for people to type: letters and digits only.
std::string randomPassword(size_t p_nLength);
// "2026-11-23T08:00:00Z" and "...:00.123Z" as seconds since 1970; false for
// anything else.
bool parseUtcTime(const std::string& p_strText, int64_t& p_nSeconds);

enum class AuthResult { Ok, Missing, Refused, Stale };

class Credentials {
public:
    // A creation time further than this from now is stale; nonces are
    // remembered this long, so a replay within it is refused.
    static constexpr int64_t WINDOW_SECONDS = 300;
    static constexpr size_t MAX_REMEMBERED_NONCES = 16384;

    Credentials(std::string p_strUser, std::string p_strPassword);

    // WS-Security UsernameToken: PasswordDigest = Base64(SHA-1(nonce + created
    // + password)), the nonce given in base64. p_nNow in seconds since 1970.
    AuthResult checkUsernameToken(const std::string& p_strUser, const std::string& p_strDigest,
                                  const std::string& p_strNonce, const std::string& p_strCreated,
                                  int64_t p_nNow);

    // HTTP Digest (MD5, qop=auth) on the Authorization header's value; its
    // uri must name the path asked for. Its nonces are signed, not stored:
    // one is good for the window, then the client is told it is stale. A
    // nonce, count and client nonce already answered within the window are
    // a replay and refused, as a UsernameToken's nonce is.
    AuthResult checkDigest(const std::string& p_strMethod, const std::string& p_strPath,
                           const std::string& p_strHeader, int64_t p_nNow);
    // The WWW-Authenticate value asking for it, with a fresh nonce.
    std::string digestChallenge(bool p_bStale, int64_t p_nNow) const;

    static constexpr const char* REALM = "sensord";

private:
    std::string nonceFor(int64_t p_nTime) const;
    bool rememberNonce(const std::string& p_strNonce, int64_t p_nNow);

    std::string m_strUser;
    std::string m_strPassword;
    std::string m_strSecret; // signs the HTTP Digest nonces
    std::mutex m_objMutex;
    std::deque<std::pair<int64_t, std::string>> m_deqNonces; // oldest first
    std::unordered_set<std::string> m_setNonces;
};

int64_t nowSeconds();

} // namespace sensord
