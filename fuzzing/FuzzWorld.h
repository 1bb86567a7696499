// What the fuzz targets share: how an input is read, how a broken property is reported, and the real modules
// on ports in memory.
//
// A target is one function, LLVMFuzzerTestOneInput. It creates no threads and never sleeps, and each run
// starts from the same state, so that an input that fails also fails on its own.
#pragma once

#include "Program.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHidManager.h"
#include "fakes/FakeHttpTransport.h"
#include "fakes/Journal.h"
#include "support/Text.h"
#include "threads/CallQueue.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

namespace fuzzing {

inline std::string_view textOf(const std::uint8_t* pData, std::size_t nSize) {
    return {reinterpret_cast<const char*>(pData), nSize};
}

/// Ends the program unless the property holds; the fuzzer keeps the input as a file.
inline void require(bool bHolds, const char* strProperty) {
    if (bHolds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", strProperty);
    std::abort();
}

/// The parts of an input: there is a record separator (0x1E), which is no part of any valid text, between
/// two.
inline std::vector<std::string> partsOf(std::string_view strInput) {
    return vellux::split(strInput, "\x1E");
}

/// Gives the answers in order, whatever is asked, and remembers what was.
class AnsweringTransport : public vellux::HttpTransport {
public:
    explicit AnsweringTransport(Journal& journal) : m_journal(journal) {}

    /// Forgets all requests. Each answer is a body; one that begins with "!" has a transport error beside
    /// what follows. When they are used up, requests fail.
    void begin(std::vector<std::string> answers) {
        m_answers = std::move(answers);
        requests.clear();
        pollRequests.clear();
        polls.clear();
    }

    std::vector<vellux::HttpRequest> requests, pollRequests;
    std::vector<std::shared_ptr<FakeConnection>> polls;

    vellux::HttpResponse sendSynchronousRequest(const vellux::HttpRequest& request) override {
        requests.push_back(request);
        if (requests.size() > m_answers.size())
            return FakeHttpTransport::failure();
        const std::string& strAnswer = m_answers[requests.size() - 1];
        if (strAnswer.starts_with('!'))
            return {strAnswer.substr(1), vellux::HttpError{"connection reset"}};
        return FakeHttpTransport::body(strAnswer);
    }
    std::shared_ptr<vellux::HttpConnection>
    createConnection(const vellux::HttpRequest& request, vellux::HttpConnectionDelegate& delegate) override {
        pollRequests.push_back(request);
        polls.push_back(std::make_shared<FakeConnection>(m_journal, request, delegate));
        return polls.back();
    }
    void close() override {}

private:
    Journal& m_journal;
    std::vector<std::string> m_answers;
};

/// The ports, installed. The thread that makes it is the main thread. One a process, never destroyed.
class World {
public:
    explicit World(const std::string& strSupportDirectory = "/nonexistent")
        : desktop(journal, strSupportDirectory), program({hid, transport, mainThread, clock, desktop}) {}

    static VelluxWindowUi& ui() { return VelluxWindowUi::sharedVelluxWindowUi(); }
    static VelluxHttp& client() { return VelluxHttp::sharedVelluxHttp(); }

    Journal journal;
    vellux::CallQueue mainThread;
    FakeHidManager hid{journal, mainThread};
    AnsweringTransport transport{journal};
    FakeClock clock{journal};
    FakeDesktop desktop;
    vellux::Program program;
};

} // namespace fuzzing
