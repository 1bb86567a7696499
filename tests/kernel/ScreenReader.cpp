#include "ScreenReader.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <cstdlib>
#include <utility>

namespace {

constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kText = "org.a11y.atspi.Text";
constexpr const char* kRegistry = "org.a11y.atspi.Registry";
constexpr const char* kRoot = "/org/a11y/atspi/accessible/root";
constexpr unsigned kShowing = 25; // ATSPI_STATE_SHOWING, of the 64 states
constexpr int kAnswerMs = 10'000;

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

ScreenReader::ScreenReader() : m_session("DBUS_SESSION_BUS_ADDRESS") {
    ::setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    const QVariant address =
        call(m_session.connection(), {"org.a11y.Bus", "/org/a11y/bus"}, "org.a11y.Bus", "GetAddress");
    m_accessibility = QDBusConnection::connectToBus(address.toString(), "accessibility");
    EXPECT_TRUE(m_accessibility.isConnected());
}

ScreenReader::~ScreenReader() {
    QDBusConnection::disconnectFromBus("accessibility");
    ::unsetenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON");
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
