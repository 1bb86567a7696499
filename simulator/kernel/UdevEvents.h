// udev's events in the test's hands: libudev's monitors, linked with --wrap, get what comes from here only.
#pragma once

namespace udev_events {

/// Whether a monitor listens to this group ("udev", or "kernel" for what udev's rules have not seen) and lets
/// events of this subsystem through. Any thread.
bool reaches(const char* strGroup, const char* strSubsystem);

/// udev announces that a hidraw node has come, changed or gone. Any thread.
void announce();

} // namespace udev_events
