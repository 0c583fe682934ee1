// The device type numbers of the machine description.
#pragma once

class DeviceType {
public:
    enum {
        UNKNOWN = 0,
        IPCAMERA = 1,
        IPDOME = 4,
        LPR = 8,
        FACE_DETECT = 9,
        VEHICLE_DETECT = 11,
        THERMAL_DOUBLE_SENSOR_DEVICE = 13,
        THERMAL_DEVICE = 14,
        AIMULTI_OBJECT_DETECT = 15,
        IPP = 16,
        HUMAN_TEMPERATURE = 17,
        FISHEYE = 18,
        THERMAL_DOUBLE_SENSOR_DOME_DEVICE = 19,
        DOMECORE = 20,
        BINOCULAR_DEVICE = 22,
        THERMAL_IPDOME = 23,
        DOMECORE_THERMAL_DEVICE = 104
    };

    // One of the sixteen numbers above; anything else is stored as UNKNOWN.
    void setDeviceTypeId(int id);
    int getDeviceTypeId() const { return m_nDeviceTypeId; }
    static bool isKnownId(int id);

private:
    int m_nDeviceTypeId = UNKNOWN;
};
