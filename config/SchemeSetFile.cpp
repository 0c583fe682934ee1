// Scheme files matched to the parameter set by key: a file written by an
// older style, cut short by a power cut or copied from elsewhere loads what it
// holds of the set's keys and nothing else.
#define SNS_SOURCE_UNIT "SchemeSetFile"

#include "config/SchemeSetFile.h"

#include <algorithm>
#include <string>
#include <vector>

#include "common/SensorDebug.h"
#include "config/SensorFile.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"

namespace {

// The whole records of the file; false when it cannot be read. Read through
// the bounded reader: a FIFO, device or directory is refused without
// blocking, and a file longer than inputcap::SCHEME_FILE_MAX is not a scheme
// file of this module; both are reported (a missing file is not).
bool readRecords(const char* p_szFile, std::vector<KeyVal>& p_vecRecords) {
    std::string strBytes;
    const ReadStatus eStatus = p_szFile == nullptr
                                   ? ReadStatus::Missing
                                   : readDeviceFile(p_szFile, inputcap::SCHEME_FILE_MAX, strBytes);
    if (eStatus != ReadStatus::Ok) {
        if (eStatus != ReadStatus::Missing) {
            SNS_ASSERT_TEXT(false, "readDeviceFile(file_name) == ReadStatus::Ok",
                            "file_name(%s) refused: %s\n", p_szFile,
                            describeRead(eStatus, inputcap::SCHEME_FILE_MAX).c_str());
        }
        return false;
    }
    const std::size_t nRecords = strBytes.size() / KEYVAL_FILE_RECORD;
    p_vecRecords.resize(nRecords);
    for (std::size_t i = 0; i < nRecords; ++i) {
        p_vecRecords[i] = keyValFromRecord(strBytes.data() + i * KEYVAL_FILE_RECORD);
    }
    return true;
}

bool sameKeys(const std::vector<KeyVal>& p_vecRecords, const KeyVal* p_pFactory, u32 p_nCount) {
    return p_vecRecords.size() == p_nCount &&
           std::equal(p_vecRecords.begin(), p_vecRecords.end(), p_pFactory,
                      [](const KeyVal& a, const KeyVal& b) { return a.key == b.key; });
}

} // namespace

SchemeFileLoad schemeSetFromFile(const char* p_szFile, const KeyVal* p_pFactory, KeyVal* p_pSet,
                                 u32 p_nCount) {
    std::vector<KeyVal> vecRecords;
    if (p_pFactory == nullptr || p_pSet == nullptr || !readRecords(p_szFile, vecRecords)) {
        return SchemeFileLoad::Unreadable;
    }
    if (sameKeys(vecRecords, p_pFactory, p_nCount)) {
        std::copy(vecRecords.begin(), vecRecords.end(), p_pSet);
        return SchemeFileLoad::Exact;
    }
    // Each file record is taken at most once, so a key the set holds twice
    // takes the file's records of that key in turn.
    std::vector<bool> vecTaken(vecRecords.size(), false);
    for (u32 i = 0; i < p_nCount; ++i) {
        KeyVal stEntry = p_pFactory[i];
        for (std::size_t r = 0; r < vecRecords.size(); ++r) {
            if (!vecTaken[r] && vecRecords[r].key == stEntry.key) {
                vecTaken[r] = true;
                stEntry.value = vecRecords[r].value;
                break;
            }
        }
        p_pSet[i] = stEntry;
    }
    return SchemeFileLoad::Repaired;
}
