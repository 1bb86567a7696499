#include "adapters/qt/Tray.h"

#include "adapters/dbus/StatusNotifierHost.h"
#include "adapters/qt/LampDrawing.h"
#include "adapters/qt/Words.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QSystemTrayIcon>

#include <optional>
#include <utility>

namespace vellux {

namespace {

QString toolTipOf(const TrayState& state) {
    QStringList parts{QStringLiteral("Vellux"), state.strFollowing, state.strPresence,
                      lampDescription(state.lamp)};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(" \u2013 "));
}

} // namespace

/// The menu, which always exists, and the icon, which comes and goes with the desktop's tray.
class Tray::Icon {
public:
    explicit Icon(Actions actions) : m_actions(std::move(actions)) {
        QObject::connect(m_menu.addAction(QCoreApplication::translate("Tray", "&Show")), &QAction::triggered,
                         &m_menu, m_actions.show);
        m_pConnect = m_menu.addAction(QString());
        QObject::connect(m_pConnect, &QAction::triggered, &m_menu, m_actions.connect);
        m_menu.addSeparator();
        QObject::connect(m_menu.addAction(QCoreApplication::translate("Tray", "E&xit")), &QAction::triggered,
                         &m_menu, m_actions.exit);
        setMenu();
    }

    void setState(const TrayState& state) {
        const TrayState before = std::exchange(m_state, state);
        setMenu();
        if (!m_icon)
            return;
        if (state.lamp != before.lamp || state.bMarked != before.bMarked)
            m_icon->setIcon(lampIcon(state.lamp, state.bMarked));
        if (toolTipOf(state) != toolTipOf(before))
            m_icon->setToolTip(toolTipOf(state));
    }

    bool isThere() const { return m_icon.has_value(); }

private:
    /// An action emits a signal only for a real change.
    void setMenu() {
        m_pConnect->setText(shownWord(m_state.strConnectTitle.toStdString()));
        m_pConnect->setVisible(!m_state.strConnectTitle.isEmpty());
        m_pConnect->setEnabled(m_state.bConnectEnabled);
    }

    void setPresent(bool bPresent) {
        m_icon.reset();
        if (!bPresent)
            return;
        m_icon.emplace(lampIcon(m_state.lamp, m_state.bMarked));
        m_icon->setToolTip(toolTipOf(m_state));
        m_icon->setContextMenu(&m_menu);
        QObject::connect(&*m_icon, &QSystemTrayIcon::activated, &m_menu,
                         [this](QSystemTrayIcon::ActivationReason reason) {
                             if (reason == QSystemTrayIcon::Trigger)
                                 m_actions.show();
                         });
        m_icon->show();
    }

    const Actions m_actions;
    TrayState m_state;
    QMenu m_menu;
    QAction* m_pConnect = nullptr;         // the menu's
    std::optional<QSystemTrayIcon> m_icon; // destroyed before its menu
    StatusNotifierHost m_host{[this](bool bPresent) { setPresent(bPresent); }};
};

Tray::Tray(Actions actions) : m_icon(std::make_unique<Icon>(std::move(actions))) {}

Tray::~Tray() = default;

void Tray::setState(const TrayState& state) {
    m_icon->setState(state);
}

bool Tray::isThere() const {
    return m_icon->isThere();
}

} // namespace vellux
