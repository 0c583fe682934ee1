// Finding a key without scanning: the set loop looks every record up in the
// key-command table and in the scheme sets, so both are indexed at init.
#pragma once

#include <cstddef>
#include <vector>

#include "common/SensorTypes.h"

// Keys and their first position in a sequence of rows: an open-addressing
// hash table (a few instructions per lookup, where a binary search of a
// hundred keys takes seven rounds).
class KeyIndex {
public:
    // Indexes p_nCount rows, p_fnKey(i) giving the key of row i; a key that
    // occurs twice keeps its first position, as a scan from the front finds.
    template <class KeyOf> void build(u32 p_nCount, KeyOf&& p_fnKey) {
        reset(p_nCount);
        for (u32 i = 0; i < p_nCount; ++i) {
            insert(p_fnKey(i), i);
        }
    }
    void clear() { m_vecSlots.clear(); }
    bool empty() const { return m_vecSlots.empty(); }
    // The first position of p_nKey, or -1.
    int find(u32 p_nKey) const {
        if (m_vecSlots.empty()) {
            return -1;
        }
        for (u32 h = slotOf(p_nKey);; h = (h + 1) & m_nMask) {
            const Slot& stSlot = m_vecSlots[h];
            if (stSlot.nPos == EMPTY || stSlot.nKey == p_nKey) {
                return stSlot.nPos == EMPTY ? -1 : static_cast<int>(stSlot.nPos);
            }
        }
    }

private:
    struct Slot {
        u32 nKey;
        u32 nPos;
    };
    static constexpr u32 EMPTY = 0xFFFFFFFFu;

    u32 slotOf(u32 p_nKey) const { return (p_nKey * 2654435761u) >> m_nShift & m_nMask; }
    void reset(u32 p_nCount);
    void insert(u32 p_nKey, u32 p_nPos);

    std::vector<Slot> m_vecSlots; // at most half full, so every probe ends
    u32 m_nMask = 0;
    u32 m_nShift = 0;
};

// The scheme sets of a channel: rows of the same length holding the factory
// set's keys in its order (scheme files are loaded onto it by key). One index
// serves every row laid out like the factory row; a row found laid out
// otherwise is searched from the front rather than trusted to the index.
class SchemeSetIndex {
public:
    // p_ppRows[0..p_nRows) of p_nKeys records each; p_nLayoutRow is the row
    // whose order the index follows (the factory row).
    void build(KeyVal* const* p_ppRows, u32 p_nRows, u32 p_nKeys, u32 p_nLayoutRow);
    void clear();
    // Position of p_nKey in row p_nRow (p_pRow), or -1.
    int find(u32 p_nRow, const KeyVal* p_pRow, u32 p_nKeys, u32 p_nKey) const;

private:
    KeyIndex m_objIndex;
    u32 m_nKeys = 0;
    std::vector<bool> m_vecIndexed; // per row: laid out like the layout row
};
