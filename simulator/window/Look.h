// How windows look when pictures of them are taken.
#pragma once

namespace vellux::simulator {

enum class Look {
    Native, ///< as the desktop has it
    Light,  ///< Qt's own style with its light palette: pictures look alike on every machine
    Dark,   ///< the same with a dark palette
    Large,  ///< the light look at 200 %
};

/// What has to be done before the application object is made, and before any other thread runs.
void prepareLook(Look look);
/// What has to be done once it is there. Main thread.
void applyLook(Look look);

} // namespace vellux::simulator
