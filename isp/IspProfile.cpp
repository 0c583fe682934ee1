#include "isp/IspProfile.h"

#include <tinyxml.h>

#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/XmlText.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <set>
#include <sstream>
#include <utility>

namespace isp {
namespace {

// Commands whose data is a record, with the record's size in bytes.
constexpr std::array<std::pair<uint32_t, std::size_t>, 10> kRecordSizes = {{
    {145, 12}, // day/night thresholds {d2n_thr, n2d_thr, dn_sensitivity}
    {146, 12},
    {154, 12},
    {149, 16}, // day/night times {d2n_hour, d2n_min, n2d_hour, n2d_min}
    {150, 16},
    {151, 16},
    {152, 16},
    {2816, 16}, // diagnostic pass-through {a, b, c, reply}
    {2496, 50}, // lens module version text
    {1606, 1},  // heat status, one byte (the caller passes a bool)
}};

constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kUint32Max = std::numeric_limits<uint32_t>::max();

const char kDefaultProfile[] = R"xml(<SensorProfile name="builtin">
  <!-- exposure and shutter -->
  <Dynamic id="16" type="0" default="0">
    <Item value="0"/><Item value="1"/><Item value="2"/><Item value="3"/>
  </Dynamic>
  <Dynamic id="49" type="0" default="6">
    <Item value="1"/><Item value="2"/><Item value="3"/><Item value="4"/>
    <Item value="5"/><Item value="6"/><Item value="7"/><Item value="8"/>
  </Dynamic>
  <Command id="50" value="4"/>
  <Command id="51" value="1"/>
  <Command id="52" value="0"/>
  <Command id="53" value="0"/>
  <Command id="54" value="0"/>
  <Command id="55" value="1"/>
  <Command id="56" value="8"/>
  <Command id="65" value="50"/>
  <Command id="66" value="50"/>
  <!-- image adjust -->
  <Command id="34" value="50"/>
  <Command id="2321" value="50"/>
  <Command id="2337" value="50"/>
  <Command id="2353" value="50"/>
  <!-- white balance -->
  <Command id="768" value="0"/>
  <Command id="769" value="128"/>
  <Command id="770" value="128"/>
  <!-- backlight -->
  <Command id="112" value="0"/>
  <Command id="113" value="50"/>
  <Command id="128" value="0"/>
  <Command id="129" value="0"/>
  <Command id="130" value="50"/>
  <!-- day/night -->
  <Command id="144" value="0"/>
  <Command id="153" value="0"/>
  <Record id="145" words="70 30 0"/>
  <Record id="146" words="70 30 0"/>
  <Record id="154" words="0 0 5"/>
  <Record id="149" words="18 0 6 0"/>
  <Record id="150" words="18 0 6 0"/>
  <Record id="151" words="18 0 6 0"/>
  <Record id="152" words="18 0 6 0"/>
  <DayNight dayThreshold="60" nightThreshold="30" level="100"/>
  <!-- infrared and white light -->
  <Command id="160" value="0"/>
  <Command id="161" value="0"/>
  <Command id="162" value="0"/>
  <Command id="163" value="50"/>
  <Command id="164" value="0"/>
  <Command id="165" value="0"/>
  <Command id="166" value="0"/>
  <Command id="167" value="50"/>
  <Command id="168" value="0"/>
  <Command id="169" value="0"/>
  <Command id="170" value="0"/>
  <Command id="171" value="0"/>
  <Command id="172" value="50"/>
  <Command id="224" value="0"/>
  <!-- noise reduction -->
  <Command id="2304" value="1"/>
  <Command id="2305" value="0"/>
  <Command id="2306" value="50"/>
  <Command id="2307" value="50"/>
  <Command id="2308" value="1"/>
  <Command id="2309" value="0"/>
  <Command id="2312" value="50"/>
  <Command id="2313" value="50"/>
  <!-- WDR, defog, stabilisation, orientation -->
  <Dynamic id="2368" type="0" default="0">
    <Item value="0"/><Item value="1"/><Item value="2"/>
  </Dynamic>
  <Dynamic id="2369" type="1" default="50" min="0" max="100"/>
  <Command id="2400" value="0"/>
  <Command id="2401" value="50"/>
  <Command id="2416" value="0"/>
  <Command id="2417" value="50"/>
  <Command id="2384" value="0"/>
  <Command id="2385" value="0"/>
  <!-- frame rates -->
  <Dynamic id="2464" type="0" default="25">
    <Item value="25"/><Item value="30"/><Item value="50"/><Item value="60"/>
  </Dynamic>
  <Dynamic id="2497" type="0" default="25">
    <Item value="12"/><Item value="15"/><Item value="20"/><Item value="25"/><Item value="30"/>
  </Dynamic>
  <!-- lens module and temperature -->
  <Record id="2496" text="ISP-SIM 1.0"/>
  <Record id="1606" bytes="0"/>
  <Command id="1607" value="40"/>
</SensorProfile>
)xml";

// Builds error texts that name the element and its line.
std::string where(const TiXmlElement& p_objElem) {
    return "line " + std::to_string(p_objElem.Row()) + " <" + p_objElem.ValueStr() + ">";
}

// A whole decimal number within lo..hi; leading blanks allowed, nothing after.
bool parseNumber(const char* p_szText, int64_t p_nLo, int64_t p_nHi, int64_t& p_nOut) {
    if (p_szText == nullptr || *p_szText == '\0') {
        return false;
    }
    errno = 0;
    char* pEnd = nullptr;
    const long long nVal = std::strtoll(p_szText, &pEnd, 10);
    if (errno != 0 || pEnd == p_szText || *pEnd != '\0' || nVal < p_nLo || nVal > p_nHi) {
        return false;
    }
    p_nOut = nVal;
    return true;
}

class ProfileParser {
public:
    explicit ProfileParser(std::string& p_strError) : m_strError(p_strError) {}

