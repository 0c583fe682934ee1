#include "tools/sensord/Credentials.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <map>

namespace sensord {

namespace {

std::string toHex(const unsigned char* p_pBytes, size_t p_nLength) {
    static constexpr char HEX[] = "0123456789abcdef";
    std::string strHex;
    for (size_t i = 0; i < p_nLength; ++i) {
        strHex += HEX[p_pBytes[i] >> 4];
        strHex += HEX[p_pBytes[i] & 15];
    }
    return strHex;
}

std::string digestOf(const EVP_MD* p_pType, const std::string& p_strBytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> arrOut{};
    unsigned int nLength = 0;
    if (EVP_Digest(p_strBytes.data(), p_strBytes.size(), arrOut.data(), &nLength, p_pType,
                   nullptr) != 1) {
        return {};
    }
    return std::string(reinterpret_cast<const char*>(arrOut.data()), nLength);
}

bool sameText(const std::string& p_strA, const std::string& p_strB) {
    return p_strA.size() == p_strB.size() &&
           CRYPTO_memcmp(p_strA.data(), p_strB.data(), p_strA.size()) == 0;
}

// The name="value" pairs of an Authorization header after its scheme word.
// Values may be quoted (with backslash escapes) or bare tokens.
bool digestParams(const std::string& p_strHeader, std::map<std::string, std::string>& p_mapOut) {
    static const std::string SCHEME = "Digest ";
    if (p_strHeader.compare(0, SCHEME.size(), SCHEME) != 0) {
        return false;
    }
    size_t i = SCHEME.size();
    while (i < p_strHeader.size()) {
        while (i < p_strHeader.size() && (p_strHeader[i] == ' ' || p_strHeader[i] == ',')) {
            ++i;
        }
        const size_t nEq = p_strHeader.find('=', i);
        if (i >= p_strHeader.size() || nEq == std::string::npos) {
            break;
        }
        const std::string strName = p_strHeader.substr(i, nEq - i);
        std::string strValue;
        i = nEq + 1;
        if (i < p_strHeader.size() && p_strHeader[i] == '"') {
            for (++i; i < p_strHeader.size() && p_strHeader[i] != '"'; ++i) {
                if (p_strHeader[i] == '\\' && i + 1 < p_strHeader.size()) {
                    ++i;
                }
                strValue += p_strHeader[i];
            }
            if (i >= p_strHeader.size()) {
                return false; // unterminated quote
            }
            ++i;
        } else {
            const size_t nEnd = std::min(p_strHeader.find(',', i), p_strHeader.size());
            strValue = p_strHeader.substr(i, nEnd - i);
            i = nEnd;
        }
        p_mapOut[strName] = strValue;
    }
    return !p_mapOut.empty();
}

} // namespace

std::string base64Encode(const std::string& p_strBytes) {
    std::string strOut(4 * ((p_strBytes.size() + 2) / 3) + 1, '\0');
    const int nLength = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(strOut.data()),
                                        reinterpret_cast<const unsigned char*>(p_strBytes.data()),
                                        static_cast<int>(p_strBytes.size()));
    strOut.resize(nLength > 0 ? static_cast<size_t>(nLength) : 0);
    return strOut;
}

bool base64Decode(const std::string& p_strText, std::string& p_strBytes) {
    if (p_strText.empty() || p_strText.size() % 4 != 0 || p_strText.size() > 4096) {
        return false;
    }
    std::string strOut(3 * p_strText.size() / 4 + 1, '\0');
    const int nLength = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(strOut.data()),
                                        reinterpret_cast<const unsigned char*>(p_strText.data()),
                                        static_cast<int>(p_strText.size()));
    if (nLength < 0) {
        return false;
    }
    // EVP_DecodeBlock counts the padding as zero bytes.
    size_t nPad = 0;
    for (size_t i = p_strText.size(); i > 0 && p_strText[i - 1] == '=' && nPad < 2; --i) {
        ++nPad;
    }
    strOut.resize(static_cast<size_t>(nLength) - nPad);
    p_strBytes = strOut;
    return true;
}

std::string sha1(const std::string& p_strBytes) {
    return digestOf(EVP_sha1(), p_strBytes);
}

std::string md5Hex(const std::string& p_strText) {
    const std::string strRaw = digestOf(EVP_md5(), p_strText);
    return toHex(reinterpret_cast<const unsigned char*>(strRaw.data()), strRaw.size());
}

std::string randomBytes(size_t p_nBytes) {
    std::string strOut(p_nBytes, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(strOut.data()), static_cast<int>(p_nBytes)) !=
        1) {
        return {};
    }
    return strOut;
}

std::string randomPassword(size_t p_nLength) {
    static constexpr char ALPHABET[] =
        "abcdefghijkmnopqrstuvwxyzABCDEFGHJKLMNPQRSTUVWXYZ23456789"; // no look-alikes
    const std::string strBytes = randomBytes(p_nLength);
    std::string strOut;
    for (unsigned char c : strBytes) {
        strOut += ALPHABET[c % (sizeof(ALPHABET) - 1)];
    }
    return strOut;
}

