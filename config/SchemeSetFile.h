// Loading a scheme file onto the channel's parameter set by key.
#pragma once

#include "common/SensorTypes.h"

// How a scheme file matched the set it was loaded onto.
enum class SchemeFileLoad {
    Exact,      // the file holds the set's keys in the set's order: loaded as it is
    Repaired,   // other length, order or keys: matched by key, the rest from the factory set
    Unreadable, // missing, a directory, or a failed read: the set was not touched
};

// Fills p_pSet (p_nCount entries) from the file, each key of the factory set
// p_pFactory taking the file's value where the file holds that key and the
// factory value otherwise; the n-th record of a key the set holds twice takes
// the file's n-th record of that key. Records of keys the set lacks are
// dropped. The set's keys and order are always the factory set's, so a short,
// cut or foreign file can never put zeros or foreign keys into it.
SchemeFileLoad schemeSetFromFile(const char* p_szFile, const KeyVal* p_pFactory, KeyVal* p_pSet,
                                 u32 p_nCount);
