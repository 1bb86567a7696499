// The device notices, and the first light as a view shows it.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxControl/VelluxControl.h"
#include "ports/Platform.h"

void VelluxWindowUi::devicePlugged() {
    vellux::assertMainThread();
    std::int32_t nCount = 0;
    VelluxFindDevices(nCount);
    nNumberOfVelluxDevices = nCount; // 0 before the first notice; kept-on-purpose:count-by-notice
    describeLight();
    if (nCount <= 0)
        return;
    m_nOnLight = vellux::kColourOff; // as it is switched off below
    if (m_light.get().access != vellux::LightState::Access::Usable) {
        const vellux::ScopedLock lock(m_displayLock);
        m_lamp.set({}); // it will refuse what follows and stay dark
    }
    VelluxTurnOffLight(0); // kept-on-purpose:off-before-colour
    displayVelluxColor(nCurrentVelluxColor);
    if (controls.buttonSelectSyncMode->state() == Button::kOn)
        setSyncMode(*controls.buttonSelectSyncMode);
    else
        setManualMode(*controls.buttonSelectManualMode);
    fillColorLists(); // last, and nothing is selected afterwards; kept-on-purpose:lists-refilled-last
}

void VelluxWindowUi::deviceUnplugged() {
    vellux::assertMainThread();
    std::int32_t nCount = 0;
    VelluxFindDevices(nCount);
    nNumberOfVelluxDevices = nCount;
    describeLight();
    // Waits for nothing and leaves the light's own flashing. (kept-on-purpose:removal-waits-for-nothing)
    bQuitManualFlashing = true;
    bQuitSyncFlashing = true;
}

void VelluxWindowUi::describeLight() {
    vellux::LightState light;
    const auto list = gDeviceCFArrayRef.get();
    if (list != nullptr && !list->empty()) {
        using Access = vellux::LightState::Access;
        const vellux::HidDeviceRef& first = list->front();
        vellux::HidManager& manager = vellux::platform().hidManager;
        const vellux::HidResult result = manager.deviceOpenResult(first);
        if (result == kIOReturnSuccess)
            light.access = Access::Usable;
        else
            light.access = manager.isPermissionRefusal(result) ? Access::NotPermitted : Access::NotUsable;
        std::int64_t nVendorID = 0;
        std::int64_t nProductID = 0;
        IOHIDDevice_GetLongProperty(first, "VendorID", nVendorID);
        IOHIDDevice_GetLongProperty(first, "ProductID", nProductID);
        light.family = vellux::familyAt(0);
        light.nVendorID = static_cast<std::uint16_t>(nVendorID);
        light.nProductID = static_cast<std::uint16_t>(nProductID);
    }
    m_light.set(light);
}
