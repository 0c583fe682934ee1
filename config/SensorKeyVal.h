// The "(key,value)" text form of parameter lists and their correction by the ISP.
#pragma once

#include <string>

#include "common/SensorTypes.h"

// Appends "(%d,%d)" for each of the first p_nKeyValNum entries.
SENSORDLL_EXPORT void keyval_st2str(std::string& p_strOut, const KeyVal* p_pKeyval,
                                    u32 p_nKeyValNum);

// Reads the "(%d,%d)" groups of the text into p_pKeyval from position 0;
// characters outside the groups are ignored, and so is a group that does not
// read as two integers. At most p_nCapacity entries are stored and
// *p_pnKeyValNum is the number stored. SNS_FAILED when the text holds more
// groups than that (the caller decides whether to use the first ones).
SENSORDLL_EXPORT int keyval_str2st(const std::string& p_strIn, KeyVal* p_pKeyval,
                                   u32* p_pnKeyValNum, u32 p_nCapacity);

// Lets the ISP replace the value of every dynamic parameter of the set by one it
// allows (the first entry of each key). p_nChannel_id counts from 0.
SENSORDLL_EXPORT int keyval_correct(int p_nChannel_id, KeyVal* p_pKeyval, u32 p_nKeyValNum);
