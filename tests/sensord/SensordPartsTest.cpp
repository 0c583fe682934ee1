// sensord's parts that decide what is let in and how values cross between ONVIF and the module:
// the command line and password file, the credential checks, the field table and its
// conversions, and the bounds on SOAP requests.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <set>
#include <tuple>

#include "common/SensorKeys.h"
#include "support/TestSupport.h"
#include "tools/sensord/Credentials.h"
#include "tools/sensord/OnvifMapping.h"
#include "tools/sensord/SensordOptions.h"
#include "tools/sensord/SoapEnvelope.h"

using namespace sensord;

namespace {

constexpr int64_t NOW = 1800000000; // 2027-01-15T08:00:00Z
constexpr AuthResult OK = AuthResult::Ok, MISSING = AuthResult::Missing,
                     REFUSED = AuthResult::Refused, STALE = AuthResult::Stale;

// p_strCount: the request's count under its nonce, as clients send it.
std::string digestHeader(const std::string& p_strNonce, const std::string& p_strUri,
                         const std::string& p_strPassword, const std::string& p_strCount = "1") {
    const std::string strHa1 = md5Hex("admin:sensord:" + p_strPassword);
    const std::string strResponse = md5Hex(strHa1 + ":" + p_strNonce + ":" + p_strCount +
                                           ":c0ffee:auth:" + md5Hex("GET:" + p_strUri));
    return "Digest username=\"admin\", realm=\"sensord\", nonce=\"" + p_strNonce + "\", uri=\"" +
           p_strUri + "\", qop=auth, nc=" + p_strCount + ", cnonce=\"c0ffee\", response=\"" +
           strResponse + "\"";
}

} // namespace

TEST(SensordCredentials, TokensAndDigestsNeedTheRightSecretAFreshTimeAndTheirOwnNonce) {
    Credentials objCredentials("admin", "secret");
    const std::string strAt = "2027-01-15T08:00:00.250Z";
    // (user, nonce, password signed, creation time, now, result): the nonce goes base64 encoded
    // unless it is "not base64!"; no password sends no digest. A good token, then its replay.
    const std::tuple<const char*, std::string, const char*, std::string, int64_t, AuthResult>
        aCases[] = {{"admin", "0123456789abcdef", "secret", strAt, NOW, OK},
                    {"admin", "0123456789abcdef", "secret", strAt, NOW, REFUSED},
                    {"admin", "fresh-nonce", "secret", strAt, NOW + 301, STALE},
                    {"admin", "fresh-nonce", "secret", strAt, NOW - 301, STALE},
                    {"admin", "other", "wrong", strAt, NOW, REFUSED},
                    {"root", "other", "secret", strAt, NOW, REFUSED},
                    {"admin", "not base64!", "secret", strAt, NOW, REFUSED},
                    {"admin", "time-nonce", "secret", "2027-01-15 08:00:00", NOW, REFUSED},
                    {"", "", nullptr, "", NOW, MISSING}};
    for (const auto& [szUser, strNonce, szPassword, strCreated, nNow, eExpected] : aCases) {
        const std::string strDigest =
            szPassword ? base64Encode(sha1(strNonce + strCreated + szPassword)) : "";
        const std::string strSent = strNonce == "not base64!" ? strNonce : base64Encode(strNonce);
        EXPECT_EQ(eExpected,
                  objCredentials.checkUsernameToken(szUser, strDigest, strSent, strCreated, nNow))
            << szUser << " " << strNonce << " " << strCreated << " " << nNow;
    }

    // HTTP Digest: the nonce sensord signed, the URI asked for, the response,
    // and a request count not answered before (the second row is a replay).
    const std::string strChallenge = objCredentials.digestChallenge(false, NOW);
    std::string strNonce = strChallenge.substr(strChallenge.find("nonce=\"") + 7);
    strNonce.resize(strNonce.find('"'));
    std::string strForged = strNonce;
    strForged.back() = strForged.back() == '0' ? '1' : '0';
    const std::string strList = "/api/v1/channels";
    // (Authorization header, path asked for, now, result)
    const std::tuple<std::string, std::string, int64_t, AuthResult> aDigests[] = {
        {digestHeader(strNonce, strList, "secret"), strList, NOW, OK},
        {digestHeader(strNonce, strList, "secret"), strList, NOW, REFUSED},
        {digestHeader(strNonce, strList + "?x=1", "secret", "2"), strList, NOW, OK},
        {digestHeader(strNonce, strList, "secret"), "/", NOW, REFUSED},
        {digestHeader(strNonce, "/", "wrong"), "/", NOW, REFUSED},
        {digestHeader(strForged, "/", "secret"), "/", NOW, REFUSED},
        {digestHeader(strNonce, "/", "secret"), "/", NOW + 301, STALE},
        {"Basic YWRtaW46c2VjcmV0", "/", NOW, REFUSED},
        {"Digest username=\"admin", "/", NOW, REFUSED},
        {"", "/", NOW, MISSING}};
    for (const auto& [strHeader, strPath, nDigestNow, eDigest] : aDigests) {
        EXPECT_EQ(eDigest, objCredentials.checkDigest("GET", strPath, strHeader, nDigestNow))
            << strHeader;
    }
    EXPECT_NE(objCredentials.digestChallenge(true, NOW).find("stale=true"), std::string::npos);
}