    bool parseDocument(const TiXmlElement& p_objRoot, IspProfile& p_stOut) {
        if (p_objRoot.ValueStr() != "SensorProfile") {
            return fail(where(p_objRoot) + ": the root element must be <SensorProfile>");
        }
        if (!checkAttributes(p_objRoot, {"name"})) {
            return false;
        }
        const char* szName = p_objRoot.Attribute("name");
        p_stOut.name = szName != nullptr ? szName : "";
        return parseScope(p_objRoot, true, p_stOut.common, &p_stOut.channels);
    }

private:
    bool fail(const std::string& p_strText) {
        m_strError = p_strText;
        return false;
    }

    bool checkAttributes(const TiXmlElement& p_objElem,
                         std::initializer_list<const char*> p_lstAllowed) {
        for (const TiXmlAttribute* pAttr = p_objElem.FirstAttribute(); pAttr != nullptr;
             pAttr = pAttr->Next()) {
            const bool bKnown =
                std::any_of(p_lstAllowed.begin(), p_lstAllowed.end(), [&](const char* szName) {
                    return std::strcmp(szName, pAttr->Name()) == 0;
                });
            if (!bKnown) {
                return fail(where(p_objElem) + ": unknown attribute \"" + pAttr->Name() + "\"");
            }
        }
        return true;
    }

    // Reads an optional numeric attribute; a present but malformed one is an error.
    bool optionalNumber(const TiXmlElement& p_objElem, const char* p_szName, int64_t p_nLo,
                        int64_t p_nHi, std::optional<int64_t>& p_nOut) {
        const char* szText = p_objElem.Attribute(p_szName);
        if (szText == nullptr) {
            p_nOut.reset();
            return true;
        }
        int64_t nVal = 0;
        if (!parseNumber(szText, p_nLo, p_nHi, nVal)) {
            return fail(where(p_objElem) + ": " + p_szName + "=\"" + szText +
                        "\" is not a number in " + std::to_string(p_nLo) + ".." +
                        std::to_string(p_nHi));
        }
        p_nOut = nVal;
        return true;
    }

