#include "ScreenReader.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <fstream>
#include <utility>

namespace {

constexpr const char* kSessionBus = "unix:path=/run/desktop/bus";
constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kText = "org.a11y.atspi.Text";
constexpr const char* kRegistry = "org.a11y.atspi.Registry";
constexpr const char* kRoot = "/org/a11y/atspi/accessible/root";
constexpr unsigned kShowing = 25; // ATSPI_STATE_SHOWING, of the 64 states
constexpr int kAnswerMs = 10'000;

// As the ordinary user, who must own the display and the buses.
constexpr const char* kStart = R"(
    mkdir -p /run/desktop && cd /run/desktop && chown nobody:nogroup . || exit
    cat >bus.conf <<END
<busconfig><type>session</type><listen>unix:path=/run/desktop/bus</listen><auth>EXTERNAL</auth>
<servicedir>/usr/share/dbus-1/services</servicedir>
<policy context='default'><allow user='*'/><allow own='*'/><allow send_destination='*'/>
<allow receive_sender='*'/></policy></busconfig>
END
    as_user() { exec setpriv --reuid=nobody --regid=nogroup --clear-groups "$@"; }
    export HOME=/run/desktop XDG_RUNTIME_DIR=/run/desktop GSETTINGS_BACKEND=memory
    (as_user Xvfb -displayfd 3 -screen 0 1024x900x24 -nolisten tcp) 3>display >display.log 2>&1 &
    echo $! >display.pid
    as_user dbus-daemon --fork --print-pid --config-file=bus.conf >bus.pid 2>bus.log
)";

// What the answer says; invalid after an error, as when a window has just gone.
QVariant call(const QDBusConnection& bus, const QPair<QString, QString>& of, const QString& strInterface,
              const QString& strMethod, const QVariantList& arguments = {}) {
    QDBusMessage message = QDBusMessage::createMethodCall(of.first, of.second, strInterface, strMethod);
    message.setArguments(arguments);
    const QDBusMessage answer = bus.call(message, QDBus::Block, kAnswerMs);
    const bool bAnswered = answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty();
    return bAnswered ? answer.arguments().constFirst() : QVariant();
}

std::string text(const QVariant& answer) {
    const QVariant value =
        answer.canConvert<QDBusVariant>() ? answer.value<QDBusVariant>().variant() : answer;
    return value.toString().toStdString();
}

} // namespace

struct ScreenReader::Item {
    Reference reference;
    std::string strRole, strName;
};

ScreenReader::ScreenReader() {
    EXPECT_EQ(root(kStart), 0);
    EXPECT_TRUE(soon([this] { return bool(std::ifstream("/run/desktop/display") >> m_strDisplay); }));
    m_session = QDBusConnection::connectToBus(kSessionBus, "session");
    EXPECT_TRUE(m_session.isConnected());
    const QVariant address = call(m_session, {"org.a11y.Bus", "/org/a11y/bus"}, "org.a11y.Bus", "GetAddress");
    m_accessibility = QDBusConnection::connectToBus(address.toString(), "accessibility");
    EXPECT_TRUE(m_accessibility.isConnected());
}

ScreenReader::~ScreenReader() {
    QDBusConnection::disconnectFromBus("accessibility");
    QDBusConnection::disconnectFromBus("session");
    root("cd /run/desktop && kill $(cat display.pid bus.pid); rm -rf /run/desktop");
}

void ScreenReader::addTo(Program::Environment& environment) const {
    environment["QT_QPA_PLATFORM"] = "xcb";
    environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1";
    environment["DISPLAY"] = ":" + m_strDisplay;
    environment["DBUS_SESSION_BUS_ADDRESS"] = kSessionBus;
}

std::vector<ScreenReader::Reference> ScreenReader::children(const Reference& parent) const {
    std::vector<Reference> children;
    const QVariant answer = call(m_accessibility, parent, kAccessible, "GetChildren");
    if (!answer.canConvert<QDBusArgument>())
        return children;
    const auto references = answer.value<QDBusArgument>(); // a(so)
    for (references.beginArray(); !references.atEnd();) {
        QString strService;
        QDBusObjectPath path;
        references.beginStructure();
        references >> strService >> path;
        references.endStructure();
        children.push_back({strService, path.path()});
    }
    return children;
}

bool ScreenReader::isShowing(const Reference& reference) const {
    const QVariant answer = call(m_accessibility, reference, kAccessible, "GetState");
    if (!answer.canConvert<QDBusArgument>())
        return false;
    QList<unsigned> states;
    answer.value<QDBusArgument>() >> states;
    return !states.isEmpty() && (states.constFirst() >> kShowing & 1U) != 0;
}

std::vector<ScreenReader::Item> ScreenReader::shownChildren(const Reference& parent) const {
    std::vector<Item> items;
    for (const Reference& child : children(parent))
        if (isShowing(child))
            items.push_back({child, text(call(m_accessibility, child, kAccessible, "GetRoleName")),
                             text(call(m_accessibility, child, kProperties, "Get", {kAccessible, "Name"}))});
    return items;
}

std::vector<ScreenReader::Item> ScreenReader::shownWindows() const {
    std::vector<Item> windows;
    for (const Reference& application : children({kRegistry, kRoot}))
        for (Item& window : shownChildren(application))
            windows.push_back(std::move(window));
    return windows;
}

std::vector<ScreenReader::Item> ScreenReader::shownItems() const {
    std::vector<Item> items = shownWindows();
    for (std::size_t nItem = 0; nItem < items.size(); ++nItem) {
        const std::vector<Item> children = shownChildren(items[nItem].reference);
        items.insert(items.end(), children.begin(), children.end());
    }
    return items;
}

std::vector<std::string> ScreenReader::windows() const {
    std::vector<std::string> titles;
    for (const Item& window : shownWindows())
        titles.push_back(window.strName);
    return titles;
}

bool ScreenReader::says(const std::string& strLine) const {
    for (const Item& item : shownItems())
        if (item.strRole == "label" && item.strName == strLine)
            return true;
    return false;
}

std::optional<std::string> ScreenReader::field(const std::string& strName) const {
    for (const Item& item : shownItems())
        if (item.strRole == "text" && item.strName == strName)
            return text(call(m_accessibility, item.reference, kText, "GetText", {0, -1}));
    return std::nullopt;
}
