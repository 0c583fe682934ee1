// The reader's entry points for device paths: resolved through the device
// root, then read as host paths. Kept apart from FileReader.cpp, which the ISP
// simulator also builds and which must not depend on the device root.
#include "platform/DeviceRoot.h"
#include "platform/FileReader.h"

ReadStatus readDeviceFile(const std::string& p_strDevicePath, std::size_t p_nCap,
                          std::string& p_strOut, Oversize p_eOversize) {
    return readHostFile(DeviceRoot::resolve(p_strDevicePath), p_nCap, p_strOut, p_eOversize);
}

std::string describeUnopenable(const std::string& p_strDevicePath) {
    return describeUnopenableHost(DeviceRoot::resolve(p_strDevicePath));
}
