// Message buses and mocked services of a test's own. Nothing here reaches the machine's buses.
//
//     PrivateBus session(BusKind::Session); // before QtDBus and before a QApplication that shows windows
//     const TestApplication application{};
//     DbusMock mock(BusKind::Session, "org.example.Name", "/path", "org.example.Interface");
//     mock.addMethod("Ask", "s", "i", "ret = 1");
//     EXPECT_TRUE(waitUntil([&] { return mock.calls().contains("Ask \"who\""); }));
//
// One process runs one test: QtDBus opens each bus once.
#pragma once

#include "desktop/ChildProcess.h"
#include "fakes/Watchdog.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>
#include <QTemporaryDir>

/// What QtDBus needs where there are no windows.
struct TestApplication {
    int nArguments = 0;
    QCoreApplication application{nArguments, nullptr};
};

enum class BusKind { Session, System };

/// A bus daemon that knows no services to start, named by the environment as this process's session or system
/// bus.
class PrivateBus {
public:
    explicit PrivateBus(BusKind kind) : m_daemon({"dbus-daemon", "--nofork", "--print-address", config()}) {
        qputenv(kind == BusKind::Session ? "DBUS_SESSION_BUS_ADDRESS" : "DBUS_SYSTEM_BUS_ADDRESS",
                QByteArray::fromStdString(m_daemon.readLine()));
    }

private:
    std::string config() const {
        QFile file(m_directory.filePath("bus.conf"));
        if (file.open(QIODevice::WriteOnly))
            file.write("<busconfig><listen>unix:dir=" + m_directory.path().toUtf8() +
                       "</listen><auth>EXTERNAL</auth><policy context='default'><allow own='*'/>"
                       "<allow send_destination='*'/><allow receive_sender='*'/></policy></busconfig>");
        return "--config-file=" + file.fileName().toStdString();
    }

    const QTemporaryDir m_directory;
    ChildProcess m_daemon;
};

/// A service played by python3-dbusmock; gone with this object.
class DbusMock {
public:
    /// Returns when the name is owned on the bus, which is a PrivateBus.
    DbusMock(BusKind kind, const QString& strName, const QString& strPath, const QString& strInterface)
        : m_bus(kind == BusKind::Session ? QDBusConnection::sessionBus() : QDBusConnection::systemBus()),
          m_strName(strName), m_strPath(strPath), m_strInterface(strInterface),
          m_process({"/usr/bin/python3", "-m", "dbusmock",
                     kind == BusKind::Session ? "--session" : "--system", "--logfile", log().toStdString(),
                     strName.toStdString(), strPath.toStdString(), strInterface.toStdString()}) {
        waitUntil([&] { return m_bus.interface()->isServiceRegistered(strName).value(); });
    }

    /// Signatures as D-Bus writes them; the code is Python, with `args`, and sets `ret`.
    void addMethod(const char* strMethod, const char* strIn, const char* strOut, const char* strCode) {
        mock("AddMethod", {m_strInterface, strMethod, strIn, strOut, strCode});
    }
    void addProperty(const char* strProperty, const QVariant& value) {
        mock("AddProperty", {m_strInterface, strProperty, QVariant::fromValue(QDBusVariant(value))});
    }
    /// Has arrived in this process when the call returns; its slots run on the event loop.
    void emitSignal(const char* strSignal, const char* strSignature, const QVariantList& arguments) {
        mock("EmitSignal", {m_strInterface, strSignal, strSignature, QVariant(arguments)});
    }
    /// Any call to the mock's own interface.
    void mock(const char* strMethod, const QVariantList& arguments) {
        call("org.freedesktop.DBus.Mock", strMethod, arguments);
    }
    QDBusMessage call(const QString& strInterface, const char* strMethod,
                      const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(m_strName, m_strPath, strInterface, strMethod);
        message.setArguments(arguments);
        const QDBusMessage answer = m_bus.call(message);
        if (answer.type() == QDBusMessage::ErrorMessage)
            qCritical("%s: %s", strMethod, qPrintable(answer.errorMessage()));
        return answer;
    }
    void signal(int nSignal) const { m_process.signal(nSignal); }
    /// The calls so far, each as its name and its arguments.
    QStringList calls() const {
        QFile file(log());
        QStringList calls;
        if (file.open(QIODevice::ReadOnly))
            for (const QByteArray& strLine : file.readAll().split('\n'))
                calls.append(QString::fromUtf8(strLine.mid(strLine.indexOf(' ') + 1))); // behind its time
        calls.removeAll(QString());
        return calls;
    }

private:
    QString log() const { return m_directory.filePath("calls"); }

    QDBusConnection m_bus;
    const QString m_strName, m_strPath, m_strInterface;
    const QTemporaryDir m_directory;
    ChildProcess m_process;
};

/// A notification service that numbers what it shows from 1.
class Notifications : public DbusMock {
public:
    explicit Notifications(const char* strCapabilities = "ret = ['actions', 'body']")
        : DbusMock(BusKind::Session, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                   "org.freedesktop.Notifications") {
        addMethod("GetCapabilities", "", "as", strCapabilities);
        addMethod("Notify", "susssasa{sv}i", "u",
                  "self.shown = getattr(self, 'shown', 0) + 1; ret = self.shown");
        addMethod("CloseNotification", "u", "", "");
    }
    /// Whether this call comes, and is the last one so far.
    bool gets(const QString& strCall) {
        return waitUntil([&] { return !calls().isEmpty() && calls().last().contains(strCall); });
    }
};
