#include "controller/KeyIndex.h"

#include <algorithm>

void KeyIndex::reset(u32 p_nCount) {
    u32 nBits = 4;
    while ((1u << nBits) < 2 * static_cast<std::size_t>(p_nCount) && nBits < 31) {
        ++nBits;
    }
    m_vecSlots.assign(std::size_t{1} << nBits, Slot{0, EMPTY});
    m_nMask = (1u << nBits) - 1;
    m_nShift = 32 - nBits;
}

void KeyIndex::insert(u32 p_nKey, u32 p_nPos) {
    for (u32 h = slotOf(p_nKey);; h = (h + 1) & m_nMask) {
        Slot& stSlot = m_vecSlots[h];
        if (stSlot.nPos == EMPTY) {
            stSlot = Slot{p_nKey, p_nPos};
            return;
        }
        if (stSlot.nKey == p_nKey) {
            return; // the first position stays
        }
    }
}

void SchemeSetIndex::build(KeyVal* const* p_ppRows, u32 p_nRows, u32 p_nKeys, u32 p_nLayoutRow) {
    clear();
    if (p_ppRows == nullptr || p_nLayoutRow >= p_nRows || p_ppRows[p_nLayoutRow] == nullptr) {
        return;
    }
    const KeyVal* pLayout = p_ppRows[p_nLayoutRow];
    m_objIndex.build(p_nKeys, [pLayout](u32 i) { return pLayout[i].key; });
    m_nKeys = p_nKeys;
    m_vecIndexed.assign(p_nRows, false);
    for (u32 r = 0; r < p_nRows; ++r) {
        const KeyVal* pRow = p_ppRows[r];
        m_vecIndexed[r] = pRow != nullptr && std::equal(pRow, pRow + p_nKeys, pLayout,
                                                        [](const KeyVal& a, const KeyVal& b) {
                                                            return a.key == b.key;
                                                        });
    }
}

void SchemeSetIndex::clear() {
    m_objIndex.clear();
    m_nKeys = 0;
    m_vecIndexed.clear();
}

int SchemeSetIndex::find(u32 p_nRow, const KeyVal* p_pRow, u32 p_nKeys, u32 p_nKey) const {
    if (p_pRow == nullptr) {
        return -1;
    }
    if (p_nKeys == m_nKeys && p_nRow < m_vecIndexed.size() && m_vecIndexed[p_nRow]) {
        const int nPos = m_objIndex.find(p_nKey);
        // A row changed since the index was built is caught here and scanned.
        if (nPos < 0 || p_pRow[nPos].key == p_nKey) {
            return nPos;
        }
    }
    for (u32 i = 0; i < p_nKeys; ++i) {
        if (p_pRow[i].key == p_nKey) {
            return static_cast<int>(i);
        }
    }
    return -1;
}
