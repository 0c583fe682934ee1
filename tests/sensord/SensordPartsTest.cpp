// sensord's parts that decide what is let in and how values cross between
// ONVIF and the module: the credential checks, the field table and its
// conversions, and the bounds on SOAP requests.
#include <gtest/gtest.h>

#include <set>

#include "common/SensorKeys.h"
#include "tools/sensord/Credentials.h"
#include "tools/sensord/OnvifMapping.h"
#include "tools/sensord/SoapEnvelope.h"

using namespace sensord;

namespace {

constexpr int64_t NOW = 1800000000; // 2027-01-15T08:00:00Z

std::string tokenDigest(const std::string& p_strNonce, const std::string& p_strCreated,
                        const std::string& p_strPassword) {
    return base64Encode(sha1(p_strNonce + p_strCreated + p_strPassword));
}

std::string digestHeader(const std::string& p_strNonce, const std::string& p_strUri,
                         const std::string& p_strPassword) {
    const std::string strHa1 = md5Hex("admin:sensord:" + p_strPassword);
    const std::string strResponse =
        md5Hex(strHa1 + ":" + p_strNonce + ":00000001:c0ffee:auth:" + md5Hex("GET:" + p_strUri));
    return "Digest username=\"admin\", realm=\"sensord\", nonce=\"" + p_strNonce + "\", uri=\"" +
           p_strUri + "\", qop=auth, nc=00000001, cnonce=\"c0ffee\", response=\"" + strResponse +
           "\"";
}

std::string nonceOf(const std::string& p_strChallenge) {
    const size_t nStart = p_strChallenge.find("nonce=\"") + 7;
    return p_strChallenge.substr(nStart, p_strChallenge.find('"', nStart) - nStart);
}

StyleControl list(std::vector<int> p_vecItems, std::vector<std::string> p_vecNames) {
    StyleControl stControl;
    stControl.vecItems = std::move(p_vecItems);
    stControl.vecItemNames = std::move(p_vecNames);
    return stControl;
}

} // namespace

TEST(SensordCredentials, UsernameTokenNeedsTheRightDigestAFreshTimeAndANewNonce) {
    Credentials objCredentials("admin", "secret");
    const std::string strNonce = "0123456789abcdef";
    const std::string strCreated = "2027-01-15T08:00:00.250Z";
    const std::string strGood = tokenDigest(strNonce, strCreated, "secret");
    const std::string strNonce64 = base64Encode(strNonce);
    EXPECT_EQ(objCredentials.checkUsernameToken("admin", strGood, strNonce64, strCreated, NOW),
              AuthResult::Ok);
    const struct {
        const char* szUser;
        std::string strDigest;
        std::string strNonce;
        std::string strCreated;
        int64_t nNow;
        AuthResult eExpected;
    } CASES[] = {
        {"admin", strGood, strNonce64, strCreated, NOW, AuthResult::Refused}, // replayed
        {"admin", tokenDigest("fresh-nonce", strCreated, "secret"), base64Encode("fresh-nonce"),
         strCreated, NOW + 301, AuthResult::Stale},
        {"admin", tokenDigest("fresh-nonce", strCreated, "secret"), base64Encode("fresh-nonce"),
         strCreated, NOW - 301, AuthResult::Stale},
        {"admin", tokenDigest("other", strCreated, "wrong"), base64Encode("other"), strCreated, NOW,
         AuthResult::Refused},
        {"root", tokenDigest("other", strCreated, "secret"), base64Encode("other"), strCreated, NOW,
         AuthResult::Refused},
        {"admin", strGood, "not base64!", strCreated, NOW, AuthResult::Refused},
        {"admin", strGood, strNonce64, "2027-01-15 08:00:00", NOW, AuthResult::Refused},
        {"", "", "", "", NOW, AuthResult::Missing},
    };
    for (const auto& stCase : CASES) {
        EXPECT_EQ(objCredentials.checkUsernameToken(stCase.szUser, stCase.strDigest,
                                                    stCase.strNonce, stCase.strCreated,
                                                    stCase.nNow),
                  stCase.eExpected)
            << stCase.szUser << " " << stCase.strNonce << " " << stCase.nNow;
    }
}