    bool requiredNumber(const TiXmlElement& p_objElem, const char* p_szName, int64_t p_nLo,
                        int64_t p_nHi, int64_t& p_nOut) {
        std::optional<int64_t> nVal;
        if (!optionalNumber(p_objElem, p_szName, p_nLo, p_nHi, nVal)) {
            return false;
        }
        if (!nVal) {
            return fail(where(p_objElem) + ": attribute \"" + p_szName + "\" is missing");
        }
        p_nOut = *nVal;
        return true;
    }

    // Reads the id attribute and refuses one already used in this scope.
    bool commandId(const TiXmlElement& p_objElem, std::set<uint32_t>& p_setSeen, uint32_t& p_nCmd) {
        int64_t nId = 0;
        if (!requiredNumber(p_objElem, "id", 0, kUint32Max, nId)) {
            return false;
        }
        p_nCmd = static_cast<uint32_t>(nId);
        if (!p_setSeen.insert(p_nCmd).second) {
            return fail(where(p_objElem) + ": command " + std::to_string(p_nCmd) +
                        " is given twice");
        }
        return true;
    }

    bool parseScope(const TiXmlElement& p_objParent, bool p_bTopLevel, IspChannelProfile& p_stOut,
                    std::map<int, IspChannelProfile>* p_pChannels) {
        std::set<uint32_t> setCommands;
        std::set<uint32_t> setDynamics;
        for (const TiXmlElement* pElem = p_objParent.FirstChildElement(); pElem != nullptr;
             pElem = pElem->NextSiblingElement()) {
            const std::string& strName = pElem->ValueStr();
            bool bOk = false;
            if (strName == "Command") {
                bOk = parseCommand(*pElem, setCommands, p_stOut);
            } else if (strName == "Record") {
                bOk = parseRecord(*pElem, setCommands, p_stOut);
            } else if (strName == "Dynamic") {
                bOk = parseDynamic(*pElem, setDynamics, p_stOut);
            } else if (strName == "DayNight") {
                bOk = parseDayNight(*pElem, p_stOut);
            } else if (strName == "Channel" && p_bTopLevel) {
                bOk = parseChannel(*pElem, *p_pChannels);
            } else {
                bOk = fail(where(*pElem) + ": unknown element here");
            }
            if (!bOk) {
                return false;
            }
        }
        return true;
    }

    bool parseCommand(const TiXmlElement& p_objElem, std::set<uint32_t>& p_setSeen,
                      IspChannelProfile& p_stOut) {
        uint32_t nCmd = 0;
        int64_t nValue = 0;
        if (!checkAttributes(p_objElem, {"id", "value", "min", "max", "items"}) ||
            !commandId(p_objElem, p_setSeen, nCmd) ||
            !requiredNumber(p_objElem, "value", kInt32Min, kInt32Max, nValue)) {
            return false;
        }
        if (recordSize(nCmd) != 0) {
            return fail(where(p_objElem) + ": command " + std::to_string(nCmd) +
                        " carries a record; give it with <Record>");
        }
        std::optional<IspBounds> stBounds;
        if (!commandBounds(p_objElem, stBounds)) {
            return false;
        }
        if (stBounds) {
            if (!stBounds->allows(static_cast<int32_t>(nValue))) {
                return fail(where(p_objElem) + ": value " + std::to_string(nValue) +
                            " is outside its own min/max or items");
            }
            p_stOut.bounds[nCmd] = *stBounds;
        }
        p_stOut.values[nCmd] = static_cast<int32_t>(nValue);
        return true;
    }

