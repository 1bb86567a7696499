// A desktop without a screen.
#pragma once

#include "fakes/Journal.h"
#include "ports/Desktop.h"

#include <functional>
#include <memory>
#include <optional>

/// Journals "window main front|out".
class FakeWindow : public vellux::Window {
public:
    explicit FakeWindow(Journal& journal) : m_journal(journal) {}

    void makeKeyAndOrderFront() override { m_journal.add("window main front"); }
    void orderOut() override { m_journal.add("window main out"); }
    void setLevel(vellux::WindowLevel) override {}

private:
    Journal& m_journal;
};

/// Journals alerts as "alert MESSAGE" when they are what all alerts of the program are, else with all that
/// differs; the rest as "desktop ...".
class FakeDesktop : public vellux::Desktop {
public:
    FakeDesktop(Journal& journal, std::string strSupportDirectory)
        : m_journal(journal), m_strSupportDirectory(std::move(strSupportDirectory)), main(journal) {}

    // ---- what tests do ----

    std::int32_t nResponse = vellux::kAlertFirstButtonReturn;
    std::function<void()> whileAlertIsOpen;
    bool bOffersActivity = true;

    // ---- the port ----

    std::int32_t runModal(const vellux::Alert& alert) override {
        std::string strLine = "alert " + alert.strInformativeText;
        if (alert.strMessageText != "Vellux")
            strLine += " | title " + alert.strMessageText;
        if (alert.buttons != std::vector<std::string>{"OK"})
            strLine += " | other buttons";
        m_journal.add(strLine);
        if (whileAlertIsOpen)
            whileAlertIsOpen();
        return nResponse;
    }
    vellux::Window* mainWindow() override { return &main; }
    std::unique_ptr<vellux::Window> loadWindow(std::string_view strDescription,
                                               vellux::WindowController&) override {
        m_journal.add("desktop load " + std::string(strDescription));
        return nullptr; // has no description of one
    }
    void openUrl(const std::string& strUrl) override { m_journal.add("desktop open " + strUrl); }
    void terminate() override { m_journal.add("desktop terminate"); }
    std::optional<vellux::ProcessActivity> beginActivityWithOptions(std::uint64_t nOptions,
                                                                    const std::string& strReason) override {
        m_journal.add("desktop activity " + std::to_string(nOptions) + " " + strReason);
        if (!bOffersActivity)
            return std::nullopt;
        return std::make_shared<int>(0);
    }
    std::string applicationSupportDirectory() override { return m_strSupportDirectory; }

private:
    Journal& m_journal;
    std::string m_strSupportDirectory;

public:
    FakeWindow main;
};
