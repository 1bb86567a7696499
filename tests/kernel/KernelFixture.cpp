#include "KernelFixture.h"

#include "Hex.h"
#include "support/Files.h"

#include <fstream>
#include <sys/syscall.h>
#include <utility>

using namespace std::chrono_literals;
using namespace vellux::simulator;
namespace fs = std::filesystem;

namespace {

constexpr const char* kTrustStore = "/etc/ssl/certs/ca-certificates.crt"; // the guest's own
constexpr const char* kRuleFile = "/run/udev/rules.d/70-kernel-tests.rules";
constexpr const char* kEverybody = R"(SUBSYSTEM=="hidraw", MODE="0666")";
constexpr std::chrono::seconds kLongest(30); // that the end may take in the slow guest

std::size_t entries(const fs::path& directory) {
    std::error_code error;
    fs::directory_iterator it(directory, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(it, fs::directory_iterator()));
}

} // namespace

void waitInVain() {
    std::this_thread::sleep_for(1500ms);
}

int root(const std::string& strCommand) {
    return std::system(strCommand.c_str());
}

std::string meaning(LightModel model, const Bytes& report) {
    const DecodedReport decoded = decodeReport(model, report);
    return decoded.state ? decoded.state->text() : decoded.strFault;
}

Program::Program(const std::string& strProgram)
    : ChildProcess({"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", strProgram},
                   Output::Shared) {}

bool Program::isAtRest() const {
    std::ifstream file(place() + "syscall");
    long nCall = -1;
    file >> nCall;
    return nCall == SYS_poll || nCall == SYS_ppoll;
}

std::size_t Program::threads() const {
    return entries(place() + "task");
}

std::size_t Program::handles() const {
    return entries(place() + "fd");
}

std::size_t Program::lightHandles() const {
    std::size_t nHandles = 0;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(place() + "fd", error))
        nHandles += fs::read_symlink(entry, error).string().starts_with("/dev/hidraw") ? 1U : 0U;
    return nHandles;
}

long Program::residentSize() const {
    std::ifstream file(place() + "status");
    for (std::string strLine; std::getline(file, strLine);)
        if (strLine.starts_with("VmRSS:"))
            return std::atol(strLine.c_str() + 6);
    return 0;
}

KernelFixture::KernelFixture() {
    const auto authority = CertificateAuthority::create();
    m_server = PresenceServer::start(*authority, {kUserName, kPassword});
    vellux::writeFile(kTrustStore, authority->pem(), vellux::FileAccess::Default);
    setRule(kEverybody);
    EXPECT_EQ(nodes(), 0U);
}

KernelFixture::~KernelFixture() {
    m_program.reset();
    waitUntil([] { return nodes() == 0; }); // the scenario's lights have left
}

void KernelFixture::setRule(const std::string& strRule) {
    fs::create_directories(fs::path(kRuleFile).parent_path());
    vellux::writeFile(kRuleFile, strRule + "\n", vellux::FileAccess::Default);
    EXPECT_EQ(root("udevadm control --reload"), 0);
}

std::size_t KernelFixture::nodes() {
    return entries("/sys/class/hidraw");
}

std::string KernelFixture::program() {
    return std::getenv("VELLUX_PROGRAM");
}

std::string KernelFixture::sanitizedProgram() {
    return std::getenv("VELLUX_SANITIZED_PROGRAM");
}

void KernelFixture::start(const std::string& strProgram, const std::string& strWindowState) {
    m_home.writeSignIn(m_server->host());
    m_home.writeWindowState(strWindowState);
    root("chown -R nobody:nogroup " + m_home.directory());
    // From memory: the program may lie where an ordinary user may not go.
    const std::string strCopy = "/run/vellux" + std::to_string(std::hash<std::string>()(strProgram));
    if (!fs::exists(strCopy))
        fs::copy_file(strProgram, strCopy);
    m_program = std::make_unique<Program>(strCopy);
    m_bAsked = false;
}

void KernelFixture::startFollowing(const std::string& strProgram) {
    start(strProgram, "1;1;0;0;0;2;0;0");
    EXPECT_TRUE(waitUntil([this] { return m_server->isPolling(); }));
}

void KernelFixture::startShowing(int nColour, int nSpeed, const std::string& strProgram) {
    start(strProgram, "0;0;0;0;0;1;" + std::to_string(nColour) + ";" + std::to_string(nSpeed));
    EXPECT_TRUE(waitUntil([this] { return m_program->threads() > 1; }));
}

void KernelFixture::askProgramToEnd() {
    if (!std::exchange(m_bAsked, true)) // a second signal ends it at once
        m_program->signal(SIGTERM);
}

void KernelFixture::endProgram() {
    askProgramToEnd();
    EXPECT_EQ(m_program->statusWithin(kLongest), 0);
    m_program.reset();
}

testing::AssertionResult KernelFixture::comesToShow(const KernelLight& light, LightModel model,
                                                    const std::string& strShown) const {
    if (waitUntil([&] { return meaning(model, light.shown()) == strShown && m_program->isAtRest(); }))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "it was told " << hexOf(light.shown()) << ", not " << strShown;
}

void KernelFixture::expectPromptly(const KernelLight& light) {
    EXPECT_EQ(root("udevadm settle"), 0);
    const auto settled = std::chrono::steady_clock::now();
    ASSERT_TRUE(waitUntil([&] { return !light.attempts().empty(); }));
    EXPECT_LT(light.attempts().front().time - settled, 3s); // a fraction of a second, but guests are slow
}