    // The optional bounds of a Command: min and max together, or items.
    bool commandBounds(const TiXmlElement& p_objElem, std::optional<IspBounds>& p_stOut) {
        std::optional<int64_t> nMin;
        std::optional<int64_t> nMax;
        if (!optionalNumber(p_objElem, "min", kInt32Min, kInt32Max, nMin) ||
            !optionalNumber(p_objElem, "max", kInt32Min, kInt32Max, nMax)) {
            return false;
        }
        const bool bItems = p_objElem.Attribute("items") != nullptr;
        if (nMin.has_value() != nMax.has_value() || (bItems && nMin)) {
            return fail(where(p_objElem) + ": give min and max together, or items alone");
        }
        IspBounds stBounds;
        if (bItems) {
            std::vector<int64_t> vecItems;
            if (!numberList(p_objElem, "items", kInt32Min, kInt32Max, vecItems)) {
                return false;
            }
            if (vecItems.empty()) {
                return fail(where(p_objElem) + ": items needs at least one value");
            }
            stBounds.items.assign(vecItems.begin(), vecItems.end());
        } else if (nMin) {
            if (*nMin > *nMax) {
                return fail(where(p_objElem) + ": needs min <= max");
            }
            stBounds.min = static_cast<int32_t>(*nMin);
            stBounds.max = static_cast<int32_t>(*nMax);
        } else {
            return true;
        }
        p_stOut = std::move(stBounds);
        return true;
    }

    // Splits a list of numbers separated by blanks, each within lo..hi.
    bool numberList(const TiXmlElement& p_objElem, const char* p_szName, int64_t p_nLo,
                    int64_t p_nHi, std::vector<int64_t>& p_vecOut) {
        std::istringstream objIn(p_objElem.Attribute(p_szName));
        std::string strToken;
        while (objIn >> strToken) {
            int64_t nVal = 0;
            if (!parseNumber(strToken.c_str(), p_nLo, p_nHi, nVal)) {
                return fail(where(p_objElem) + ": \"" + strToken + "\" in " + p_szName +
                            " is not a number in " + std::to_string(p_nLo) + ".." +
                            std::to_string(p_nHi));
            }
            p_vecOut.push_back(nVal);
        }
        return true;
    }

    // Fills p_vecData (already sized and zeroed) from the one content attribute.
    bool recordContent(const TiXmlElement& p_objElem, std::vector<uint8_t>& p_vecData) {
        const char* szText = p_objElem.Attribute("text");
        const bool bWords = p_objElem.Attribute("words") != nullptr;
        const bool bBytes = p_objElem.Attribute("bytes") != nullptr;
        if ((szText != nullptr) + bWords + bBytes != 1) {
            return fail(where(p_objElem) + ": give exactly one of text, words, bytes");
        }
        std::vector<uint8_t> vecContent;
        if (szText != nullptr) {
            vecContent.assign(szText, szText + std::strlen(szText));
        } else {
            std::vector<int64_t> vecNumbers;
            const bool bOk = bWords
                                 ? numberList(p_objElem, "words", kInt32Min, kInt32Max, vecNumbers)
                                 : numberList(p_objElem, "bytes", 0, 255, vecNumbers);
            if (!bOk) {
                return false;
            }
            for (const int64_t nVal : vecNumbers) {
                if (bWords) {
                    const int32_t nWord = static_cast<int32_t>(nVal);
                    const auto* pWord = reinterpret_cast<const uint8_t*>(&nWord);
                    vecContent.insert(vecContent.end(), pWord, pWord + sizeof(nWord));
                } else {
                    vecContent.push_back(static_cast<uint8_t>(nVal));
                }
            }
        }
        if (vecContent.size() > p_vecData.size()) {
            return fail(where(p_objElem) + ": " + std::to_string(vecContent.size()) +
                        " bytes do not fit the " + std::to_string(p_vecData.size()) +
                        "-byte record");
        }
        std::copy(vecContent.begin(), vecContent.end(), p_vecData.begin());
        return true;
    }

