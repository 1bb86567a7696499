// Programs that a test starts, and waiting for what they do.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// Runs the event loop until the condition holds; false when it does not in time.
inline bool waitUntil(const std::function<bool()>& condition,
                      std::chrono::seconds limit = std::chrono::seconds(60)) {
    const QDeadlineTimer deadline(limit);
    for (; !deadline.hasExpired(); QThread::msleep(10)) {
        QCoreApplication::processEvents();
        if (condition())
            return true;
    }
    return false;
}

/// A program, killed with this object or with the test.
class ChildProcess {
public:
    enum class Output { Read, Shared };

    /// The program is looked for in the path. What it writes, errors too, is read here, or goes where this
    /// process's own output goes.
    explicit ChildProcess(std::vector<std::string> command, Output output = Output::Read) {
        int pipeEnds[2] = {-1, -1};
        if (::pipe2(pipeEnds, O_CLOEXEC) != 0)
            return;
        std::vector<char*> arguments;
        for (std::string& strArgument : command)
            arguments.push_back(strArgument.data());
        arguments.push_back(nullptr);
        m_nPid = ::fork();
        if (m_nPid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (output == Output::Read) {
                ::dup2(pipeEnds[1], STDOUT_FILENO);
                ::dup2(pipeEnds[1], STDERR_FILENO);
            }
            ::execvp(arguments[0], arguments.data());
            ::_exit(127);
        }
        ::close(pipeEnds[1]);
        m_output.open(pipeEnds[0], QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);
    }
    ~ChildProcess() {
        signal(SIGKILL);
        wait();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// -1 once its end has been seen.
    pid_t pid() const { return m_nPid; }
    void signal(int nSignal) const {
        if (m_nPid > 0)
            ::kill(m_nPid, nSignal);
    }
    /// Its next line, without the line's end; "" after the last. Blocks until there is one.
    std::string readLine() { return m_output.readLine().trimmed().toStdString(); }
    /// Its exit status, -1 after a signal; absent while it runs.
    std::optional<int> tryWait() { return waitWith(WNOHANG); }
    /// The same. Blocks until it ends, or the time is over.
    std::optional<int> statusWithin(std::chrono::seconds limit) {
        std::optional<int> nStatus;
        waitUntil([&] { return (nStatus = tryWait()).has_value(); }, limit);
        return nStatus;
    }
    /// The same. Blocks until it ends.
    int wait() { return waitWith(0).value_or(-1); }

private:
    std::optional<int> waitWith(int nOptions) {
        int nStatus = -1;
        if (m_nPid > 0 && ::waitpid(m_nPid, &nStatus, nOptions) == 0)
            return std::nullopt;
        m_nPid = -1;
        return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
    }

    pid_t m_nPid = -1;
    QFile m_output;
};

/// A display of the test's own, named by the environment. Its number comes from the process's: servers that
/// look for a free one at the same time take each other's sockets away.
class XServer {
public:
    explicit XServer(const std::vector<std::string>& options = {})
        : m_strDisplay(":" + std::to_string(1000 + ::getpid() % 50000)), m_server(command(options)) {
        m_server.readLine(); // it is ready; the option stands before the number, or would overrule it
        qputenv("DISPLAY", QByteArray::fromStdString(m_strDisplay));
        qputenv("QT_QPA_PLATFORM", "xcb");
    }
    void kill() const { m_server.signal(SIGKILL); }

private:
    std::vector<std::string> command(const std::vector<std::string>& options) const {
        std::vector<std::string> command = {"Xvfb", "-displayfd", "1",         m_strDisplay, "-screen",
                                            "0",    "800x700x24", "-nolisten", "tcp",        "-noreset"};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    const std::string m_strDisplay;
    ChildProcess m_server;
};