TEST(SensordCredentials, HttpDigestChecksNonceUriAndResponse) {
    Credentials objCredentials("admin", "secret");
    const std::string strNonce = nonceOf(objCredentials.digestChallenge(false, NOW));
    std::string strForged = strNonce;
    strForged.back() = strForged.back() == '0' ? '1' : '0';
    const struct {
        std::string strHeader;
        std::string strPath;
        int64_t nNow;
        AuthResult eExpected;
    } CASES[] = {
        {digestHeader(strNonce, "/api/v1/channels", "secret"), "/api/v1/channels", NOW,
         AuthResult::Ok},
        {digestHeader(strNonce, "/api/v1/channels?x=1", "secret"), "/api/v1/channels", NOW,
         AuthResult::Ok},
        {digestHeader(strNonce, "/api/v1/channels", "secret"), "/", NOW, AuthResult::Refused},
        {digestHeader(strNonce, "/", "wrong"), "/", NOW, AuthResult::Refused},
        {digestHeader(strForged, "/", "secret"), "/", NOW, AuthResult::Refused},
        {digestHeader(strNonce, "/", "secret"), "/", NOW + 301, AuthResult::Stale},
        {"Basic YWRtaW46c2VjcmV0", "/", NOW, AuthResult::Refused},
        {"Digest username=\"admin", "/", NOW, AuthResult::Refused},
        {"", "/", NOW, AuthResult::Missing},
    };
    for (const auto& stCase : CASES) {
        EXPECT_EQ(objCredentials.checkDigest("GET", stCase.strPath, stCase.strHeader, stCase.nNow),
                  stCase.eExpected)
            << stCase.strHeader;
    }
    EXPECT_NE(objCredentials.digestChallenge(true, NOW).find("stale=true"), std::string::npos);
}

TEST(SensordMapping, EveryKeyAndPathOnceAndInSchemaOrder) {
    std::set<u32> setKeys;
    std::set<std::string> setPaths;
    for (const OnvifField& stField : onvifFields()) {
        EXPECT_TRUE(setKeys.insert(stField.nKey).second) << stField.szSetting;
        EXPECT_TRUE(setPaths.insert(stField.szSetting).second) << stField.szSetting;
        EXPECT_EQ(findSettingField(stField.szSetting), &stField);
        EXPECT_EQ(stField.eKind == FieldKind::Mode, stField.nModes > 0) << stField.szSetting;
    }
    EXPECT_EQ(findSettingField("Brightness")->nKey, KEY_BRIGHTNESS);
    EXPECT_EQ(findSettingField("Exposure/Window"), nullptr);
}

