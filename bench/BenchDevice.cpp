#include "BenchDevice.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

#include "config/SensorXml.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"

namespace sensorbench {

int silenceStandardOutput() {
    const int nReportFd = ::dup(1);
    const int nNull = ::open("/dev/null", O_WRONLY);
    if (nReportFd < 0 || nNull < 0 || ::dup2(nNull, 1) < 0) {
        std::perror("redirecting standard output");
        return -1;
    }
    ::close(nNull);
    return nReportFd;
}

namespace fs = std::filesystem;

namespace {

constexpr const char* STYLE_FILE = "/hd1/moduleConfig/sensorConfig/style/Style.xml";
// Ids of the copies: far above every key, one block per copy.
constexpr int COPY_ID_STRIDE = 100000;

template <class Visit> void forEachElement(TiXmlElement* p_pNode, Visit&& p_fnVisit) {
    for (TiXmlElement* pChild = p_pNode->FirstChildElement(); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        p_fnVisit(pChild);
        forEachElement(pChild, p_fnVisit);
    }
}

// Appends p_nScale - 1 copies of every tab. A copy's controls get ids no key
// has and no "value", so the tree (parse, print, the dynamic style's walks)
// grows with the scale while the parameter set stays the ipc set.
void scaleStyle(const sensortest::TempDeviceRoot& p_objRoot, int p_nScale) {
    TiXmlDocumentEx objDoc;
    if (!objDoc.LoadMem(p_objRoot.readFile(STYLE_FILE).c_str(), TIXML_ENCODING_UTF8)) {
        std::fprintf(stderr, "style of the bench device does not parse\n");
        std::abort();
    }
    TiXmlElement* pRoot = objDoc.RootElement();
    std::vector<const TiXmlElement*> vecTabs;
    for (const TiXmlElement* pTab = pRoot->FirstChildElement(); pTab != nullptr;
         pTab = pTab->NextSiblingElement()) {
        vecTabs.push_back(pTab);
    }
    for (int nCopy = 1; nCopy < p_nScale; ++nCopy) {
        for (const TiXmlElement* pTab : vecTabs) {
            TiXmlElement objTab(*pTab);
            objTab.SetAttribute(
                "key", std::string(pTab->Attribute("key") ? pTab->Attribute("key") : "tab") +
                           "_copy" + std::to_string(nCopy));
            forEachElement(&objTab, [nCopy](TiXmlElement* pNode) {
                int nId = 0;
                if (pNode->QueryIntAttribute("id", &nId) == TIXML_SUCCESS) {
                    pNode->SetAttribute("id", nId + nCopy * COPY_ID_STRIDE);
                    pNode->RemoveAttribute("value");
                }
            });
            pRoot->InsertEndChild(objTab);
        }
    }
    std::string strText;
    objDoc.getXmlString(strText);
    p_objRoot.writeFile(STYLE_FILE, strText);
}

} // namespace

int IdleVideoModule::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    out.clear();
    return 0;
}

int IdleVideoModule::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    out.setLimitFramesModeId(1);
    return 0;
}

BenchDevice::BenchDevice(const std::string& p_strName, int p_nStyleScale) {
    const fs::path src = fs::path(SENSOR_SOURCE_DIR) / "devices" / p_strName;
    fs::copy(src, m_objRoot.path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    if (p_nStyleScale > 1) {
        scaleStyle(m_objRoot, p_nStyleScale);
    }
    std::string strError;
    if (!IspSimulator::instance().loadProfile((src / "isp_profile.xml").string(), &strError)) {
        std::fprintf(stderr, "ISP profile of %s: %s\n", p_strName.c_str(), strError.c_str());
        std::abort();
    }
    IspSimulator::instance().enableLog(false);
    installClock(std::make_shared<VirtualClock>());

    const std::vector<ModuleConfigure> vecModules = sensortest::deviceModules();
    if (vecModules.empty()) {
        std::fprintf(stderr, "device %s has no module for its machine\n", p_strName.c_str());
        std::abort();
    }
    m_objModule = vecModules.front();
}

BenchDevice::~BenchDevice() {
    installClock(nullptr);
}

std::unique_ptr<ISensorController> BenchDevice::bringUp(int p_nChannel) const {
    auto pController = std::make_unique<ISensorController>();
    pController->setChannelID(p_nChannel);
    pController->setVideoStreamModule(&m_objVideo);
    pController->init(m_objModule);
    return pController;
}

std::string BenchDevice::mergedStyle() const {
    return m_objRoot.readFile("/tmp/merge_style_ch1.xml");
}

std::size_t BenchDevice::controlCount() const {
    TiXmlDocumentEx objDoc;
    objDoc.LoadMem(m_objRoot.readFile(STYLE_FILE).c_str(), TIXML_ENCODING_UTF8);
    std::size_t nControls = 0;
    if (TiXmlElement* pRoot = objDoc.RootElement()) {
        forEachElement(pRoot, [&nControls](TiXmlElement* pNode) {
            nControls += pNode->Attribute("id") != nullptr ? 1 : 0;
        });
    }
    return nControls;
}

} // namespace sensorbench
