// The soak: the real client against a presence server in a process of its own, over and over. What it holds
// of the system must be the same at the end of each phase as near its beginning.

#include "Program.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/curl/CurlTransport.h"
#include "adapters/linux/SystemClock.h"
#include "day/UserActions.h"
#include "light/VirtualLights.h"
#include "model/ConnectTitle.h"
#include "platform/HeadlessDesktop.h"
#include "platform/PrivateDirectory.h"
#include "platform/WindowWatch.h"
#include "server/PresenceServer.h"
#include "support/Text.h"
#include "threads/CallQueue.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <malloc.h>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>

using namespace vellux::simulator;
using namespace std::chrono_literals;

namespace {

constexpr const char* kUser = "EXAMPLE\\robin";
constexpr const char* kSecret = "example-password";
constexpr std::chrono::milliseconds kLongestWait = 60s;

/// What the process holds of the system.
struct Holdings {
    long nDescriptors = 0;
    long nThreads = 0;
    long nHeap = 0;     // kB that are allocated
    long nResident = 0; // kB

    static Holdings now() {
        const auto entriesOf = [](const char* strDirectory) {
            return static_cast<long>(std::distance(std::filesystem::directory_iterator(strDirectory), {}));
        };
        ::malloc_trim(0);
        const struct mallinfo2 heap = ::mallinfo2();
        long nPages = 0;
        std::ifstream("/proc/self/statm") >> nPages >> nPages;
        return {entriesOf("/proc/self/fd") - 1, entriesOf("/proc/self/task"),
                static_cast<long>((heap.uordblks + heap.hblkhd) / 1024),
                nPages * (::sysconf(_SC_PAGESIZE) / 1024)};
    }

    /// Connections stay in the pool for a while, and memory has holes; a leak grows beyond all that.
    bool isFlat(const Holdings& before) const {
        return nDescriptors <= before.nDescriptors + 4 && nThreads <= before.nThreads &&
               nHeap <= before.nHeap + 256 && nResident <= before.nResident + 4096;
    }
};

/// The server, in a process of its own so that only the client is measured: what the user's presence becomes
/// is read line by line, until there are no more.
int serve(const CertificateAuthority& authority, int nWords, int nHost) {
    const auto server = PresenceServer::start(authority, {kUser, kSecret});
    if (server == nullptr)
        return EXIT_FAILURE; // the client reads no host
    ::dprintf(nHost, "%s\n", server->host().c_str());
    std::FILE* const pWords = ::fdopen(nWords, "r");
    for (std::array<char, 64> line{}; std::fgets(line.data(), line.size(), pWords) != nullptr;)
        if (const auto pieces = vellux::split(line.data(), " "); pieces.size() == 3)
            server->setPresence(pieces[0], pieces[1]);
    server->stop();
    return EXIT_SUCCESS;
}

/// The user, on a thread of their own. Everything that can be waited for comes in time, or the soak has
/// failed.
class Soak {
public:
    Soak(vellux::MainThread& mainThread, Changes& changes, int nWords)
        : m_mainThread(mainThread), m_changes(changes), m_nWords(nWords) {}

    bool succeeded() const { return m_bSucceeded; }

    void connect() {
        const Refusal refusal = press(vellux::kTitleConnect);
        expect(!refusal, refusal.value_or(""));
        await("a sign-in", [this] { return vellux::isConnected(*m_button) && m_button->isEnabled(); });
    }
    void connectAndDisconnect(long) {
        connect();
        press(vellux::kTitleDisconnect);
    }
    /// One presence event: a batch, the presence, the light, the status line, the next poll.
    void event(long n) {
        if (m_button->title() == vellux::kTitleConnect)
            connect();
        constexpr std::array kWords = {"Busy", "Away", "Online", "DoNotDisturb", "Offline"};
        const std::string strWord = kWords[static_cast<std::size_t>(n) % kWords.size()];
        const bool bCall = n % 500 == 250; // a thread flashes the light
        ::dprintf(m_nWords, "%s %s \n", strWord.c_str(), bCall ? "on-the-phone" : "at-the-desk");
        await("an event", [&] { return m_controller.textFieldLyncStatus()->text() == strWord; });
    }
    /// To manual mode and back at another moment of a sign-in each time.
    void switchModes(long n) {
        press(vellux::kTitleConnect); // if it says so
        for (const bool bManual : {true, false}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(n * 7 % 23));
            onMain([&] { selectMode(m_controller, bManual); });
        }
    }

