// Zoom/focus parameters the host hands the module; carries the zoom/focus
// lock, under which the module sends no lens command.
#pragma once

class SensorZoomFocusParam {
public:
    bool getLockZoomFocusEnable() const { return m_bLockZoomFocus; }
    void setLockZoomFocusEnable(bool enable) { m_bLockZoomFocus = enable; }

private:
    bool m_bLockZoomFocus = false;
};
