// What a day is played with.
#pragma once

#include "light/VirtualLights.h"
#include "platform/Changes.h"
#include "platform/HeadlessDesktop.h"
#include "server/PresenceServer.h"
#include "threads/MainThread.h"

class VelluxWindowUi;

namespace vellux::simulator {

/// References to the simulation's parts; all of them outlive whoever plays.
struct Dependencies {
    MainThread& mainThread;
    Changes& changes;
    HeadlessDesktop& desktop;
    VirtualLights& lights;
    VirtualLightRef light; ///< the one that is plugged and unplugged
    PresenceServer& server;
    VelluxWindowUi& controller;
};

} // namespace vellux::simulator