bool parseUtcTime(const std::string& p_strText, int64_t& p_nSeconds) {
    std::tm stTime{};
    int nConsumed = 0;
    if (p_strText.size() > 40 ||
        std::sscanf(p_strText.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &stTime.tm_year, &stTime.tm_mon,
                    &stTime.tm_mday, &stTime.tm_hour, &stTime.tm_min, &stTime.tm_sec,
                    &nConsumed) != 6 ||
        nConsumed != 19) {
        return false;
    }
    size_t i = 19;
    if (i < p_strText.size() && p_strText[i] == '.') {
        for (++i; i < p_strText.size() && p_strText[i] >= '0' && p_strText[i] <= '9'; ++i) {
        }
    }
    if (i + 1 != p_strText.size() || p_strText[i] != 'Z' || stTime.tm_mon < 1 ||
        stTime.tm_mon > 12 || stTime.tm_mday < 1 || stTime.tm_mday > 31 || stTime.tm_hour > 23 ||
        stTime.tm_min > 59 || stTime.tm_sec > 60) {
        return false;
    }
    stTime.tm_year -= 1900;
    stTime.tm_mon -= 1;
    p_nSeconds = static_cast<int64_t>(timegm(&stTime));
    return true;
}

int64_t nowSeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

Credentials::Credentials(std::string p_strUser, std::string p_strPassword)
    : m_strUser(std::move(p_strUser)), m_strPassword(std::move(p_strPassword)),
      m_strSecret(randomBytes(32)) {}

AuthResult Credentials::checkUsernameToken(const std::string& p_strUser,
                                           const std::string& p_strDigest,
                                           const std::string& p_strNonce,
                                           const std::string& p_strCreated, int64_t p_nNow) {
    std::string strNonce;
    int64_t nCreated = 0;
    if (p_strUser.empty() && p_strDigest.empty()) {
        return AuthResult::Missing;
    }
    if (!base64Decode(p_strNonce, strNonce) || !parseUtcTime(p_strCreated, nCreated)) {
        return AuthResult::Refused;
    }
    if (nCreated < p_nNow - WINDOW_SECONDS || nCreated > p_nNow + WINDOW_SECONDS) {
        return AuthResult::Stale;
    }
    const std::string strExpected = base64Encode(sha1(strNonce + p_strCreated + m_strPassword));
    if (!sameText(p_strUser, m_strUser) || !sameText(p_strDigest, strExpected)) {
        return AuthResult::Refused;
    }
    return rememberNonce(p_strNonce, p_nNow) ? AuthResult::Ok : AuthResult::Refused;
}

// A nonce seen within the window is a replay. The oldest are forgotten
// first; past the cap the oldest goes even inside the window, which bounds
// the memory an attacker with the password could make us keep.
bool Credentials::rememberNonce(const std::string& p_strNonce, int64_t p_nNow) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    while (!m_deqNonces.empty() && (m_deqNonces.front().first < p_nNow - 2 * WINDOW_SECONDS ||
                                    m_deqNonces.size() >= MAX_REMEMBERED_NONCES)) {
        m_setNonces.erase(m_deqNonces.front().second);
        m_deqNonces.pop_front();
    }
    if (!m_setNonces.insert(p_strNonce).second) {
        return false;
    }
    m_deqNonces.emplace_back(p_nNow, p_strNonce);
    return true;
}

std::string Credentials::nonceFor(int64_t p_nTime) const {
    char szTime[17];
    std::snprintf(szTime, sizeof(szTime), "%016llx", static_cast<unsigned long long>(p_nTime));
    std::array<unsigned char, EVP_MAX_MD_SIZE> arrMac{};
    unsigned int nLength = 0;
    HMAC(EVP_sha256(), m_strSecret.data(), static_cast<int>(m_strSecret.size()),
         reinterpret_cast<const unsigned char*>(szTime), 16, arrMac.data(), &nLength);
    return std::string(szTime) + toHex(arrMac.data(), nLength);
}

std::string Credentials::digestChallenge(bool p_bStale, int64_t p_nNow) const {
    return std::string("Digest realm=\"") + REALM + "\", qop=\"auth\", algorithm=MD5, nonce=\"" +
           nonceFor(p_nNow) + "\"" + (p_bStale ? ", stale=true" : "");
}

AuthResult Credentials::checkDigest(const std::string& p_strMethod, const std::string& p_strPath,
                                    const std::string& p_strHeader, int64_t p_nNow) {
    if (p_strHeader.empty()) {
        return AuthResult::Missing;
    }
    std::map<std::string, std::string> mapParams;
    if (p_strHeader.size() > 4096 || !digestParams(p_strHeader, mapParams)) {
        return AuthResult::Refused;
    }
    const std::string& strNonce = mapParams["nonce"];
    unsigned long long nIssued = 0;
    if (strNonce.size() < 16 ||
        std::sscanf(strNonce.substr(0, 16).c_str(), "%llx", &nIssued) != 1 ||
        !sameText(strNonce, nonceFor(static_cast<int64_t>(nIssued))) ||
        mapParams["realm"] != REALM || mapParams["qop"] != "auth" ||
        !sameText(mapParams["username"], m_strUser) ||
        mapParams["uri"].substr(0, mapParams["uri"].find('?')) != p_strPath) {
        return AuthResult::Refused;
    }
    const std::string strHa1 = md5Hex(m_strUser + ":" + REALM + ":" + m_strPassword);
    const std::string strHa2 = md5Hex(p_strMethod + ":" + mapParams["uri"]);
    const std::string strExpected = md5Hex(strHa1 + ":" + strNonce + ":" + mapParams["nc"] + ":" +
                                           mapParams["cnonce"] + ":auth:" + strHa2);
    if (!sameText(mapParams["response"], strExpected)) {
        return AuthResult::Refused;
    }
    if (static_cast<int64_t>(nIssued) < p_nNow - WINDOW_SECONDS) {
        return AuthResult::Stale;
    }
    // ':' never occurs in a base64 token nonce, so the two kinds cannot meet.
    return rememberNonce(strNonce + ":" + mapParams["nc"] + ":" + mapParams["cnonce"], p_nNow)
               ? AuthResult::Ok
               : AuthResult::Refused;
}

} // namespace sensord
