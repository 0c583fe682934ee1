// The host's video-stream module, as the sensor module sees it: an abstract
// interface that hosts, tests and the simulator implement.
#pragma once

#include <vector>

// One video stream of the host.
class AVStreamParam {
public:
    int getVideoEncoderType() const { return m_nVideoEncoderType; }
    int getVideoHeight() const { return m_nVideoHeight; }
    void setVideoEncoderType(int type) { m_nVideoEncoderType = type; }
    void setVideoHeight(int height) { m_nVideoHeight = height; }

private:
    int m_nVideoEncoderType = 0;
    int m_nVideoHeight = 0;
};

// The limited-frames WDR mode of a channel and its lens-distortion correction.
class LimitedFramesWDRModeParam {
public:
    int getLimitFramesModeId() const { return m_nLimitFramesModeId; }
    int getLimitWdr() const { return m_nLimitWdr; }
    int getLDCSupport() const { return m_nLDCSupport; }
    int getLDCSwitch() const { return m_nLDCSwitch; }
    void setLimitFramesModeId(int id) { m_nLimitFramesModeId = id; }
    void setLimitWdr(int limit) { m_nLimitWdr = limit; }
    void setLDCSupport(int support) { m_nLDCSupport = support; }
    void setLDCSwitch(int on) { m_nLDCSwitch = on; }

private:
    int m_nLimitFramesModeId = 0;
    int m_nLimitWdr = 0;
    int m_nLDCSupport = 0;
    int m_nLDCSwitch = 0;
};

class VideoStreamModule {
public:
    virtual ~VideoStreamModule();
    // 0 when the host accepted the change.
    virtual int notifyParamChange(int channel, int key, int value) const = 0;
    virtual bool isBusy() const = 0;
    virtual int getAVStreamParams(std::vector<AVStreamParam>& out) const = 0;
    virtual int getLimitedFramesWDRModeParam(int channel, LimitedFramesWDRModeParam& out) const = 0;
};
