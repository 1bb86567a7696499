// The light device driver: plain functions over module-wide state. Discovery.cpp finds the lights and follows
// them, Reports.cpp builds and sends the output reports, Colours.cpp turns colours into reports.
//
// Every operation that addresses a light takes its device index, the position in gDeviceCFArrayRef, and
// returns a result code. Levels range from 0 to 255. Discovery, release and both notices run on the main
// thread. The senders may be called from any thread: the list is copied out, and one lock, held for one
// attempt at a time, guards the report buffer and the shadow bytes. The order of reports is up to the
// callers, who order their colours under the controller's lock.
//
// Names and result codes are those of another platform's HID service. (kept-on-purpose:foreign-names)
#pragma once

#include "model/LightFamily.h"
#include "ports/HidManager.h"
#include "threads/Shared.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

// ---- Result codes ----

using VelluxResult = vellux::HidResult;

constexpr VelluxResult kIOReturnSuccess = 0;
/// No light plugged or listed, or the light's type does not support the operation.
constexpr VelluxResult kIOReturnNoDevice = 0xE00002C0;
/// The list holds no device at the index.
constexpr VelluxResult kIOReturnBadArgument = 0xE00002C2;

// ---- Report bits ----
// Operations use OnOff, FlashOnOff and FlashSpeed alone. (kept-on-purpose:unused-masks)

constexpr std::uint8_t byMaskLightOnOff = 0x01;      // light control: set = off
constexpr std::uint8_t byMaskLightDimControl = 0x02; // light control: dimming, stays 0
constexpr std::uint8_t byMaskLightFlashOnOff = 0x04; // light control: set = flashing
constexpr std::uint8_t byMaskLightFlashSpeed = 0x38; // light control: 1 slow, 2 medium, 4 fast, from bit 3 on
constexpr std::uint8_t byMaskMusicSelect = 0x0F;     // music control 1: tune number
constexpr std::uint8_t byMaskMusicOnOff = 0x10;      // music control 1: play
constexpr std::uint8_t byMaskMusicRepeatOnOff = 0x20; // music control 1: repeat
constexpr std::uint8_t byMaskBit6Bit7 = 0xC0;         // bits that nothing uses
constexpr std::uint8_t byMaskVolumeControl = 0x0F;    // music control 2: volume
constexpr std::uint8_t byMaskMute = 0x80;             // music control 2: mute

/// Prefix of the driver's log lines; nothing prints it. (kept-on-purpose:log-prefix)
constexpr std::string_view strLogPrefix = "VelluxControl-Lib:";

// ---- Lights ----

namespace vellux {

/// Lights listed at or beyond this index have no type.
constexpr std::size_t kDeviceTableSize = 32;

/// The family of the light at a device index; None beyond the table. Any thread.
LightFamily familyAt(std::uint8_t byDeviceIndex);

} // namespace vellux

/// Device type per device index: 0 none, 1 framed code, 2 plain code, 3, 4, 6 and 7 levels (V30). Written by
/// discovery. Survives removal and release.
extern std::array<std::atomic<std::uint8_t>, vellux::kDeviceTableSize> asDeviceInfo;
/// The platform's manager; null before the first discovery and after release.
extern vellux::HidManager* gIOHIDManagerRef VELLUX_GUARDED_BY(vellux::mainThreadRole);
/// The lights of the last discovery; null when there is no list.
extern vellux::Shared<std::shared_ptr<const vellux::HidDeviceList>> gDeviceCFArrayRef;
extern std::atomic<std::int32_t> gnNumberOfVelluxDevices;
/// True after an arrival notice, false after a removal notice, whichever light it was; no report is sent
/// while it is false.
extern std::atomic<bool> bDevicePlugged;

/// Lists the lights and their types again and writes their number to `nDeviceCount`; the first call also
/// creates the manager. False when the manager is unavailable or can't be opened; true even when there is no
/// light. Main thread; the first call may block while the platform lists its devices.
bool VelluxFindDevices(std::int32_t& nDeviceCount);

