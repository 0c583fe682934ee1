#include "platform/DeviceType.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<int, 16> kKnownIds = {
    DeviceType::IPCAMERA,
    DeviceType::IPDOME,
    DeviceType::LPR,
    DeviceType::FACE_DETECT,
    DeviceType::VEHICLE_DETECT,
    DeviceType::THERMAL_DOUBLE_SENSOR_DEVICE,
    DeviceType::THERMAL_DEVICE,
    DeviceType::AIMULTI_OBJECT_DETECT,
    DeviceType::IPP,
    DeviceType::HUMAN_TEMPERATURE,
    DeviceType::FISHEYE,
    DeviceType::THERMAL_DOUBLE_SENSOR_DOME_DEVICE,
    DeviceType::DOMECORE,
    DeviceType::BINOCULAR_DEVICE,
    DeviceType::THERMAL_IPDOME,
    DeviceType::DOMECORE_THERMAL_DEVICE,
};

} // namespace

bool DeviceType::isKnownId(int id) {
    return std::find(kKnownIds.begin(), kKnownIds.end(), id) != kKnownIds.end();
}

void DeviceType::setDeviceTypeId(int id) {
    m_nDeviceTypeId = isKnownId(id) ? id : UNKNOWN;
}
