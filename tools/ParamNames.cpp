#include "tools/ParamNames.h"

#include <algorithm>
#include <cctype>

#include "controller/KeyCmdTable.h"
#include "tools/ValueParsing.h"

namespace {

constexpr const char* KEY_PREFIX = "KEY_";

std::string canonicalName(std::string p_strText) {
    // "scheme-mode" names KEY_SCHEME_MODE as well as "scheme_mode".
    std::transform(p_strText.begin(), p_strText.end(), p_strText.begin(), [](unsigned char c) {
        return c == '-' ? '_' : static_cast<char>(std::toupper(c));
    });
    return p_strText;
}

} // namespace

std::string keyName(u32 p_nKey) {
    const KeyCmdRow* pRow = keyCmdRowOf(p_nKey);
    return pRow ? pRow->key_name : "";
}

std::string keyLabel(u32 p_nKey) {
    const std::string strName = keyName(p_nKey);
    return strName.empty() ? std::to_string(p_nKey) : std::to_string(p_nKey) + " " + strName;
}

bool keyFromText(const std::string& p_strText, u32& p_nKey) {
    int nNumber = 0;
    if (parseInt(p_strText, nNumber)) {
        if (nNumber < 0) {
            return false;
        }
        p_nKey = static_cast<u32>(nNumber);
        return true;
    }
    std::string strWanted = canonicalName(p_strText);
    if (strWanted.rfind(KEY_PREFIX, 0) != 0) {
        strWanted = KEY_PREFIX + strWanted;
    }
    for (const KeyCmdRow& stRow : keyCmdRows()) {
        if (strWanted == stRow.key_name) {
            p_nKey = stRow.key;
            return true;
        }
    }
    return false;
}

std::string ispCommandLabel(u32 p_nCmd) {
    for (const KeyCmdRow& stRow : keyCmdRows()) {
        if (stRow.func != nullptr && stRow.ia_cmd == p_nCmd) {
            return std::to_string(p_nCmd) + " (" + stRow.key_name + ")";
        }
    }
    return std::to_string(p_nCmd);
}

u32 ispCommandOf(u32 p_nKey) {
    const KeyCmdRow* pRow = keyCmdRowOf(p_nKey);
    // Rows without a handler carry no command; such keys are never sent as themselves.
    return pRow && pRow->func != nullptr ? pRow->ia_cmd : p_nKey;
}

bool isTableKey(u32 p_nKey) {
    return keyCmdRowOf(p_nKey) != nullptr;
}

const KeyCmdRow* keyCmdRowOf(u32 p_nKey) {
    const auto& arrRows = keyCmdRows();
    const auto it =
        std::find_if(arrRows.begin(), arrRows.end(),
                     [p_nKey](const KeyCmdRow& p_stRow) { return p_stRow.key == p_nKey; });
    return it == arrRows.end() ? nullptr : &*it;
}