    /// Plays a phase of so many rounds, or of so many seconds, and prints what it held before and afterwards.
    void play(const char* strWhat, long nRounds, std::chrono::seconds limit, void (Soak::*round)(long)) {
        if (!m_bSucceeded || (nRounds == 0 && limit == 0s))
            return;
        const auto began = std::chrono::steady_clock::now();
        long n = 0;
        const auto roundsUntil = [&](long nEnd, auto end) {
            while (m_bSucceeded && (nRounds > 0 ? n < nEnd : std::chrono::steady_clock::now() < end))
                (this->*round)(n++);
        };
        roundsUntil(std::max(nRounds / 10, 1L), began + limit / 10); // until pools and caches are filled
        const Holdings before = settle(std::nullopt);
        roundsUntil(nRounds, began + limit);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
        const Holdings after = settle(before);
        std::printf("%-25s %8ld in %6.1f s   descriptors %ld, %ld   threads %ld, %ld   heap %ld, %ld kB   "
                    "resident %ld, %ld kB   %s\n",
                    strWhat, n, took.count(), before.nDescriptors, after.nDescriptors, before.nThreads,
                    after.nThreads, before.nHeap, after.nHeap, before.nResident, after.nResident,
                    after.isFlat(before) ? "flat" : "NOT FLAT");
        std::fflush(stdout);
        expect(after.isFlat(before), strWhat);
    }

private:
    void expect(bool bHolds, const std::string& strWhat) {
        if (!bHolds && m_bSucceeded.exchange(false))
            std::fprintf(stderr, "vellux-soak: failed: %s\n", strWhat.c_str());
    }
    void await(const char* strWhat, const std::function<bool()>& holds) {
        expect(!m_bSucceeded || m_changes.waitUntil(holds, kLongestWait), strWhat);
    }
    void onMain(const std::function<void()>& call) { m_mainThread.runAndWait(call); }
    Refusal press(const char* strTitle) {
        Refusal refusal;
        onMain([&] { refusal = pressConnect(m_controller, strTitle); });
        return refusal;
    }
    /// Signs out, until workflows under way have ended and nothing comes back; what is held then.
    Holdings settle(const std::optional<Holdings>& before) {
        const auto end = std::chrono::steady_clock::now() + 20s;
        Holdings held;
        for (int nQuiet = 0; nQuiet < 10;) {
            const bool bPressed = !press(vellux::kTitleDisconnect);
            std::this_thread::sleep_for(100ms);
            held = Holdings::now();
            nQuiet = bPressed || (before && !held.isFlat(*before)) ? 0 : nQuiet + 1;
            if (std::chrono::steady_clock::now() > end)
                break;
        }
        return held;
    }

    vellux::MainThread& m_mainThread;
    Changes& m_changes;
    const int m_nWords;
    VelluxWindowUi& m_controller = VelluxWindowUi::sharedVelluxWindowUi();
    const std::shared_ptr<vellux::Button> m_button = m_controller.buttonConnect();
    std::atomic<bool> m_bSucceeded{true};
};

int soak(const CertificateAuthority& authority, const std::string& strHost, int nWords,
         const std::array<long, 4>& counts) {
    const auto directory = PrivateDirectory::create();
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> nowhere(std::fopen("/dev/null", "w"), &std::fclose);
    if (directory == nullptr || nowhere == nullptr)
        return EXIT_FAILURE;
    Changes changes;
    Console console(stdout);
    Console silent(nowhere.get());
    vellux::CallQueue mainThread;
    vellux::CurlTransport transport(mainThread, {authority.pem(), /*bUseProxies=*/false});
    VirtualLights lights(mainThread);
    lights.plug(std::make_shared<VirtualLight>(LightModel::Framed, silent, changes));
    vellux::SystemClock clock;
    std::optional<vellux::Program> program;
    HeadlessDesktop desktop(
        {mainThread, console, changes, directory->path(), [&program] { program->end(); }});
    program.emplace(vellux::Program::Ports{lights, transport, mainThread, clock, desktop});
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    const WindowWatch windowWatch(controller, silent, changes);
    program->start();
    enterCredentials(controller, {strHost, kUser, kSecret});
    setBox(controller, "buttonFlashOnCall", true);

    Soak soak(mainThread, changes, nWords);
    std::thread user([&] {
        soak.play("connects and disconnects", counts[0], 0s, &Soak::connectAndDisconnect);
        soak.play("batches", counts[1], 0s, &Soak::event);
        soak.play("switches while connecting", counts[2], 0s, &Soak::switchModes);
        soak.play("events at speed", 0, std::chrono::seconds(counts[3]), &Soak::event);
        desktop.terminate();
    });
    mainThread.run();
    user.join();
    return soak.succeeded() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int nArguments, char** arguments) {
    std::array<long, 4> counts = {1'000, 10'000, 200, 3'600}; // as the phases come; the last one in seconds
    for (int n = 1; n < nArguments && n <= 4; ++n)
        counts[static_cast<std::size_t>(n - 1)] = std::strtol(arguments[n], nullptr, 10);
    std::signal(SIGPIPE, SIG_IGN);
    const auto authority = CertificateAuthority::create();
    std::array<int, 2> words{};
    std::array<int, 2> host{};
    if (!authority || ::pipe(words.data()) != 0 || ::pipe(host.data()) != 0)
        return EXIT_FAILURE;
    if (::fork() == 0) {
        ::close(words[1]);
        return serve(*authority, words[0], host[1]);
    }
    ::close(words[0]);
    ::close(host[1]);
    std::string strHost;
    for (char c = 0; ::read(host[0], &c, 1) == 1 && c != '\n';)
        strHost += c;
    return strHost.empty() ? EXIT_FAILURE : soak(*authority, strHost, words[1], counts);
}