/// Releases the list and the manager; afterwards every send returns kIOReturnNoDevice. Main thread.
void VelluxReleaseDevices();

/// Reads a numeric property of a device as a signed 32-bit integer into the low half of `nValue`; leaves it
/// untouched when the handle is null, or the property absent or not a number. A handle that isn't a HID
/// device is a bug and ends the program. Main thread.
void IOHIDDevice_GetLongProperty(const vellux::HidDeviceRef& pIOHIDDeviceRef, std::string_view strKey,
                                 std::int64_t& nValue) VELLUX_REQUIRES(vellux::mainThreadRole);

/// Appends one device of the manager's set to the ordered list.
void CFSetApplierFunctionCopyToCFArray(const vellux::HidDeviceRef& value, vellux::HidDeviceList& list);

/// The manager's arrival and removal notices. Main thread.
void Handle_DeviceMatchingCallback(const vellux::HidDeviceRef& device)
    VELLUX_REQUIRES(vellux::mainThreadRole);
void Handle_DeviceRemovalCallback(const vellux::HidDeviceRef& device) VELLUX_REQUIRES(vellux::mainThreadRole);

// ---- Reports ----
// Each send makes up to 50 attempts, with a pause of 10 ms after each but the 50th. So it blocks for at least
// 10 ms, and for half a second when the light refuses every report at once; a light that hangs adds to that,
// at first 10 s: see HidManager::deviceSetReport. A light at index 32 or beyond has no type:
// HIDSendVelluxControlCode returns kIOReturnBadArgument for it, and the V30 operations kIOReturnNoDevice.

/// Sends one colour code to a light of type 1 or 2.
VelluxResult HIDSendVelluxControlCode(std::uint8_t byDeviceIndex, std::uint8_t byCode);

/// Sends one report of the given levels and control bytes to a V30 light.
VelluxResult HIDSendVellux30ControlCode(std::uint8_t byDeviceIndex, std::uint8_t byRed, std::uint8_t byGreen,
                                        std::uint8_t byBlue, std::uint8_t byControl, std::uint8_t byMusic1,
                                        std::uint8_t byMusic2);

// The state that all V30 lights share, changed one byte at a time. Each operation changes its shadow byte,
// even if the send then fails, and sends the whole state. For any other light it returns kIOReturnNoDevice
// and changes nothing.

VelluxResult TurnOnV30Light(std::uint8_t byDeviceIndex);
/// Keeps the levels and the flash bits, so that the next switch-on shows them again.
VelluxResult TurnOffV30Light(std::uint8_t byDeviceIndex);
VelluxResult SetRedColorBrightnessLevel(std::uint8_t byDeviceIndex, std::uint8_t byLevel);
VelluxResult SetGreenColorBrightnessLevel(std::uint8_t byDeviceIndex, std::uint8_t byLevel);
VelluxResult SetBlueColorBrightnessLevel(std::uint8_t byDeviceIndex, std::uint8_t byLevel);
VelluxResult StartLightFlash(std::uint8_t byDeviceIndex);
VelluxResult StopLightFlash(std::uint8_t byDeviceIndex);
/// Speed 0 slow, 1 medium, 2 fast.
VelluxResult SelectLightFlashSpeed(std::uint8_t byDeviceIndex, std::uint8_t bySpeed);

// ---- Colours ----

/// Switches a V30 light on at the given levels in four reports, stopping at the first that fails.
VelluxResult TurnOnRGBLights(std::uint8_t byDeviceIndex, std::uint8_t byRed, std::uint8_t byGreen,
                             std::uint8_t byBlue);

// Each shows one colour. For a light of unknown type they send nothing and return success.
VelluxResult VelluxTurnOnRedLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOnGreenLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOnBlueLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOnYellowLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOnMagentaLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOnCyanLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOnWhiteLight(std::uint8_t byDeviceIndex);
/// Only V30 lights have orange; for any other it returns kIOReturnNoDevice.
VelluxResult VelluxTurnOnOrangeLight(std::uint8_t byDeviceIndex);
VelluxResult VelluxTurnOffLight(std::uint8_t byDeviceIndex);