TEST(SensordMapping, EveryKeyAndPathOnceAndValuesConvertBothWaysWithinTheControl) {
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

    const OnvifField& stLevel = *findSettingField("Brightness");
    const OnvifField& stIrCut = *findSettingField("IrCutFilter");
    const OnvifField& stExposure = *findSettingField("Exposure/MaxExposureTime");
    const StyleControl stSlider{0, "", "", false, 0, {}, {}, 0, 100};
    const StyleControl stDayNight{0, "", "", false, 0, {0, 1, 2}, {"Auto", "Day", "Night"}, {}, {}};
    const StyleControl stShutter{0,  "", "", false, 0, {1, 4, 6}, {"1/25", "1/150", "1/250"},
                                 {}, {}};
    const StyleControl stTimed{0, "", "", false, 0, {0, 3}, {"Auto", "Timed"}, {}, {}};
    // (field, control, ONVIF text, module value or -1 for a refusal); what is taken converts
    // back to a text that gives the same value.
    const std::tuple<const OnvifField&, const StyleControl&, const char*, int> aCases[] = {
        {stLevel, stSlider, "61", 61},         {stLevel, stSlider, "61.6", 62},
        {stLevel, stSlider, "100", 100},       {stLevel, stSlider, "101", -1},
        {stLevel, stSlider, "-1", -1},         {stLevel, stSlider, "nan", -1},
        {stLevel, stSlider, "5x", -1},         {stLevel, stSlider, "", -1},
        {stIrCut, stDayNight, "AUTO", 0},      {stIrCut, stDayNight, "ON", 1},
        {stIrCut, stDayNight, "OFF", 2},       {stIrCut, stDayNight, "on", -1},
        {stIrCut, stTimed, "ON", -1},          {stExposure, stShutter, "40000", 1},
        {stExposure, stShutter, "6666.67", 4}, {stExposure, stShutter, "4000", 6},
        {stExposure, stShutter, "5000", -1}};
    for (const auto& [stField, stControl, szText, nExpected] : aCases) {
        SCOPED_TRACE(std::string(stField.szSetting) + " " + szText);
        int nValue = -1, nAgain = -1;
        std::string strWhy, strBack;
        EXPECT_EQ(nExpected >= 0, toModule(stField, stControl, szText, nValue, strWhy));
        EXPECT_EQ(nExpected >= 0, strWhy.empty()) << strWhy;
        if (nExpected >= 0) {
            EXPECT_EQ(nExpected, nValue);
            ASSERT_TRUE(toOnvif(stField, stControl, nValue, strBack));
            EXPECT_TRUE(toModule(stField, stControl, strBack, nAgain, strWhy));
            EXPECT_EQ(nAgain, nValue) << strBack;
        }
    }
    // Timed switching reads as AUTO; a mode the control lacks is not offered (nor taken, above).
    std::string strText;
    EXPECT_TRUE(toOnvif(stIrCut, stTimed, 3, strText));
    EXPECT_EQ(strText, "AUTO");
    EXPECT_EQ(modeTokens(stIrCut, stTimed), std::vector<std::string>{"AUTO"});
    double dMin = 0, dMax = 0;
    ASSERT_TRUE(fieldRange(stExposure, stShutter, dMin, dMax));
    EXPECT_EQ(std::make_pair(dMin, dMax), std::make_pair(4000.0, 40000.0));
}

TEST(SensordSoap, RequestsAreBoundedAndFaultsAreWellFormed) {
    const auto envelope = [](const std::string& p_strBody) {
        return "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body>" +
               p_strBody + "</s:Body></s:Envelope>";
    };
    std::string strDeep;
    for (int i = 0; i < 60; ++i) {
        strDeep = "<a x='/>'>" + strDeep + "</a>";
    }
    const std::pair<bool, std::string> aCases[] = {{true, envelope("<GetStatus/>")},
                                                   {true, envelope("<a x=\"1\"><b y='/>'/></a>")},
                                                   {false, envelope("")},
                                                   {false, "<Envelope><Body><x/></Body>"},
                                                   {false, envelope(strDeep)},
                                                   {false, "<Other><Body><x/></Body></Other>"},
                                                   {false, envelope("<a>\xE2")}};
    for (const auto& [bAccepted, strText] : aCases) {
        SoapRequest stRequest;
        std::string strWhy;
        EXPECT_EQ(parseSoap(strText, stRequest, strWhy), bAccepted) << strText.substr(0, 120);
        EXPECT_EQ(strWhy.empty(), bAccepted) << strWhy;
    }
    const HttpReply stFault =
        soapFault(400, "env:Sender", "ter:InvalidArgVal", nullptr, "a <b> & \"c\"");
    SoapRequest stParsed;
    std::string strWhy;
    ASSERT_TRUE(parseSoap(stFault.strBody, stParsed, strWhy)) << strWhy;
    EXPECT_EQ(localName(*stParsed.pOperation), "Fault");
    EXPECT_EQ(childText(child(stParsed.pOperation, "Reason"), "Text"), "a <b> & \"c\"");
}

