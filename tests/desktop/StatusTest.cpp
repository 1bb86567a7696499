// What the running copy tells others, on its socket and on the session bus.

#include "desktop/Session.h"

#include <QLocalSocket>
#include <QRegularExpression>

#include <algorithm>
#include <sys/resource.h>

namespace {

// Readers by the thousand, or some that never go, who take its descriptors, its time or its place.
TEST_F(SingleInstanceFixture, AThousandReadersAreAnsweredAndNoneInTheWay) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    startBus();
    const TestApplication application{};
    const auto first = holding(start(kBoth, "t1"));
    expectActivation(*first, kBoth);
    const QString strSocket = QString::fromStdString(directory() + "/org.vellux.Vellux.socket");
    const auto connectAll = [&](std::size_t nMany, const char* strMessage) {
        std::vector<std::unique_ptr<QLocalSocket>> sockets(nMany);
        for (auto& socket : sockets) {
            QLocalSocket* const pSocket = (socket = std::make_unique<QLocalSocket>()).get();
            QObject::connect(pSocket, &QLocalSocket::connected, pSocket,
                             [pSocket, strMessage] { pSocket->write(strMessage); });
            pSocket->connectToServer(strSocket);
        }
        return sockets;
    };

    const auto idle = connectAll(200, "half a line");
    const auto readers = connectAll(std::min<std::size_t>(1000, limit.rlim_cur - 400), "\x05status\n");
    for (const auto& reader : readers) // the slow ones may be dropped, and ask again
        QObject::connect(
            reader.get(), &QLocalSocket::disconnected, reader.get(),
            [&strSocket, pReader = reader.get()] {
                if (!pReader->canReadLine())
                    pReader->connectToServer(strSocket);
            },
            Qt::QueuedConnection);
    expectActivation(*first, kRuntime);
    expectActivation(*first, kBus);
    EXPECT_TRUE(waitUntil([&] {
        return std::all_of(readers.begin(), readers.end(),
                           [](auto& reader) { return reader->canReadLine(); });
    }));
    EXPECT_TRUE(waitUntil([&] { return idle.front()->state() == QLocalSocket::UnconnectedState; }));
    const std::string strOpen = "/proc/" + std::to_string(first->pid()) + "/fd";
    const auto open = std::filesystem::directory_iterator(strOpen);
    EXPECT_LT(std::distance(begin(open), end(open)), 64 + 40);
}

/// What the status's signals say.
class StatusSignals : public QObject {
    Q_OBJECT
public:
    StatusSignals() {
        QDBusConnection::sessionBus().connect("org.vellux.Vellux", "/org/vellux/Vellux",
                                              "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                                              SLOT(onChanged(QDBusMessage)));
    }
    QStringList m_changes;

public Q_SLOTS:
    void onChanged(const QDBusMessage& message) {
        const auto changed = qdbus_cast<QVariantMap>(message.arguments().value(1));
        for (const auto& [strName, value] : changed.toStdMap())
            m_changes.append(strName + "=" + value.toString());
        m_changes.append(message.arguments().value(0).toString());
    }
};

// Signals for nothing, or none for a change; an action that is taken for another; a description that is
// wrong.
TEST_F(SingleInstanceFixture, TheBusIsToldOfChangesAndCarriesActions) {
    startBus();
    const TestApplication application{};
    const auto first = holding(start(kBus, "t1"));
    const StatusSignals signals_;
    const QString strInterface = "org.vellux.Vellux.Status1";
    const QStringList expected = {"Lamp=Green", "Light=usable", "Presence=t2",   "State=following",
                                  strInterface, "OnCall=true",  "Presence=call", strInterface};
    // One by one: two that followed closely once arrived in the other order; why is not known.
    for (const auto& [strToken, nSignalled] : {std::pair("t2", 5), {"t2", 5}, {"call", 8}}) {
        EXPECT_EQ(start(kBus, strToken)->readLine(), "passed");
        EXPECT_EQ(first->readLine(), std::string("activated ") + strToken);
        EXPECT_TRUE(waitUntil([&, nEnough = nSignalled] { return signals_.m_changes.size() >= nEnough; }));
    }
    EXPECT_EQ(signals_.m_changes, expected);

    const auto call = [](const char* strOf, const char* strMethod, const QVariantList& arguments) {
        QDBusMessage message =
            QDBusMessage::createMethodCall("org.vellux.Vellux", "/org/vellux/Vellux", strOf, strMethod);
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message);
    };
    call("org.freedesktop.Application", "ActivateAction", {"reconnect", QVariantList(), QVariantMap()});
    EXPECT_EQ(first->readLine(), "activated reconnect");
    EXPECT_EQ(call("org.freedesktop.DBus.Properties", "Set",
                   {strInterface, "State", QVariant::fromValue(QDBusVariant("x"))})
                  .type(),
              QDBusMessage::ErrorMessage);

    const auto propertiesIn = [&](const QString& strXml) {
        QStringList properties;
        static const QRegularExpression property(R"(<property (name="\w+" type="\w+" access="\w+"))");
        for (auto it = property.globalMatch(strXml.mid(strXml.indexOf(strInterface))); it.hasNext();)
            properties += it.next().captured(1);
        return properties;
    };
    QFile file(STATUS_INTERFACE);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList properties = propertiesIn(file.readAll());
    EXPECT_EQ(properties.size(), 5);
    const QDBusMessage told = call("org.freedesktop.DBus.Introspectable", "Introspect", {});
    EXPECT_EQ(propertiesIn(told.arguments().value(0).toString()), properties);
}

} // namespace

#include "StatusTest.moc"
