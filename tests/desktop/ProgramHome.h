// What the program finds when it starts as a process of its own.
#pragma once

#include "AES128Transform.h"
#include "MF_Base64Additions.h"
#include "fakes/Sanitizers.h"
#include "support/Files.h"

#include <filesystem>
#include <span>

inline constexpr const char* kUserName = "EXAMPLE\\robin";
inline constexpr const char* kPassword = "example-password";

/// A home and a runtime directory, and no display, bus or desktop, for the programs that this process starts.
/// Removed with this object.
class ProgramHome {
public:
    /// `strDirectory` is made if it is not there.
    explicit ProgramHome(const std::string& strDirectory) : m_strDirectory(strDirectory) {
        ::setenv("HOME", home().c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", m_strDirectory.c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        for (const char* strBus : {"DBUS_SYSTEM_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"})
            ::setenv(strBus, "unix:path=/nowhere", 1);
        for (const char* strUnset : {"XDG_DATA_HOME", "DISPLAY", "WAYLAND_DISPLAY"})
            ::unsetenv(strUnset);
        expectThreadsAtTheEnd();
        std::filesystem::create_directories(data());
    }
    ~ProgramHome() { std::filesystem::remove_all(m_strDirectory); }
    ProgramHome(const ProgramHome&) = delete;
    ProgramHome& operator=(const ProgramHome&) = delete;

    const std::string& directory() const { return m_strDirectory; }
    std::string data() const { return home() + "/.local/share/Vellux"; }
    std::string content(const char* strFile) const {
        return vellux::readTextFile(data() + "/" + strFile).value_or("absent");
    }

    /// As Connect would have left it.
    void writeSignIn(const std::string& strHost, const std::string& strPassword = kPassword) const {
        const std::string strText = strHost + ";" + kUserName + ";" + strPassword;
        const auto encrypted = AES128EncryptedDataWithKey(
            std::span(reinterpret_cast<const std::uint8_t*>(strText.data()), strText.size()),
            "k4mpr8vtxw2nbq6z");
        vellux::writeFile(data() + "/configv31.bin", base64String(*encrypted).value(),
                          vellux::FileAccess::OwnerOnly);
    }
    void writeWindowState(const std::string& strText) const {
        vellux::writeFile(data() + "/uistate.txt", strText, vellux::FileAccess::Default);
    }

private:
    std::string home() const { return m_strDirectory + "/home"; }

    const std::string m_strDirectory;
};