// Both tools walk their command lines alike: the device options, then each one's own.
TEST(SensordOptions, CommandLinesAndThePasswordFileAreTakenOrRefusedWithTheirReason) {
    const auto parse = [](std::vector<std::string> vecArgs, auto& stOptions, auto fnParse) {
        vecArgs.insert(vecArgs.begin(), "tool");
        std::vector<char*> vecArgv;
        for (std::string& strArg : vecArgs) {
            vecArgv.push_back(strArg.data());
        }
        std::string strError;
        fnParse(static_cast<int>(vecArgv.size()), vecArgv.data(), stOptions, strError);
        return strError;
    };
    Options stTool;
    EXPECT_EQ("", parse({"--device", "dome", "--root", "/r", "--fresh", "--channel", "2", "-c", "a",
                         "-c", "b", "-h"},
                        stTool, parseOptions));
    EXPECT_EQ(std::make_tuple(std::string("dome"), std::string("/r"), true, true, 2, 2u),
              std::make_tuple(stTool.strDevice, stTool.strRoot, stTool.bFresh, stTool.bHelp,
                              stTool.nChannel, stTool.vecCommands.size()));
    SensordOptions stServer;
    EXPECT_EQ("", parse({"--listen", "0.0.0.0:0", "--user", "u", "--password-file", "f"}, stServer,
                        parseSensordOptions));
    EXPECT_EQ(std::make_tuple(std::string("0.0.0.0"), 0, std::string("ipc")),
              std::make_tuple(stServer.strHost, stServer.nPort, stServer.strDevice));
    const std::pair<std::vector<std::string>, const char*> aRefused[] = {
        {{"--channel", "x"}, "--channel needs a channel number, not 'x'"},
        {{"--root"}, "option --root needs a value"},
        {{"--listen", "1:2"}, "unknown option '--listen'"},
        {{"--channel", "1"}, "unknown option '--channel'"},
        {{"--listen", "nohost"}, "--listen needs HOST:PORT, not 'nohost'"},
        {{"--user", "u"}, "--user and --password-file go together"}};
    for (std::size_t i = 0; i < std::size(aRefused); ++i) {
        Options stOne;
        SensordOptions stOther;
        EXPECT_EQ(aRefused[i].second, i < 3
                                          ? parse(aRefused[i].first, stOne, parseOptions)
                                          : parse(aRefused[i].first, stOther, parseSensordOptions));
    }

    sensortest::TempDeviceRoot objRoot;
    const std::string strLong(257, 'p');
    // (file, the password taken from it or nullptr for a refusal)
    const std::pair<std::string, const char*> aFiles[] = {{"pw\r\nsecond line", "pw"},
                                                          {strLong.substr(1), strLong.c_str() + 1},
                                                          {strLong, nullptr},
                                                          {"\npw", nullptr}};
    for (const auto& [strText, szTaken] : aFiles) {
        objRoot.writeFile("/password", strText);
        std::string strPassword, strError;
        EXPECT_EQ(szTaken != nullptr,
                  readPasswordFile(objRoot.hostPath("/password"), strPassword, strError))
            << strError;
        EXPECT_EQ(szTaken ? szTaken : "", strPassword);
    }
    const std::string strDir = objRoot.hostPath("/");
    // The FIFO has a writer that is closed after a while, so that a reader that opens it
    // anyway is found out instead of hanging the test.
    ASSERT_EQ(0, ::mkfifo((strDir + "/fifo").c_str(), 0600));
    const int nFifo = ::open((strDir + "/fifo").c_str(), O_RDWR | O_NONBLOCK);
    std::string strPassword, strError;
    auto futRead = std::async(std::launch::async, [&] {
        return readPasswordFile(strDir + "/fifo", strPassword, strError);
    });
    EXPECT_EQ(std::future_status::ready, futRead.wait_for(std::chrono::seconds(5)));
    ::close(nFifo);
    EXPECT_FALSE(futRead.get());
    EXPECT_NE(strError.find("not a regular file"), std::string::npos) << strError;
}
