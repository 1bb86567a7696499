// A desktop for the program, and on it somebody who reads its windows through the accessibility bus.
#pragma once

#include "UserBus.h"

#include <algorithm>

/// Has a display, a session bus and the accessibility bus for the programs that are started from now on; they
/// end with this object.
class ScreenReader {
public:
    ScreenReader() {
        ::setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
        EXPECT_EQ(lines(), std::vector<std::string>()); // and the accessibility bus is there
    }
    ~ScreenReader() { ::unsetenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"); }
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    /// All that is on the screen now, as screen.py says it.
    std::vector<std::string> lines() const {
        ChildProcess script({"/usr/bin/python3", SCREEN_SCRIPT});
        std::vector<std::string> lines;
        for (std::string strLine = script.readLine(); !strLine.empty(); strLine = script.readLine())
            lines.push_back(strLine);
        return lines;
    }
    bool shows(const std::string& strLine) const {
        const std::vector<std::string> shown = lines();
        return std::find(shown.begin(), shown.end(), strLine) != shown.end();
    }
    /// The titles of all windows.
    std::vector<std::string> windows() const {
        std::vector<std::string> titles;
        for (const std::string& strLine : lines())
            if (strLine.starts_with("window "))
                titles.push_back(strLine.substr(7));
        return titles;
    }

private:
    const XServer m_display{{"-ac"}}; // the programs are the ordinary user's
    const UserBus m_session{"DBUS_SESSION_BUS_ADDRESS"};
};