    bool parseRecord(const TiXmlElement& p_objElem, std::set<uint32_t>& p_setSeen,
                     IspChannelProfile& p_stOut) {
        uint32_t nCmd = 0;
        if (!checkAttributes(p_objElem, {"id", "text", "words", "bytes"}) ||
            !commandId(p_objElem, p_setSeen, nCmd)) {
            return false;
        }
        const std::size_t nSize = recordSize(nCmd);
        if (nSize == 0) {
            return fail(where(p_objElem) + ": command " + std::to_string(nCmd) +
                        " moves a 32-bit value; give it with <Command>");
        }
        std::vector<uint8_t> vecData(nSize, 0);
        if (!recordContent(p_objElem, vecData)) {
            return false;
        }
        p_stOut.records[nCmd] = std::move(vecData);
        return true;
    }

    bool parseItems(const TiXmlElement& p_objElem, ia_dynamic_params_attr_st& p_stAttr) {
        int32_t nCount = 0;
        for (const TiXmlElement* pItem = p_objElem.FirstChildElement(); pItem != nullptr;
             pItem = pItem->NextSiblingElement()) {
            int64_t nVal = 0;
            if (pItem->ValueStr() != "Item") {
                return fail(where(*pItem) + ": only <Item> may stand inside <Dynamic>");
            }
            if (!checkAttributes(*pItem, {"value"}) ||
                !requiredNumber(*pItem, "value", kInt32Min, kInt32Max, nVal)) {
                return false;
            }
            if (nCount == IA_DYNAMIC_ITEM_MAX) {
                return fail(where(p_objElem) + ": more than " +
                            std::to_string(IA_DYNAMIC_ITEM_MAX) + " items");
            }
            p_stAttr.item[nCount++] = static_cast<int32_t>(nVal);
        }
        p_stAttr.items_cnt = nCount;
        return true;
    }

    // Applies the defaults of the list kind and checks the default is allowed.
    bool finishList(const TiXmlElement& p_objElem, const std::optional<int64_t>& p_nDefault,
                    const std::optional<int64_t>& p_nMin, const std::optional<int64_t>& p_nMax,
                    ia_dynamic_params_attr_st& p_stAttr) {
        const int32_t* pBegin = p_stAttr.item;
        const int32_t* pEnd = p_stAttr.item + p_stAttr.items_cnt;
        if (pBegin == pEnd) {
            return fail(where(p_objElem) + ": a list (type 0) needs at least one <Item>");
        }
        p_stAttr.default_val = static_cast<int32_t>(p_nDefault.value_or(*pBegin));
        p_stAttr.min_val = static_cast<int32_t>(p_nMin.value_or(*std::min_element(pBegin, pEnd)));
        p_stAttr.max_val = static_cast<int32_t>(p_nMax.value_or(*std::max_element(pBegin, pEnd)));
        if (p_stAttr.min_val > p_stAttr.max_val) {
            return fail(where(p_objElem) + ": needs min <= max");
        }
        if (std::find(pBegin, pEnd, p_stAttr.default_val) == pEnd) {
            return fail(where(p_objElem) + ": default " + std::to_string(p_stAttr.default_val) +
                        " is not one of the items");
        }
        return true;
    }

    bool finishRange(const TiXmlElement& p_objElem, const std::optional<int64_t>& p_nDefault,
                     const std::optional<int64_t>& p_nMin, const std::optional<int64_t>& p_nMax,
                     ia_dynamic_params_attr_st& p_stAttr) {
        if (!p_nMin || !p_nMax) {
            return fail(where(p_objElem) + ": a range needs min and max");
        }
        p_stAttr.min_val = static_cast<int32_t>(*p_nMin);
        p_stAttr.max_val = static_cast<int32_t>(*p_nMax);
        p_stAttr.default_val = static_cast<int32_t>(p_nDefault.value_or(*p_nMin));
        if (p_stAttr.min_val > p_stAttr.max_val || p_stAttr.default_val < p_stAttr.min_val ||
            p_stAttr.default_val > p_stAttr.max_val) {
            return fail(where(p_objElem) + ": needs min <= default <= max");
        }
        return true;
    }

