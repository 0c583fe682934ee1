#include "FuzzSupport.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"
#include "support/ControllerTestAccess.h"

namespace sensorfuzz {

namespace fs = std::filesystem;

int QuietVideoModule::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    out.clear();
    return 0;
}

int QuietVideoModule::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    out.setLimitFramesModeId(1);
    return 0;
}

FuzzWorld& FuzzWorld::get() {
    static FuzzWorld s_objWorld;
    return s_objWorld;
}

namespace {

void releaseChannel(ISensorController* p_pController) {
    p_pController->uinit();
    delete p_pController;
}

} // namespace

FuzzWorld::FuzzWorld()
    : m_pRoot(std::make_unique<sensortest::TempDeviceRoot>()), m_pChannel(nullptr, releaseChannel) {
    installClock(std::make_shared<VirtualClock>());
    if (std::getenv("SENSOR_FUZZ_VERBOSE") == nullptr) {
        // Traces and reports would cost more than the work being fuzzed.
        if (std::freopen("/dev/null", "w", stdout) == nullptr) {
            std::perror("stdout");
        }
    }
}

FuzzWorld::~FuzzWorld() {
    m_pChannel.reset();
    installClock(nullptr);
}

void FuzzWorld::releaseChannelAtExit() {
    get().m_pChannel.reset();
}

void FuzzWorld::useSampleDevice(const std::string& p_strName) {
    const fs::path src = fs::path(SENSOR_SOURCE_DIR) / "devices" / p_strName;
    if (!fs::exists(src / "hd1")) {
        std::fprintf(stderr, "sample device %s is missing\n", src.c_str());
        std::abort();
    }
    fs::copy(src, m_pRoot->path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    const fs::path profile = src / "isp_profile.xml";
    IspSimulator& objIsp = IspSimulator::instance();
    std::string strError;
    if (fs::exists(profile) && !objIsp.loadProfile(profile.string(), &strError)) {
        std::fprintf(stderr, "ISP profile %s: %s\n", profile.c_str(), strError.c_str());
        std::abort();
    }
    objIsp.reset();
    objIsp.enableLog(false);
}

ModuleConfigure FuzzWorld::moduleFor(int p_nChannel) const {
    const std::vector<ModuleConfigure> vecModules = sensortest::deviceModules();
    if (vecModules.empty()) {
        return ModuleConfigure();
    }
    const std::size_t nIndex =
        std::min<std::size_t>(static_cast<std::size_t>(p_nChannel - 1), vecModules.size() - 1);
    return vecModules[nIndex];
}

FuzzWorld::Channel FuzzWorld::bringUp(int p_nChannel) const {
    Channel pController(new ISensorController(), releaseChannel);
    pController->setChannelID(p_nChannel);
    pController->setVideoStreamModule(&m_objVideo);
    pController->init(moduleFor(p_nChannel));
    ISensorControllerTestAccess::stopThread(*pController);
    return pController;
}

ISensorController& FuzzWorld::channel() {
    if (!m_pChannel) {
        m_pChannel = bringUp(1);
        // The host framework's own statics (reference counts of the thread
        // binding) came to life during the bring-up, after this world; an
        // exit handler registered now runs before they are destroyed.
        std::atexit(releaseChannelAtExit);
    }
    return *m_pChannel;
}

std::vector<std::string> splitParts(const uint8_t* p_pData, std::size_t p_nSize,
                                    std::size_t p_nParts) {
    std::vector<std::string> vecParts(p_nParts);
    const char* pText = reinterpret_cast<const char*>(p_pData);
    std::size_t nStart = 0;
    for (std::size_t i = 0; i < p_nParts && nStart <= p_nSize; ++i) {
        std::size_t nEnd = p_nSize;
        if (i + 1 < p_nParts) {
            for (nEnd = nStart; nEnd < p_nSize && pText[nEnd] != '\0'; ++nEnd) {
            }
        }
        vecParts[i].assign(pText + nStart, nEnd - nStart);
        nStart = nEnd + 1;
    }
    return vecParts;
}

} // namespace sensorfuzz
