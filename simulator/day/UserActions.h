// What a user does at the window: what a view does when somebody presses, checks, selects and types. The new
// state is written into the control first, then the controller's operation is called with it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

class VelluxWindowUi;

namespace vellux::simulator {

// Whether a control's field name is that of a check box, of a list, or of any control at all. Any thread.

bool isBox(std::string_view strName);
bool isList(std::string_view strName);
bool isControl(std::string_view strName);

/// Whether a control can be used. Any thread.
bool isEnabled(const VelluxWindowUi& controller, std::string_view strName);

// The user's actions. Main thread. Each returns why it can't be done, absent when it was done. Names are ones
// that the functions above know.

using Refusal = std::optional<std::string>;

Refusal setBox(VelluxWindowUi& controller, std::string_view strBox, bool bOn);
Refusal selectEntry(VelluxWindowUi& controller, std::string_view strList,
                    const std::variant<std::string, std::int64_t>& entry);
Refusal selectMode(VelluxWindowUi& controller, bool bManual);

struct Credentials {
    std::string strServer;
    std::string strUserName;
    std::string strPassword;
};
Refusal enterCredentials(VelluxWindowUi& controller, const Credentials& credentials);

/// Presses the Connect button, which must have the given title.
Refusal pressConnect(VelluxWindowUi& controller, std::string_view strTitle);

} // namespace vellux::simulator