    bool parseDynamic(const TiXmlElement& p_objElem, std::set<uint32_t>& p_setSeen,
                      IspChannelProfile& p_stOut) {
        IspDynamic stDyn;
        int64_t nType = 0;
        std::optional<int64_t> nDefault;
        std::optional<int64_t> nMin;
        std::optional<int64_t> nMax;
        if (!checkAttributes(p_objElem, {"id", "type", "default", "min", "max"}) ||
            !commandId(p_objElem, p_setSeen, stDyn.cmd) ||
            !requiredNumber(p_objElem, "type", kInt32Min, kInt32Max, nType) ||
            !optionalNumber(p_objElem, "default", kInt32Min, kInt32Max, nDefault) ||
            !optionalNumber(p_objElem, "min", kInt32Min, kInt32Max, nMin) ||
            !optionalNumber(p_objElem, "max", kInt32Min, kInt32Max, nMax) ||
            !parseItems(p_objElem, stDyn.attr)) {
            return false;
        }
        if (recordSize(stDyn.cmd) != 0) {
            return fail(where(p_objElem) + ": record command " + std::to_string(stDyn.cmd) +
                        " cannot be dynamic");
        }
        if (p_stOut.dynamics.size() == IA_DYNAMIC_CMD_MAX) {
            return fail(where(p_objElem) + ": more than " + std::to_string(IA_DYNAMIC_CMD_MAX) +
                        " dynamic commands");
        }
        stDyn.attr.param_type = static_cast<int32_t>(nType);
        const bool bOk = nType == 0 ? finishList(p_objElem, nDefault, nMin, nMax, stDyn.attr)
                                    : finishRange(p_objElem, nDefault, nMin, nMax, stDyn.attr);
        if (!bOk) {
            return false;
        }
        p_stOut.dynamics.push_back(stDyn);
        return true;
    }

    bool parseDayNight(const TiXmlElement& p_objElem, IspChannelProfile& p_stOut) {
        if (p_stOut.dayNight) {
            return fail(where(p_objElem) + ": given twice");
        }
        IspDayNight stDn;
        std::optional<int64_t> nDay;
        std::optional<int64_t> nNight;
        std::optional<int64_t> nLevel;
        if (!checkAttributes(p_objElem, {"dayThreshold", "nightThreshold", "level"}) ||
            !optionalNumber(p_objElem, "dayThreshold", kInt32Min, kInt32Max, nDay) ||
            !optionalNumber(p_objElem, "nightThreshold", kInt32Min, kInt32Max, nNight) ||
            !optionalNumber(p_objElem, "level", kInt32Min, kInt32Max, nLevel)) {
            return false;
        }
        stDn.dayThreshold = static_cast<int32_t>(nDay.value_or(stDn.dayThreshold));
        stDn.nightThreshold = static_cast<int32_t>(nNight.value_or(stDn.nightThreshold));
        stDn.level = static_cast<int32_t>(nLevel.value_or(stDn.level));
        if (stDn.dayThreshold <= stDn.nightThreshold) {
            return fail(where(p_objElem) + ": dayThreshold must be above nightThreshold");
        }
        p_stOut.dayNight = stDn;
        return true;
    }

    bool parseChannel(const TiXmlElement& p_objElem, std::map<int, IspChannelProfile>& p_mapOut) {
        int64_t nIndex = 0;
        if (!checkAttributes(p_objElem, {"index"}) ||
            !requiredNumber(p_objElem, "index", 0, kChannelCount - 1, nIndex)) {
            return false;
        }
        const int nChannel = static_cast<int>(nIndex);
        if (p_mapOut.count(nChannel) != 0) {
            return fail(where(p_objElem) + ": channel " + std::to_string(nChannel) +
                        " is given twice");
        }
        return parseScope(p_objElem, false, p_mapOut[nChannel], nullptr);
    }

