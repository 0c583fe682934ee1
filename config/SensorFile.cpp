// Parameter files and the version stamp. Records are encoded byte by byte in
// little-endian order, so the files read the same on every architecture.
#define SNS_SOURCE_UNIT "SensorFile"

#include "config/SensorFile.h"

#include <array>
#include <climits>
#include <string>
#include <vector>

#include "common/SensorDebug.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/VXFile.h"

namespace {

// A single read or write moves at most this many bytes (its count is an int).
constexpr INT64 MAX_TRANSFER = INT_MAX;

bool fitsOneTransfer(INT64 p_nLen) {
    return p_nLen >= 0 && p_nLen <= MAX_TRANSFER;
}

// Diagnostics print the name with "%s"; a missing name prints as empty.
const char* printableName(const char* p_szName) {
    return p_szName != nullptr ? p_szName : "";
}

void encodeU32(u32 p_nVal, char* p_pOut) {
    for (int i = 0; i < 4; ++i) {
        p_pOut[i] = static_cast<char>((p_nVal >> (8 * i)) & 0xFFu);
    }
}

u32 decodeU32(const char* p_pIn) {
    u32 nVal = 0;
    for (int i = 0; i < 4; ++i) {
        nVal |= static_cast<u32>(static_cast<unsigned char>(p_pIn[i])) << (8 * i);
    }
    return nVal;
}

// Why a file that did not open was refused, for the report: nothing for a
// missing file (the usual case), the reason for a FIFO, device or directory.
std::string refusal(const char* p_szName) {
    const std::string strWhy = describeUnopenable(p_szName);
    return strWhy.empty() || strWhy == "missing" ? std::string() : " refused: " + strWhy;
}

} // namespace

INT64 getFileLen(const char* file_name) {
    file_name = printableName(file_name);
    VXFile file;
    const bool bOpened = file.open(file_name);
    SNS_ASSERT_TEXT(bOpened, "file.open(file_name)", "file_name(%s)%s", file_name,
                    bOpened ? "" : refusal(file_name).c_str());
    return file.getLength();
}

int loadFromFile(const char* file_name, char* data, INT64 file_len) {
    file_name = printableName(file_name);
    SNS_DBG("open file:%s\n", file_name);
    VXFile file;
    if (!file.open(file_name)) {
        // A missing file is the caller's to report; a FIFO or device is not.
        const std::string strWhy = refusal(file_name);
        SNS_ASSERT_TEXT(strWhy.empty(), "file.open(file_name)", "file_name(%s)%s\n", file_name,
                        strWhy.c_str());
        return -1;
    }
    if (data == nullptr || !fitsOneTransfer(file_len)) {
        return -1;
    }
    const int nRead = file.read(data, static_cast<unsigned int>(file_len));
    if (static_cast<INT64>(nRead) != file_len) {
        return -1;
    }
    file.close();
    return nRead;
}

int saveToFile(const char* file_name, const char* data, INT64 file_len) {
    file_name = printableName(file_name);
    // Refused before the file is opened: opening already replaces it.
    if ((data == nullptr && file_len > 0) || !fitsOneTransfer(file_len)) {
        SNS_ASSERT_TEXT(false, "file_len == (nSize=file.write(data, file_len))", "file_len(%d)\n",
                        static_cast<int>(file_len));
        return -1;
    }
    VXFile file;
    const bool bOpened = file.open(file_name, VXFile::modeWrite | VXFile::modeTruncate);
    SNS_ASSERT_TEXT(bOpened, "file.open(file_name, VXFile::modeWrite | VXFile::modeTruncate)",
                    "file_name(%s)\n", file_name);
    const int nSize = file.write(data, static_cast<unsigned int>(file_len));
    if (!SNS_CHECK_TEXT(file_len == nSize, "file_len == (nSize=file.write(data, file_len))",
                        "file_len(%d)\n", static_cast<int>(file_len))) {
        file.discard(); // a short write never replaces the old file
        return nSize;
    }
    // The new content exists only once it is committed; a failed commit
    // leaves the old file, so the save did not happen.
    if (bOpened && !file.close()) {
        SNS_ASSERT_TEXT(false, "file.close()", "file_name(%s)\n", file_name);
        return -1;
    }
    return nSize;
}

KeyVal keyValFromRecord(const char* p_pRecord) {
    return {decodeU32(p_pRecord), decodeU32(p_pRecord + 4)};
}

