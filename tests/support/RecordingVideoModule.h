// A host video module for tests: remembers every notice in order and answers
// with a result the test chooses per key.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "platform/VideoStreamModule.h"

namespace sensortest {

class RecordingVideoModule : public VideoStreamModule {
public:
    struct Notice {
        int channel;
        int key;
        int value;
        bool operator==(const Notice& p_stOther) const {
            return channel == p_stOther.channel && key == p_stOther.key && value == p_stOther.value;
        }
    };

    int notifyParamChange(int channel, int key, int value) const override {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        m_vecNotices.push_back({channel, key, value});
        if (m_fnProbe) {
            m_vecProbes.push_back(m_fnProbe());
        }
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
    void clear() {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        m_vecNotices.clear();
        m_vecProbes.clear();
    }
    // Samples p_fnProbe at every notice, e.g. the number of ISP calls made so
    // far, so that a test can order notices against other events.
    void probeEachNotice(std::function<std::size_t()> p_fnProbe) {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        m_fnProbe = std::move(p_fnProbe);
    }
    std::vector<std::size_t> probes() const {
        std::lock_guard<std::mutex> objGuard(m_objMutex);
        return m_vecProbes;
    }

private:
    mutable std::mutex m_objMutex;
    mutable std::vector<Notice> m_vecNotices;
    mutable std::vector<std::size_t> m_vecProbes;
    std::map<int, int> m_mapResults;
    std::function<std::size_t()> m_fnProbe;
};

} // namespace sensortest
