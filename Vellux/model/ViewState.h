// What a window shows beside its controls: values that the modules keep and a view only reads.
#pragma once

#include "model/Colour.h"
#include "model/LightFamily.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace vellux {

/// What the light shows; without a light, what one would show.
struct LampState {
    /// Colour index. While the light flashes, the colour that it flashes in.
    std::int32_t nColor = kColourOff;
    bool bFlashing = false;

    bool operator==(const LampState&) const = default;
};

/// What a user needs to know about the first light.
struct LightState {
    enum class Access {
        NoLight,      ///< none found
        Usable,       ///< found and open
        NotPermitted, ///< found, but this user may not open it
        NotUsable,    ///< found, but it can't be opened for another reason
    };
    Access access = Access::NoLight;
    LightFamily family = LightFamily::None;
    /// USB identity; 0 without a light.
    std::uint16_t nVendorID = 0;
    std::uint16_t nProductID = 0;

    bool operator==(const LightState&) const = default;
};

/// Whether the presence is being followed.
enum class ChannelState {
    Closed, ///< never opened, or closed by us
    Open,
    NotReached, ///< the last poll failed; it is tried again until the server answers
    Ended,      ///< ended without our closing it
};

/// Why the following ended by itself, as far as the last answer tells.
enum class EndReason {
    Unknown,
    NoPresenceEvent,  ///< a batch of other news: a note was changed, for instance
    UnreadableAnswer, ///< no batch of events: the server no longer knows this sign-in, for instance
    PresenceNotRead,  ///< there was news of the presence, but it could not be read
};

/// The event channel as a view shows it.
struct ChannelStatus {
    ChannelState state = ChannelState::Closed;
    std::chrono::system_clock::time_point since{}; ///< of NotReached: the first failure
    EndReason reason = EndReason::Unknown;         ///< of Ended

    bool operator==(const ChannelStatus&) const = default;
};

/// The presence that was read last.
struct PresenceStatus {
    std::optional<std::string> strToken; ///< as the server spells it; "" before the first
    bool bOnCall = false;

    bool operator==(const PresenceStatus&) const = default;
};

/// The steps of a sign-in, in their order.
enum class SignInStep { SigningIn, FindingService, Registering, ReadingPresence };

/// The sign-in that was begun last.
struct SignInStatus {
    enum class Result {
        None, ///< none since the start, a Disconnect or manual mode
        Running,
        Succeeded,
        Failed,
        Refused, ///< the server refuses user name and password
    };
    Result result = Result::None;
    SignInStep step = SignInStep::SigningIn;       ///< the one that runs, or the last one that did
    std::chrono::system_clock::time_point since{}; ///< when it was begun
    bool bAutomatic = false;                       ///< begun by the program, with nobody to answer an alert
    std::string strUser{}, strServer{};            ///< what it signs in with
    std::uint64_t nNumber = 0;                     ///< which it is: sign-ins can overlap

    bool operator==(const SignInStatus&) const = default;
};

} // namespace vellux