int keyValFromFile(const char* file_name, KeyVal* p_pKeyVal, u32 p_nKeyValNum) {
    file_name = printableName(file_name);
    VXFile file;
    const bool bOpened = file.open(file_name);
    SNS_ASSERT_TEXT(bOpened, "file.open(file_name)", "file_name(%s)%s\n", file_name,
                    bOpened ? "" : refusal(file_name).c_str());

    const INT64 nWant = static_cast<INT64>(KEYVAL_FILE_RECORD) * p_nKeyValNum;
    // Longer than the set plus the slack: not a scheme file of this module.
    // Nothing is taken from it, so a corrupt flash cannot pass half a set.
    const INT64 nCap = nWant + static_cast<INT64>(inputcap::SCHEME_FILE_SLACK);
    const bool bTooLong = file.getLength() > nCap;
    SNS_ASSERT_TEXT(!bTooLong, "file.getLength() <= sizeof(KeyVal)*p_nKeyValNum + SLACK",
                    "file_name(%s) refused: larger than %lld bytes\n", file_name,
                    static_cast<long long>(nCap));
    int nSize = -1;
    std::vector<char> vecBytes;
    if (p_pKeyVal != nullptr && fitsOneTransfer(nWant) && !bTooLong) {
        vecBytes.resize(static_cast<std::size_t>(nWant));
        nSize = file.read(vecBytes.data(), static_cast<unsigned int>(nWant));
    }
    SNS_ASSERT_TEXT(nSize == nWant, "nSize == sizeof(KeyVal)*p_nKeyValNum",
                    "file_name(%s) nSize(%d) sizeof(KeyVal) = %d, p_nKeyValNum(%d)\n", file_name,
                    nSize, static_cast<int>(sizeof(KeyVal)), static_cast<int>(p_nKeyValNum));

    // Only whole records are taken: a record cut short by the end of the file
    // keeps what the entry held, like the entries after it.
    const u32 nRecords = nSize > 0 ? static_cast<u32>(nSize) / KEYVAL_FILE_RECORD : 0;
    for (u32 i = 0; i < nRecords; ++i) {
        const char* pRecord = vecBytes.data() + static_cast<std::size_t>(i) * KEYVAL_FILE_RECORD;
        p_pKeyVal[i] = keyValFromRecord(pRecord);
    }
    return SNS_SUCCESS;
}

int keyValToFile(const char* file_name, const KeyVal* p_pKeyVal, u32 p_nKeyValSum) {
    file_name = printableName(file_name);
    const INT64 nWant = static_cast<INT64>(KEYVAL_FILE_RECORD) * p_nKeyValSum;
    // Refused before the file is opened, so the old file stays as it was.
    if ((p_pKeyVal == nullptr && p_nKeyValSum > 0) || !fitsOneTransfer(nWant)) {
        SNS_ASSERT_TEXT(false, "NULL != p_pKeyVal && sizeof(KeyVal)*p_nKeyValSum <= INT_MAX",
                        "file_name(%s) p_nKeyValSum(%u)\n", file_name, p_nKeyValSum);
        return SNS_FAILED;
    }
    std::vector<char> vecBytes(static_cast<std::size_t>(nWant));
    for (u32 i = 0; i < p_nKeyValSum; ++i) {
        char* pRecord = vecBytes.data() + static_cast<std::size_t>(i) * KEYVAL_FILE_RECORD;
        encodeU32(p_pKeyVal[i].key, pRecord);
        encodeU32(p_pKeyVal[i].value, pRecord + 4);
    }

    VXFile file;
    const bool bOpened = file.open(file_name, VXFile::modeWrite | VXFile::modeTruncate);
    SNS_ASSERT_TEXT(bOpened, "file.open(file_name, VXFile::modeWrite | VXFile::modeTruncate)",
                    "file_name(%s)\n", file_name);
    const int nSize = file.write(vecBytes.data(), static_cast<unsigned int>(nWant));
    if (!SNS_CHECK_TEXT(nSize == nWant, "nSize == sizeof(KeyVal)*p_nKeyValSum",
                        "nSize(%d) sizeof(KeyVal) = %d, p_nKeyValNum(%d)\n", nSize,
                        static_cast<int>(sizeof(KeyVal)), static_cast<int>(p_nKeyValSum))) {
        file.discard(); // a short write never replaces the old file
        return SNS_ERR_FILE_WRITE;
    }
    // The new content exists only once it is committed: a failed close leaves
    // the old file, and the caller must hear that nothing was saved.
    if (bOpened && !file.close()) {
        SNS_ASSERT_TEXT(false, "file.close()", "file_name(%s)\n", file_name);
        return SNS_ERR_FILE_WRITE;
    }
    return SNS_SUCCESS;
}

int getVersion(u32* p_pnVersion) {
    std::array<char, 4> arrBytes{};
    if (p_pnVersion == nullptr ||
        loadFromFile(SENSOR_VERSION_FILE, arrBytes.data(), arrBytes.size()) <= 0) {
        return -1;
    }
    *p_pnVersion = decodeU32(arrBytes.data());
    return 0;
}

int setVersion(u32 p_nVersion) {
    std::array<char, 4> arrBytes{};
    encodeU32(p_nVersion, arrBytes.data());
    // Only all four bytes count: a short write replaced nothing.
    const INT64 nLen = static_cast<INT64>(arrBytes.size());
    return saveToFile(SENSOR_VERSION_FILE, arrBytes.data(), nLen) == nLen ? 0 : -1;
}