    std::string& m_strError;
};

} // namespace

std::size_t recordSize(uint32_t p_nCmd) {
    for (const auto& [nCmd, nSize] : kRecordSizes) {
        if (nCmd == p_nCmd) {
            return nSize;
        }
    }
    return 0;
}

bool IspBounds::allows(int32_t p_nValue) const {
    if (!items.empty()) {
        return std::find(items.begin(), items.end(), p_nValue) != items.end();
    }
    return p_nValue >= min && p_nValue <= max;
}

IspChannelProfile IspProfile::forChannel(int p_nChannel) const {
    IspChannelProfile stResult = common;
    const auto it = channels.find(p_nChannel);
    if (it == channels.end()) {
        return stResult;
    }
    const IspChannelProfile& stOwn = it->second;
    for (const auto& [nCmd, nVal] : stOwn.values) {
        stResult.values[nCmd] = nVal;
        // A channel's Command replaces the document's, bounds included.
        stResult.bounds.erase(nCmd);
    }
    for (const auto& [nCmd, stBounds] : stOwn.bounds) {
        stResult.bounds[nCmd] = stBounds;
    }
    for (const auto& [nCmd, vecData] : stOwn.records) {
        stResult.records[nCmd] = vecData;
    }
    if (!stOwn.dynamics.empty()) {
        stResult.dynamics = stOwn.dynamics;
    }
    if (stOwn.dayNight) {
        stResult.dayNight = stOwn.dayNight;
    }
    return stResult;
}

bool parseProfile(const std::string& p_strXml, IspProfile& p_stProfile, std::string& p_strError) {
    TiXmlDocument objDoc;
    if (!parseXmlText(objDoc, p_strXml.c_str(), p_strXml.size(), TIXML_ENCODING_UTF8)) {
        p_strError =
            "elements nested deeper than " + std::to_string(inputcap::XML_DEPTH_MAX) + " levels";
        return false;
    }
    if (objDoc.Error()) {
        // TinyXML reports row 0 when it cannot tell where the fault is.
        const int nRow = objDoc.ErrorRow();
        p_strError = std::string("XML error") +
                     (nRow > 0 ? " at line " + std::to_string(nRow) : std::string()) + ": " +
                     objDoc.ErrorDesc();
        return false;
    }
    const TiXmlElement* pRoot = objDoc.RootElement();
    if (pRoot == nullptr) {
        p_strError = "the document has no root element";
        return false;
    }
    IspProfile stParsed;
    ProfileParser objParser(p_strError);
    if (!objParser.parseDocument(*pRoot, stParsed)) {
        return false;
    }
    p_stProfile = std::move(stParsed);
    return true;
}

bool loadProfileFile(const std::string& p_strPath, IspProfile& p_stProfile,
                     std::string& p_strError) {
    std::string strText;
    const ReadStatus eStatus = readHostFile(p_strPath, inputcap::ISP_PROFILE_MAX, strText);
    if (eStatus != ReadStatus::Ok) {
        p_strError = "cannot open profile \"" + p_strPath +
                     "\": " + describeRead(eStatus, inputcap::ISP_PROFILE_MAX);
        return false;
    }
    if (!parseProfile(strText, p_stProfile, p_strError)) {
        p_strError = p_strPath + ": " + p_strError;
        return false;
    }
    return true;
}

const char* defaultProfileXml() {
    return kDefaultProfile;
}

IspProfile defaultProfile() {
    IspProfile stProfile;
    std::string strError;
    // The built-in text is part of this source; a test keeps it valid.
    parseProfile(kDefaultProfile, stProfile, strError);
    return stProfile;
}

} // namespace isp
