// What happens in the course of a simulated day, as data. docs/simulator.md describes the JSON that it is
// read from.
#pragma once

#include "server/Interference.h"
#include "server/Reply.h"
#include "server/Route.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vellux::simulator {

// ---- The user's steps; each is done as a view does it, and fails when the control is disabled -------------

/// Fills in server, user name and password and presses Connect.
struct ConnectStep {
    std::optional<std::string> strUserName; ///< the account's when absent
    std::optional<std::string> strPassword; ///< likewise
    bool bWait = true;                      ///< until the attempt has come to its end
};

/// Presses Disconnect.
struct DisconnectStep {};

/// Sets a check box.
struct BoxStep {
    std::string strBox;
    bool bOn = false;
};

/// Selects an entry of a list, by its text or by its position from 0 on.
struct SelectStep {
    std::string strList;
    std::variant<std::string, std::int64_t> entry;
};

struct ModeStep {
    bool bManual = false;
    bool bWait = true; ///< until a connection that had been left for manual mode has been taken up again
};

/// Ends the program; steps after it are not played.
struct QuitStep {};

// ---- The world's steps ------------------------------------------------------------------------------------

struct PresenceStep {
    std::string strAvailability;
    std::string strActivity;
    bool bWait = true; ///< until a client that was polling polls again, having taken the change in
};

struct PlugStep {
    bool bPlug = false;
};

/// Answers the poll with any reply. "{application}" and "{next}" in the body stand for the application's path
/// and for that of the poll after this one.
struct BatchStep {
    Reply reply;
};

/// Answers, delays or cuts off the next requests of a route.
struct InterfereStep {
    Route route = Route::Discovery;
    Interference interference;
};

/// Cuts off the connections of the polls that are held now.
struct DropStep {};

// ---- Time -------------------------------------------------------------------------------------------------

/// Waits until all of what is given holds at the same time.
struct WaitStep {
    std::optional<std::string> strLight; ///< what the light shows, "Red" or "Red flashing slow"
    std::optional<std::string> strFlash; ///< colour that the light flashes in, by itself or by being switched
    std::optional<std::string> strStatus;  ///< the status line
    std::optional<std::string> strButton;  ///< title of the Connect button
    std::optional<std::string> strAlert;   ///< an alert shown since the last step that was no wait
    std::optional<bool> bPolling;          ///< whether the client has a poll open
    std::optional<std::string> strEnabled; ///< a control that can be used
    std::chrono::milliseconds limit{20'000};
};

struct SleepStep {
    std::chrono::milliseconds time{0};
};

using Step = std::variant<ConnectStep, DisconnectStep, BoxStep, SelectStep, ModeStep, QuitStep, PresenceStep,
                          PlugStep, BatchStep, InterfereStep, DropStep, WaitStep, SleepStep>;

/// A step with the name that it has in the script.
struct NamedStep {
    std::string strName;
    Step step;
};

struct Script {
    // The account that the server knows; an example's, not a person's.
    std::string strUserName = "EXAMPLE\\robin";
    std::string strPassword = "example-password";
    std::vector<NamedStep> steps;
    /// What the light must show after the program has ended.
    std::string strExpectedLight = "None";
};

} // namespace vellux::simulator
