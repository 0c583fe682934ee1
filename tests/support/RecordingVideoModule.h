// A host video module for tests: remembers every notice in order, with the
// number of ISP calls made before it, and answers with a result the test
// chooses per key.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/VideoStreamModule.h"

namespace sensortest {

class RecordingVideoModule : public VideoStreamModule {
public:
    struct Notice {
        int channel;
        int key;
        int value;
        std::size_t ispCallsBefore; // orders the notice against the ISP's call log
    };

    // p_fnIspCalls counts the ISP calls made so far.
    explicit RecordingVideoModule(std::function<std::size_t()> p_fnIspCalls)
        : m_fnIspCalls(std::move(p_fnIspCalls)) {}

    int notifyParamChange(int channel, int key, int value) const override {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        m_vecNotices.push_back({channel, key, value, m_fnIspCalls()});
        const auto it = m_mapResults.find(key);
        return it == m_mapResults.end() ? 0 : it->second;
    }
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override {
        out.clear();
        return 0;
    }
    int getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const override {
        out = LimitedFramesWDRModeParam();
        return 0;
    }

    // Notices of this key are answered with p_nResult (0 = accepted).
    void answer(int p_nKey, int p_nResult) {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        m_mapResults[p_nKey] = p_nResult;
    }
    std::vector<Notice> notices() const {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        return m_vecNotices;
    }
    // Forgets the notices and the chosen answers.
    void clear() {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        m_vecNotices.clear();
        m_mapResults.clear();
    }

private:
    mutable std::mutex m_objMutex;
    mutable std::vector<Notice> m_vecNotices;
    std::map<int, int> m_mapResults;
    std::function<std::size_t()> m_fnIspCalls;
};

} // namespace sensortest
