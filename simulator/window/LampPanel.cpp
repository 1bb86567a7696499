#include "window/LampPanel.h"

#include "server/Bodies.h"
#include "window/LightPicture.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QVBoxLayout>

#include <array>
#include <string>

namespace vellux::simulator {

namespace {

struct PresenceRow {
    const char* strTitle;
    const char* strAvailability;
    const char* strActivity;
};

// What another client of the user sets.
constexpr std::array<PresenceRow, 8> kPresences = {{
    {"&Available", "Online", ""},
    {"&Busy", "Busy", ""},
    {"On the &phone", "Busy", "on-the-phone"},
    {"&Do not disturb", "DoNotDisturb", ""},
    {"Be &right back", "BeRightBack", ""},
    {"A&way", "Away", ""},
    {"&Idle", "IdleOnline", ""},
    {"&Offline", "Offline", ""},
}};

// A batch with nothing but a changed note: the client opens no further poll.
Reply noteBatch(const PresenceServer& server) {
    const std::string strMe = server.applicationPath() + "/me";
    return {200, R"({"_links":{"self":{"href":"x"},"next":{"href":")" + server.nextPollPath() +
                     R"("}},"sender":[{"rel":"me","href":")" + strMe +
                     R"(","events":[{"link":{"rel":"note","href":")" + strMe +
                     R"(/note"},"type":"updated"}]}]})"};
}

// What a server says when it no longer knows the sign-in.
Reply expiry() {
    return {401, unauthorizedPage(), "text/html"};
}

QPushButton* addButton(QGridLayout& layout, int nRow, int nColumn, const char* strTitle,
                       const std::function<void()>& pressed) {
    auto* const button = new QPushButton(strTitle);
    QObject::connect(button, &QPushButton::clicked, button, pressed);
    layout.addWidget(button, nRow, nColumn);
    return button;
}

} // namespace

LampPanel::LampPanel(Dependencies dependencies) : m_dependencies(std::move(dependencies)) {
    setWindowTitle("Vellux simulator");
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(lightBox(), 1);
    layout->addWidget(presenceBox());
    layout->addWidget(worldBox());
    m_observation =
        m_dependencies.changes.observe([this] { m_dependencies.mainThread.post([this] { refresh(); }); });
    refresh();
}

QWidget* LampPanel::lightBox() {
    auto* const box = new QGroupBox("The light, as it decodes its reports");
    auto* const layout = new QVBoxLayout(box);
    m_picture = new LightPicture;
    m_text = new QLabel;
    m_text->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_picture, 1);
    layout->addWidget(m_text);
    return box;
}

QWidget* LampPanel::presenceBox() {
    auto* const box = new QGroupBox("The user, at another client");
    auto* const layout = new QGridLayout(box);
    int nPosition = 0;
    for (const PresenceRow& row : kPresences) {
        addButton(*layout, nPosition / 2, nPosition % 2, row.strTitle,
                  [this, &row] { m_dependencies.server.setPresence(row.strAvailability, row.strActivity); });
        ++nPosition;
    }
    return box;
}

QWidget* LampPanel::worldBox() {
    auto* const box = new QGroupBox("The world");
    auto* const layout = new QGridLayout(box);
    PresenceServer& server = m_dependencies.server;
    m_channel = new QLabel;
    layout->addWidget(m_channel, 0, 0, 1, 2);
    addButton(*layout, 1, 0, "&Note changes only", [&server] { server.emitBatch(noteBatch(server)); });
    addButton(*layout, 1, 1, "Sign-in e&xpires", [&server] { server.emitBatch(expiry()); });
    addButton(*layout, 2, 0, "&Cut the network", [&server] {
        constexpr int kTimes = 180; // for a minute and a half: the client tries twice a second
        server.interfere(Route::Events, {{}, Reply::cut(), CutOff::Never, kTimes});
        server.cutHeldPolls();
    });
    m_plug = addButton(*layout, 2, 1, "", [this] {
        if (m_dependencies.lights.isPlugged(m_dependencies.light))
            m_dependencies.lights.unplug(m_dependencies.light);
        else
            m_dependencies.lights.plug(m_dependencies.light);
        refresh();
    });
    addButton(*layout, 3, 0, "&Start Vellux again", m_dependencies.reopen);
    return box;
}

void LampPanel::refresh() {
    const LightRecord record = m_dependencies.light->record();
    m_picture->setState(record.state);
    std::string strText = record.state.text();
    if (record.nFaults != 0)
        strText += " – " + std::to_string(record.nFaults) + " report(s) not understood";
    m_text->setText(QString::fromStdString(strText));
    m_channel->setText(m_dependencies.server.isPolling() ? "The client has a poll open."
                                                         : "No poll is open.");
    m_plug->setText(m_dependencies.lights.isPlugged(m_dependencies.light) ? "&Unplug the light"
                                                                          : "Pl&ug the light in");
}

void LampPanel::closeEvent(QCloseEvent*) {
    m_dependencies.end();
}

} // namespace vellux::simulator
