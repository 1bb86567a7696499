#include "World.h"

#include "AES128Transform.h"
#include "MF_Base64Additions.h"
#include "support/Files.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;
using namespace vellux::simulator;
namespace fs = std::filesystem;

namespace {

constexpr const char* kTrustStore = "/etc/ssl/certs/ca-certificates.crt"; // the guest's own
constexpr const char* kRuleFile = "/run/udev/rules.d/70-kernel-tests.rules";
constexpr const char* kEverybody = R"(SUBSYSTEM=="hidraw", MODE="0666")";
constexpr const char* kUser = "EXAMPLE\\robin";
constexpr const char* kPassword = "example-password";

std::size_t entries(const fs::path& directory) {
    std::error_code error;
    fs::directory_iterator it(directory, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(it, fs::directory_iterator()));
}

} // namespace

bool soon(const std::function<bool()>& condition, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

void waitInVain() {
    std::this_thread::sleep_for(1500ms);
}

int root(const std::string& strCommand) {
    return std::system(strCommand.c_str());
}

Program::Program(const std::string& strProgram, const Environment& environment) : m_nPid(::fork()) {
    if (m_nPid != 0)
        return;
    for (const auto& [strName, strValue] : environment)
        ::setenv(strName.c_str(), strValue.c_str(), 1);
    ::execlp("setpriv", "setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", strProgram.c_str(),
             nullptr);
    ::_exit(127);
}

Program::~Program() {
    if (!isRunning())
        return;
    ::kill(m_nPid, SIGKILL);
    ::waitpid(m_nPid, nullptr, 0);
}

bool Program::isRunning() {
    int nStatus = 0;
    if (!m_nStatus && ::waitpid(m_nPid, &nStatus, WNOHANG) == m_nPid)
        m_nStatus = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
    return !m_nStatus;
}

void Program::askToEnd() {
    if (!std::exchange(m_bAsked, true) && isRunning()) // a second signal ends it at once
        ::kill(m_nPid, SIGTERM);
}

std::optional<int> Program::end(std::chrono::seconds limit) {
    askToEnd();
    soon([this] { return !isRunning(); }, limit);
    return m_nStatus;
}

bool Program::isAtRest() const {
    std::ifstream file("/proc/" + std::to_string(m_nPid) + "/syscall");
    long nCall = -1;
    file >> nCall;
    return nCall == SYS_poll || nCall == SYS_ppoll;
}

std::size_t Program::threads() const {
    return entries("/proc/" + std::to_string(m_nPid) + "/task");
}

std::size_t Program::handles() const {
    return entries("/proc/" + std::to_string(m_nPid) + "/fd");
}

std::size_t Program::lightHandles() const {
    std::size_t nHandles = 0;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(m_nPid) + "/fd", error))
        nHandles += fs::read_symlink(entry, error).string().starts_with("/dev/hidraw") ? 1U : 0U;
    return nHandles;
}

long Program::residentSize() const {
    std::ifstream file("/proc/" + std::to_string(m_nPid) + "/status");
    for (std::string strLine; std::getline(file, strLine);)
        if (strLine.starts_with("VmRSS:"))
            return std::atol(strLine.c_str() + 6);
    return 0;
}

KernelTest::KernelTest() : m_strHome("/run/home") {
    const auto authority = CertificateAuthority::create();
    m_server = PresenceServer::start(*authority, {kUser, kPassword});
    vellux::writeFile(kTrustStore, authority->pem(), vellux::FileAccess::Default);
    m_environment = {{"HOME", m_strHome},
                     {"XDG_RUNTIME_DIR", m_strHome},
                     {"QT_QPA_PLATFORM", "offscreen"},
                     {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere"},
                     {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"}};
    setRule(kEverybody);
    EXPECT_EQ(nodes(), 0U);
}

KernelTest::~KernelTest() {
    m_program.reset();
    fs::remove_all(m_strHome);
    soon([] { return nodes() == 0; }); // the scenario's lights have left
}

void KernelTest::setRule(const std::string& strRule) {
    fs::create_directories(fs::path(kRuleFile).parent_path());
    vellux::writeFile(kRuleFile, strRule + "\n", vellux::FileAccess::Default);
    EXPECT_EQ(root("udevadm control --reload"), 0);
}

std::size_t KernelTest::nodes() {
    return entries("/sys/class/hidraw");
}

std::string KernelTest::program() {
    return std::getenv("VELLUX_PROGRAM");
}

std::string KernelTest::sanitizedProgram() {
    return std::getenv("VELLUX_SANITIZED_PROGRAM");
}

void KernelTest::start(const std::string& strProgram, const std::string& strWindowState) {
    const std::string strData = m_strHome + "/.local/share/Vellux";
    fs::create_directories(strData);
    const std::string strText = m_server->host() + ";" + kUser + ";" + kPassword;
    const auto encrypted = AES128EncryptedDataWithKey(
        std::span(reinterpret_cast<const std::uint8_t*>(strText.data()), strText.size()), "k4mpr8vtxw2nbq6z");
    vellux::writeFile(strData + "/configv31.bin", base64String(*encrypted).value(),
                      vellux::FileAccess::OwnerOnly);
    vellux::writeFile(strData + "/uistate.txt", strWindowState, vellux::FileAccess::Default);
    root("chown -R nobody:nogroup " + m_strHome);
    // From memory: the program may lie where an ordinary user may not go.
    const std::string strCopy = "/run/vellux" + std::to_string(std::hash<std::string>()(strProgram));
    if (!fs::exists(strCopy))
        fs::copy_file(strProgram, strCopy);
    m_program = std::make_unique<Program>(strCopy, m_environment);
}

Program& KernelTest::startFollowing(const std::string& strProgram) {
    start(strProgram, "1;1;0;0;0;2;0;0");
    EXPECT_TRUE(soon([this] { return m_server->isPolling(); }));
    return *m_program;
}

Program& KernelTest::startShowing(int nColour, int nSpeed, const std::string& strProgram) {
    start(strProgram, "0;0;0;0;0;1;" + std::to_string(nColour) + ";" + std::to_string(nSpeed));
    EXPECT_TRUE(soon([this] { return m_program->threads() > 1; }));
    return *m_program;
}

void KernelTest::endProgram(std::chrono::seconds limit) {
    EXPECT_EQ(m_program->end(limit), 0);
    m_program.reset();
}

testing::AssertionResult KernelTest::comesToShow(const Light& light, const Bytes& report) const {
    if (soon([&] { return light.shown() == report && m_program->isAtRest(); }))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "it was told " << text(light.shown()) << ", not " << text(report);
}

void KernelTest::expectPromptly(const Light& light) {
    EXPECT_EQ(root("udevadm settle"), 0);
    const auto settled = std::chrono::steady_clock::now();
    ASSERT_TRUE(soon([&] { return !light.attempts().empty(); }));
    EXPECT_LT(light.attempts().front().time - settled, 3s); // a fraction of a second, but guests are slow
}
