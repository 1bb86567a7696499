#include "ScreenReader.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

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

std::vector<ScreenReader::Reference> ScreenReader::shownChildren(const Reference& parent) const {
    std::vector<Reference> shown = children(parent);
    std::erase_if(shown, [this](const Reference& child) {
        const QVariant answer = call(m_accessibility, child, kAccessible, "GetState");
        QList<unsigned> states;
        if (answer.canConvert<QDBusArgument>())
            answer.value<QDBusArgument>() >> states;
        return states.isEmpty() || (states.constFirst() >> kShowing & 1U) == 0;
    });
    return shown;
}

std::vector<ScreenReader::Reference> ScreenReader::shownWindows() const {
    std::vector<Reference> windows;
    for (const Reference& application : children({kRegistry, kRoot}))
        for (const Reference& window : shownChildren(application))
            windows.push_back(window);
    return windows;
}

std::string ScreenReader::nameOf(const Reference& item) const {
    return text(call(m_accessibility, item, kProperties, "Get", {kAccessible, "Name"}));
}

std::vector<std::string> ScreenReader::windows() const {
    std::vector<std::string> titles;
    for (const Reference& window : shownWindows())
        titles.push_back(nameOf(window));
    return titles;
}

bool ScreenReader::shows(const std::string& strLine) const {
    std::vector<Reference> items = shownWindows();
    for (std::size_t n = 0; n < items.size(); ++n) {
        const Reference item = items[n];
        const std::string strRole = text(call(m_accessibility, item, kAccessible, "GetRoleName"));
        std::string strHere = strRole + ' ' + nameOf(item);
        if (strRole == "text")
            strHere += ' ' + text(call(m_accessibility, item, kText, "GetText", {0, -1}));
        if (strHere == strLine)
            return true;
        for (const Reference& child : shownChildren(item))
            items.push_back(child);
    }
    return false;
}
