#include "day/DefaultDay.h"

namespace vellux::simulator {

std::string_view defaultDay() {
    return R"json({
  "account": {"user": "EXAMPLE\\robin", "password": "example-password"},
  "steps": [
    // The user wants calls to flash in a colour of their own, and signs in.
    {"do": "check", "box": "buttonFlashOnCall"},
    {"do": "select", "list": "syncModeColorList", "entry": "Cyan"},
    {"do": "connect"},
    {"do": "wait", "light": "Green", "status": "Online", "button": "Disconnect"},
    {"do": "sleep", "milliseconds": 300},

    {"do": "presence", "availability": "Busy"},
    {"do": "wait", "light": "Red", "status": "Busy"},
    {"do": "sleep", "milliseconds": 300},

    {"do": "presence", "availability": "Busy", "activity": "on-the-phone"},
    {"do": "wait", "flash": "Cyan", "status": "Busy"},

    {"do": "presence", "availability": "DoNotDisturb"},
    {"do": "wait", "light": "Purple", "status": "DoNotDisturb"},
    {"do": "sleep", "milliseconds": 300},

    // Away from the desk: yellow, or dark when the box says so.
    {"do": "presence", "availability": "Away"},
    {"do": "wait", "light": "Yellow", "status": "Away"},
    {"do": "check", "box": "buttonLightOffOnAway"},
    {"do": "wait", "light": "None", "status": "Away"},
    {"do": "sleep", "milliseconds": 300},
    {"do": "uncheck", "box": "buttonLightOffOnAway"},
    {"do": "wait", "light": "Yellow", "status": "Away"},
    {"do": "sleep", "milliseconds": 300},

    {"do": "presence", "availability": "Offline"},
    {"do": "wait", "light": "None", "status": "Offline"},
    {"do": "sleep", "milliseconds": 300},

    // A light show of one's own; coming back from it, the connection is taken up again.
    {"do": "mode", "mode": "manual"},
    {"do": "sleep", "milliseconds": 150},
    {"do": "select", "list": "manualModeColorList", "entry": "Blue"},
    {"do": "sleep", "milliseconds": 150},
    {"do": "select", "list": "manualModeFlashSpeedList", "entry": "Fast"},
    {"do": "wait", "flash": "Blue", "status": "", "button": "Connect"},
    {"do": "mode", "mode": "sync"},
    {"do": "wait", "light": "Green", "status": "Online", "button": "Disconnect"},
    {"do": "sleep", "milliseconds": 300},

    {"do": "disconnect"},
    {"do": "wait", "light": "None", "status": "Disconnected", "button": "Connect"},
    {"do": "quit"}
  ],
  "expect": {"light": "None"}
})json";
}

} // namespace vellux::simulator
