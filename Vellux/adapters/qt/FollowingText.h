// The state of the following in words: the same in the window, the tray and the notification.
#pragma once

#include "app/Following.h"

#include <QString>

namespace vellux {

/// What the words depend on beside the state.
struct FollowingWording {
    bool bReconnect = false;   ///< the user has chosen that the program signs in again by itself
    bool bSayingSince = false; ///< a sign-in is said to last since when
};

/// The state as a line of its own, "" in manual mode. Times are local, in the user's format, with the date
/// unless it is today. Main thread.
[[nodiscard]] QString followingText(const FollowingState& state, const FollowingWording& wording);

/// The same words as a part of a longer text: without the sign-in's step and without a full stop.
[[nodiscard]] QString shortFollowingText(const FollowingState& state, bool bReconnect);

} // namespace vellux