TEST(SensordMapping, ValuesConvertBothWaysWithinTheControl) {
    const OnvifField& stLevel = *findSettingField("Brightness");
    const OnvifField& stIrCut = *findSettingField("IrCutFilter");
    const OnvifField& stExposure = *findSettingField("Exposure/MaxExposureTime");
    StyleControl stSlider;
    stSlider.nMin = 0;
    stSlider.nMax = 100;
    const StyleControl stDayNight = list({0, 1, 2}, {"Auto", "Day", "Night"});
    const StyleControl stShutter = list({1, 4, 6}, {"1/25", "1/150", "1/250"});
    const struct {
        const OnvifField& stField;
        const StyleControl& stControl;
        const char* szText;
        bool bAccepted;
        int nValue;
    } CASES[] = {
        {stLevel, stSlider, "61", true, 61},       {stLevel, stSlider, "61.6", true, 62},
        {stLevel, stSlider, "100", true, 100},     {stLevel, stSlider, "101", false, 0},
        {stLevel, stSlider, "-1", false, 0},       {stLevel, stSlider, "nan", false, 0},
        {stLevel, stSlider, "5x", false, 0},       {stLevel, stSlider, "", false, 0},
        {stIrCut, stDayNight, "AUTO", true, 0},    {stIrCut, stDayNight, "ON", true, 1},
        {stIrCut, stDayNight, "OFF", true, 2},     {stIrCut, stDayNight, "on", false, 0},
        {stExposure, stShutter, "40000", true, 1}, {stExposure, stShutter, "6666.67", true, 4},
        {stExposure, stShutter, "4000", true, 6},  {stExposure, stShutter, "5000", false, 0},
    };
    for (const auto& stCase : CASES) {
        int nValue = -1;
        std::string strWhy;
        EXPECT_EQ(toModule(stCase.stField, stCase.stControl, stCase.szText, nValue, strWhy),
                  stCase.bAccepted)
            << stCase.stField.szSetting << " " << stCase.szText;
        if (stCase.bAccepted) {
            EXPECT_EQ(nValue, stCase.nValue) << stCase.szText;
            std::string strBack;
            ASSERT_TRUE(toOnvif(stCase.stField, stCase.stControl, nValue, strBack));
            int nAgain = -1;
            EXPECT_TRUE(toModule(stCase.stField, stCase.stControl, strBack, nAgain, strWhy));
            EXPECT_EQ(nAgain, nValue) << strBack;
        } else {
            EXPECT_NE(strWhy, "");
        }
    }
    // Timed switching reads as AUTO; a mode the control lacks is neither offered nor taken.
    std::string strText;
    EXPECT_TRUE(toOnvif(stIrCut, list({0, 3}, {"Auto", "Timed"}), 3, strText));
    EXPECT_EQ(strText, "AUTO");
    EXPECT_EQ(modeTokens(stIrCut, list({0, 3}, {"Auto", "Timed"})),
              std::vector<std::string>{"AUTO"});
    int nValue = 0;
    EXPECT_FALSE(toModule(stIrCut, list({0, 3}, {"Auto", "Timed"}), "ON", nValue, strText));
    double dMin = 0, dMax = 0;
    ASSERT_TRUE(fieldRange(stExposure, stShutter, dMin, dMax));
    EXPECT_EQ(std::make_pair(dMin, dMax), std::make_pair(4000.0, 40000.0));
}

TEST(SensordSoap, RequestsAreBoundedAndFaultsAreWellFormed) {
    const auto envelope = [](const std::string& p_strBody) {
        return "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body>" +
               p_strBody + "</s:Body></s:Envelope>";
    };
    const struct {
        std::string strText;
        bool bAccepted;
    } CASES[] = {
        {envelope("<GetStatus/>"), true},
        {envelope("<a x=\"1\"><b y='/>'/></a>"), true},
        {envelope(""), false},
        {"<Envelope><Body><x/></Body>", false},
        {"<Other><Body><x/></Body></Other>", false},
        {envelope([] {
             std::string strDeep;
             for (int i = 0; i < 60; ++i) {
                 strDeep = "<a " + std::string("x='/>'") + ">" + strDeep + "</a>";
             }
             return strDeep;
         }()),
         false},
        {envelope("<a>\xE2"), false},
    };
    for (const auto& stCase : CASES) {
        SoapRequest stRequest;
        std::string strWhy;
        EXPECT_EQ(parseSoap(stCase.strText, stRequest, strWhy), stCase.bAccepted)
            << stCase.strText.substr(0, 120);
        EXPECT_EQ(strWhy.empty(), stCase.bAccepted) << strWhy;
    }
    const HttpReply stFault =
        soapFault(400, "env:Sender", "ter:InvalidArgVal", nullptr, "a <b> & \"c\"");
    SoapRequest stParsed;
    std::string strWhy;
    ASSERT_TRUE(parseSoap(stFault.strBody, stParsed, strWhy)) << strWhy;
    EXPECT_EQ(localName(*stParsed.pOperation), "Fault");
    EXPECT_EQ(childText(child(stParsed.pOperation, "Reason"), "Text"), "a <b> & \"c\"");
}
