// What the fuzz targets share: one temporary device root per process with the
// virtual clock in force, sample devices copied into it, a channel brought up
// the way a host does, and the splitting of an input into several texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "controller/ISensorController.h"
#include "platform/ModuleConfigure.h"
#include "platform/VideoStreamModule.h"
#include "support/TestSupport.h"

namespace sensorfuzz {

// A host video module that accepts every notice and reports no limits.
class QuietVideoModule : public VideoStreamModule {
public:
    int notifyParamChange(int, int, int) const override { return 0; }
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override;
    int getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const override;
};

// The process-wide world of a fuzz target. The first use creates the device
// root, installs the virtual clock (pauses cost nothing) and sends the
// module's console output to /dev/null (set SENSOR_FUZZ_VERBOSE to keep it).
class FuzzWorld {
public:
    static FuzzWorld& get();

    const sensortest::TempDeviceRoot& root() const { return *m_pRoot; }
    // Copies devices/<name> over the root and loads the device's ISP profile.
    void useSampleDevice(const std::string& p_strName);
    // The module configuration the root's machine description and module
    // configuration give for a channel (a default one when none matches).
    ModuleConfigure moduleFor(int p_nChannel) const;
    // A controller brought up on the root (construct, channel, video module,
    // init) whose own thread is stopped, so that each input runs alone.
    // Destroying it releases the channel (uinit) first.
    using Channel = std::unique_ptr<ISensorController, void (*)(ISensorController*)>;
    Channel bringUp(int p_nChannel) const;
    // The channel kept for the whole run, brought up on first use.
    ISensorController& channel();

private:
    FuzzWorld();
    ~FuzzWorld();
    static void releaseChannelAtExit();
    std::unique_ptr<sensortest::TempDeviceRoot> m_pRoot;
    QuietVideoModule m_objVideo;
    Channel m_pChannel;
};

// The input cut at NUL bytes into exactly p_nParts texts; the last part takes
// the rest (NULs included), missing parts are empty. A NUL cannot stand inside
// a text the module parses, so it is the natural separator.
std::vector<std::string> splitParts(const uint8_t* p_pData, std::size_t p_nSize,
                                    std::size_t p_nParts);

} // namespace sensorfuzz
