// What the user may choose beyond the controls. All off: then nothing here changes what the program does.
#pragma once

namespace vellux {

struct Choices {
    /// Sign in again when the following has ended or a sign-in has failed.
    bool bReconnect = false;
    /// The light goes off while the server is not reached for more than a minute.
    bool bLightOffWhenNotReached = false;
    /// No choice, but kept with them: the user knows that this desktop shows no icon for a hidden window.
    bool bToldOfMissingTray = false;

    bool operator==(const Choices&) const = default;
};

} // namespace vellux
