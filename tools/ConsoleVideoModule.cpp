#include "tools/ConsoleVideoModule.h"

#include <cstdio>

#include "tools/ParamNames.h"

namespace {
constexpr int ENCODER_H264 = 1;
constexpr int STREAM_HEIGHT = 1080;
constexpr int FRAMES_MODE_NORMAL = 1;
} // namespace

int ConsoleVideoModule::notifyParamChange(int channel, int key, int value) const {
    std::printf("  video module: channel %d told %s = %d\n", channel,
                keyLabel(static_cast<u32>(key)).c_str(), value);
    return 0;
}

int ConsoleVideoModule::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    AVStreamParam objStream;
    objStream.setVideoEncoderType(ENCODER_H264);
    objStream.setVideoHeight(STREAM_HEIGHT);
    out.assign(1, objStream);
    return 0;
}

int ConsoleVideoModule::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    out.setLimitFramesModeId(FRAMES_MODE_NORMAL);
    return 0;
}
