// The host's video-stream module as sensorctl plays it: one 1080p H.264
// stream, no limited-frames WDR mode, and every parameter notice accepted and
// shown on the console.
#pragma once

#include <vector>

#include "platform/VideoStreamModule.h"

class ConsoleVideoModule : public VideoStreamModule {
public:
    int notifyParamChange(int channel, int key, int value) const override;
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override;
    int getLimitedFramesWDRModeParam(int channel, LimitedFramesWDRModeParam& out) const override;
};
