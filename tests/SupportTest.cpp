// The small pieces: text, URLs, files, the main thread's queue, worker threads, shared instances.

#include "fakes/ProgramFixture.h"
#include "fakes/ScarceMemory.h"
#include "support/Files.h"
#include "support/Text.h"
#include "support/Url.h"
#include "threads/CoalescedUpdate.h"
#include "threads/SharedInstance.h"

#include <csignal>
#include <limits>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace vellux;
using namespace std::string_view_literals;
namespace fs = std::filesystem;

// Overflow, or a rest that spoils what stands at the head.
TEST(Text, IntegerValue) {
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    const std::pair<std::int64_t, const char*> rows[] = {
        {12, "12|+12| \t\n12|12 3|12x|12.9|0012"},
        {0, "|0|x12|-|+-5|- 5|0x10"},
        {-3, "-3;"},
        {kMost, "9223372036854775807|9223372036854775808|9223372036854775810|99999999999999999999x"},
        {-kMost, "-9223372036854775807"},
        {-kMost - 1, "-9223372036854775808|-9223372036854775809|-99999999999999999999"}};
    for (const auto& [nValue, strTexts] : rows)
        for (const std::string& strText : split(strTexts, "|"))
            EXPECT_EQ(integerValue(strText), nValue) << strText;
}

// Overlong forms, surrogates, what lies beyond U+10FFFF, and texts cut short, let through (RFC 3629).
TEST(Text, Utf8) {
    for (const auto text : {""sv, "\0a"sv, "\xC2\x80"sv, "\xDF\xBF"sv, "\xE0\xA0\x80"sv, "\xED\x9F\xBF"sv,
                            "\xEE\x80\x80"sv, "\xF0\x90\x80\x80"sv, "\xF4\x8F\xBF\xBF"sv})
        EXPECT_TRUE(isUtf8(text)) << testing::PrintToString(text);
    for (const auto text :
         {"\x80"sv, "a\xBF"sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xC2"sv, "\xC2\x7F"sv, "\xC2\xC0"sv,
          "\xE0\x9F\xBF"sv, "\xE1\x80"sv, "\xE1\x80\x7F"sv, "\xED\xA0\x80"sv, "\xF0\x8F\xBF\xBF"sv,
          "\xF1\x80\x80"sv, "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv, "\xFF"sv})
        EXPECT_FALSE(isUtf8(text)) << testing::PrintToString(text);
}

// Letters beyond ASCII taken apart, or the last one and its neighbours.
TEST(Text, LowerCase) {
    EXPECT_EQ(toLower("BeRightBack [\xC3\x84@Z"), "berightback [\xC3\x84@z");
}

// A request to what is no address; a good address refused.
TEST(Url, WhatFormsOne) {
    const auto good = split("https://h|http://h/|HTTPS://h:443/a?b=c#d|https://u:p@h:1/|https://h:65535|"
                            "https://[::1]:8080/x|https://h/%41%fF|https:///path|https://h/a:b@c",
                            "|");
    for (const std::string& strUrl : good)
        EXPECT_TRUE(isHttpUrl(strUrl)) << strUrl;
    const auto bad =
        split("|h|//h/|ftp://h/|file:///etc/passwd|https:/h|https://h /| https://h|https://h/a b|"
              "https://h/\r\nX: y|https://h/\x7F|https://h\xC3\xBC/|https://h:65536/|https://h:8a/|"
              "https://h:-1/|https://h:99999999999/|https://h/%|https://h/%4|https://h/%4g|"
              "https://[::1|https://[::1]x/|https://h/<a>|https://h/\"|https://h/{a}|https://h/\\|"
              "https://h]/x|https://a[b]/|https://[zz]/|https://h/[|https://h/#a#b",
              "|");
    for (const std::string& strUrl : bad)
        EXPECT_FALSE(isHttpUrl(strUrl)) << strUrl;
    for (const auto strUrl :
         {"https://h\0"sv, "https://[::1\0]/"sv, "https://[::1\0.example]/"sv, "https://h/\0"sv})
        EXPECT_FALSE(isHttpUrl(strUrl)) << testing::PrintToString(strUrl);
}

class FilesFixture : public ProgramFixture {
protected:
    FilesFixture() { umask(022); }
    static unsigned modeOf(const std::string& strPath) {
        return static_cast<unsigned>(fs::status(strPath).permissions());
    }
    std::string path(const char* strName) const { return (directory / strName).string(); }
};

// Credentials that others can read, in a new file or in a loose old one; a directory that they can look into.
TEST_F(FilesFixture, AreForTheirOwnerAlone) {
    createPrivateDirectory(path("a/b"));
    EXPECT_EQ(modeOf(path("a/b")), 0700U);
    writeFile(path("secret"), "s", FileAccess::OwnerOnly);
    EXPECT_EQ(modeOf(path("secret")), 0600U);
    createFileIfMissing(path("empty"), FileAccess::OwnerOnly);
    EXPECT_EQ(modeOf(path("empty")), 0600U);
    for (const auto access : {FileAccess::Default, FileAccess::OwnerOnly})
        for (const bool bWrite : {false, true}) {
            fs::permissions(path("secret"), fs::perms(0664));
            bWrite ? writeFile(path("secret"), "longer", access)
                   : createFileIfMissing(path("secret"), access);
            EXPECT_EQ(modeOf(path("secret")), access == FileAccess::OwnerOnly ? 0600U : 0664U);
        }
    fs::permissions(path("secret"), fs::perms(0444)); // made read-only on purpose: stays so
    writeFile(path("secret"), "s", FileAccess::OwnerOnly);
    EXPECT_EQ(modeOf(path("secret")), 0400U);
}

// Settings never written where the file system has no modes, or credentials in somebody else's file.
TEST_F(FilesFixture, ThatCannotBeTightenedAreWrittenIfTheyAreOurs) {
    const std::string strFixed =
        "/proc/self/timerslack_ns"; // everybody's to write; its mode can't be changed
    ASSERT_EQ(modeOf(strFixed), 0666U);
    writeFile(strFixed, "60000", FileAccess::OwnerOnly);
    EXPECT_EQ(contentOf(strFixed), "60000\n");
    const uid_t nUser = geteuid();
    ASSERT_EQ(nUser == 0 ? seteuid(65534) : 0, 0);
    prctl(PR_SET_DUMPABLE, 0); // now it is root's, and we are not
    writeFile(strFixed, "70000", FileAccess::OwnerOnly);
    EXPECT_EQ(contentOf(strFixed), "60000\n");
    writeFile(strFixed, "70000", FileAccess::Default);
    EXPECT_EQ(contentOf(strFixed), "70000\n");
    ASSERT_EQ(seteuid(nUser), 0);
    prctl(PR_SET_DUMPABLE, 1);
}

// A file emptied, or half a text, where there is no room for the whole one.
TEST_F(FilesFixture, KeepWhatTheyHeldUnlessAllOfItFits) {
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit is short, and the next one fails
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    for (const std::string strBefore : {"", "short", "0123456789", "longer than all that may be written"})
        for (const std::string strText : {"", "new", "9876543210", "more than what fits"}) {
            writeContent(path("f"), strBefore);
            const rlimit tight{10, limit.rlim_max};
            ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
            writeFile(path("f"), strText, FileAccess::OwnerOnly);
            ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
            EXPECT_EQ(contentOf(path("f")), strText.size() <= 10 ? strText : strBefore);
        }
    for (const int nRefusal : {ENOSPC, EDQUOT, EOPNOTSUPP}) { // the last is a file system that can't reserve
        writeContent(path("f"), "before");
        scarce_memory::nDiskRefusal = nRefusal;
        writeFile(path("f"), "after", FileAccess::OwnerOnly);
        scarce_memory::nDiskRefusal = 0;
        EXPECT_EQ(contentOf(path("f")), nRefusal == EOPNOTSUPP ? "after" : "before");
    }
}

// A short file read into a megabyte; an exception where there is no memory.
TEST_F(FilesFixture, NeedLittleMemoryAndNeverThrow) {
    const std::string strPath = path("directory/and/a/long/name/of/a/file"), strText(100, 'x');
    createPrivateDirectory(fs::path(strPath).parent_path());
    writeFile(strPath, strText, FileAccess::OwnerOnly);
    scarce_memory::nLargest = 0;
    EXPECT_EQ(readTextFile(strPath), strText);
    EXPECT_LT(scarce_memory::nLargest, 16U * 1024);
    for (int nPieces = 0; nPieces < 20; ++nPieces) {
        scarce_memory::nPiecesLeft = nPieces;
        createPrivateDirectory(strPath);
        writeFile(strPath, strText, FileAccess::OwnerOnly);
        const auto strRead = readTextFile(strPath);
        scarce_memory::nPiecesLeft = -1;
        EXPECT_EQ(strRead.value_or(strText), strText);
        EXPECT_EQ(contentOf(strPath), strText);
    }
}

// A rest of the longer text before; a content that comes back changed; rubbish, or more than memory holds,
// read.
TEST_F(FilesFixture, ComeBackWholeOrNotAtAll) {
    EXPECT_EQ(readTextFile(path("f")), std::nullopt);
    for (const auto text : {"a longer text"sv, "\0 \r\n gr\xC3\xBC\xC3\x9F\n"sv, ""sv}) {
        writeFile(path("f"), text, FileAccess::OwnerOnly);
        createFileIfMissing(path("f"), FileAccess::Default);
        EXPECT_EQ(readTextFile(path("f")), text);
    }
    writeContent(path("f"), "\x89PNG\xFF");
    EXPECT_EQ(readTextFile(path("f")), std::nullopt);
    for (const std::size_t nSize : {std::size_t{1024 * 1024}, std::size_t{1024 * 1024 + 1}}) {
        writeContent(path("f"), std::string(nSize, 'x'));
        EXPECT_EQ(readTextFile(path("f")).has_value(), nSize == 1024 * 1024);
    }
    fs::resize_file(path("f"), std::uintmax_t{1} << 40);
    EXPECT_EQ(readTextFile(path("f")), std::nullopt);
}

// A program that hangs or throws because something else stands where its file should be.
TEST_F(FilesFixture, ThatAreNoFiles) {
    fs::create_directory(path("directory"));
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0644), 0);
    writeFile(path("file"), "x", FileAccess::Default);
    for (const std::string& strPath :
         {path("directory"), path("fifo"), path("file/below"), path("no/such"), std::string()})
        for (const auto access : {FileAccess::Default, FileAccess::OwnerOnly}) {
            createFileIfMissing(strPath, access);
            writeFile(strPath, "text", access);
            EXPECT_EQ(readTextFile(strPath), std::nullopt) << strPath;
        }
    createPrivateDirectory(path("file/below"));
    EXPECT_EQ(modeOf(path("directory")), 0755U); // not tightened into a file's mode
    EXPECT_EQ(contentOf(path("file")), "x");
}

// A user told that nothing can be kept where it can, or left in the belief that it can.
TEST_F(FilesFixture, TellWhetherTheyCanBeWritten) {
    const uid_t nUser = geteuid();
    fs::create_directories(path("locked/below"));
    for (const char* strName : {"mine", "read-only", "locked/mine"})
        writeContent(path(strName), "x");
    fs::create_symlink("nowhere", path("dangling"));
    fs::create_symlink("mine", path("link"));
    if (nUser == 0) { // who may write everywhere
        for (const char* strName : {"", "mine", "locked/mine"})
            ASSERT_EQ(chown(path(strName).c_str(), 65534, 65534), 0);
        ASSERT_EQ(seteuid(65534), 0);
    } else {
        fs::permissions(path("locked"), fs::perms(0555));
    }
    fs::permissions(path("mine"), fs::perms(0600));
    if (nUser != 0)
        fs::permissions(path("read-only"), fs::perms(0444));
    const struct {
        const char* strName;
        bool bExpected;
    } rows[] = {{"mine", true},        {"read-only", false},    {"link", true},       {"dangling", false},
                {"new", true},         {"no/such/file", true},  {"", false},          {"locked/mine", true},
                {"locked/new", false}, {"locked/a/b/c", false}, {"mine/below", false}};
    for (const auto& row : rows)
        EXPECT_EQ(isWritable(path(row.strName)), row.bExpected) << row.strName;
    EXPECT_FALSE(isWritable(""));
    EXPECT_FALSE(fs::exists(path("no")));
    ASSERT_EQ(seteuid(nUser), 0);
    fs::permissions(path("locked"), fs::perms(0755));
}

// Calls out of order, dropped, or run on the wrong thread; a waiter that goes on before its call is done.
TEST(CallQueue, RunsInOrderOnItsThread) {
    std::atomic<int> nWakes = 0;
    CallQueue queue([&nWakes] { ++nWakes; });
    std::vector<int> order;
    std::thread other([&] {
        queue.post([&] {
            queue.post([&] { order.push_back(4); });       // behind those that wait
            queue.runAndWait([&] { order.push_back(1); }); // at once
        });
        queue.post([&] { order.push_back(2); });
        queue.runAndWait([&] { order.push_back(queue.isCurrent() ? 3 : -3); });
        queue.runAndWait([&] { order.push_back(queue.isCurrent() ? 5 : -5); });
        order.push_back(queue.isCurrent() ? -6 : 6);
        queue.close();
    });
    while (nWakes < 3)
        std::this_thread::yield();
    queue.run();
    other.join();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

/// A toolkit's loop. A turn may end early at any time, as on a busy machine.
struct Loop {
    /// Turns until a call has run. Expects to have been woken for each, and to be woken again for what is
    /// left.
    void runUntil(char c) {
        for (bool bLeft = true; bLeft && strOrder.find(c) == std::string::npos;) {
            EXPECT_TRUE(std::exchange(bWoken, false));
            bLeft = queue.runPending();
            EXPECT_TRUE(bWoken || !bLeft);
        }
    }
    void post(
        char c, std::function<void()> rest = [] {}) {
        queue.post([this, c, rest = std::move(rest)] {
            strOrder += c;
            rest();
        });
    }

    bool bWoken = false;
    std::string strOrder;
    CallQueue queue{[this] { bWoken = true; }};
};

// A toolkit kept out by calls that take long or queue calls.
TEST(CallQueue, LeavesTheToolkitItsTurn) {
    Loop loop;
    loop.post('s', [] { std::this_thread::sleep_for(std::chrono::milliseconds(60)); });
    loop.post('a');
    loop.runUntil('s');
    EXPECT_EQ(loop.strOrder, "s");
    const std::function<void()> again = [&] { loop.post('+', again); };
    again();
    loop.post('b');
    loop.runUntil('b');
    EXPECT_EQ(loop.strOrder.substr(0, 4), "sa+b");
}

// An alert's loop that stands still, or goes on in another order.
TEST(CallQueue, GoesOnInALoopInsideACall) {
    Loop loop;
    loop.post('(', [&] {
        loop.runUntil('b');
        loop.strOrder += ')';
    });
    loop.post('a', [&] { loop.post('c'); });
    loop.post('b');
    loop.runUntil(')');
    loop.runUntil('c');
    EXPECT_TRUE(loop.strOrder == "(ab)c" || loop.strOrder == "(abc)") << loop.strOrder;
}

// A waiter that is never woken when the program quits, even while its call is running, as with an alert open;
// a call that runs after the close, or keeps what it holds.
TEST(CallQueue, CloseFreesEveryWaiter) {
    std::atomic<int> nQueued = 0;
    CallQueue queue([&nQueued] { ++nQueued; });
    bool bRun = false;
    const auto token = std::make_shared<int>(0);
    std::vector<std::thread> waiters;
    for (int n = 0; n < 3; ++n)
        waiters.emplace_back([&queue, &bRun, n, token] {
            queue.runAndWait([&queue, &bRun, n, token] {
                if (n == 0)
                    queue.close();
                bRun = n != 0;
            });
        });
    while (nQueued < 3)
        std::this_thread::yield();
    while (queue.runPending()) {
    }
    for (std::thread& waiter : waiters)
        waiter.join();
    waiters.clear();
    std::thread([&] { queue.runAndWait([&] { bRun = true; }); }).join();
    queue.post([&] { bRun = true; });
    queue.run();
    EXPECT_FALSE(bRun);
    EXPECT_EQ(token.use_count(), 1);
}

// An asker that keeps what it asks for alive, or touches it afterwards; a refresh for each of two requests.
TEST(CoalescedUpdate, AskersMayOutliveIt) {
    CallQueue queue([] {});
    std::function<void()> ask;
    int nRefreshes = 0;
    {
        CoalescedUpdate update(queue, [&nRefreshes] { ++nRefreshes; });
        ask = update.asker();
        std::thread(ask).join();
        std::thread(ask).join();
        queue.runPending();
        EXPECT_EQ(nRefreshes, 1);
        ask();
        EXPECT_EQ(nRefreshes, 2);
        std::thread(ask).join();
    }
    queue.runPending();
    ask();
    EXPECT_EQ(nRefreshes, 2);
}

using WorkersFixture = ProgramFixture;

// A handle that reports a wrong state; a thread that ends with its handle, or keeps what it captured.
TEST_F(WorkersFixture, StateAndHandle) {
    std::atomic<bool> bGo = false;
    const auto token = std::make_shared<int>(0);
    auto worker = std::make_shared<WorkerThread>(
        [&bGo, token] {
            while (!bGo)
                std::this_thread::yield();
        },
        0.5);
    EXPECT_FALSE(worker->isExecuting() || worker->isFinished());
    worker->start();
    EXPECT_TRUE(worker->isExecuting() && !worker->isFinished());
    std::make_shared<WorkerThread>([this, token] { journal.add("dropped ran"); }, 1.0)->start();
    bGo = true;
    WorkerThread::joinAll();
    EXPECT_TRUE(!worker->isExecuting() && worker->isFinished());
    EXPECT_EQ(journal.count("dropped ran"), 1U);
    EXPECT_EQ(token.use_count(), 1);
}

// A button left dead, or what a thread should have used kept for good, when the platform gives no thread.
TEST_F(WorkersFixture, ThatCantBeMade) {
    delegate().applicationDidFinishLaunching();
    pthread_attr_t usual, tooLarge;
    pthread_getattr_default_np(&usual);
    pthread_getattr_default_np(&tooLarge);
    pthread_attr_setstacksize(&tooLarge, std::size_t{1} << 47); // more than there are addresses
    pthread_setattr_default_np(&tooLarge);
    const auto token = std::make_shared<int>(0);
    const auto worker = std::make_shared<WorkerThread>([this, token] { journal.add("ran"); }, 1.0);
    worker->start();
    EXPECT_TRUE(worker->isFinished() && !worker->isExecuting());
    EXPECT_EQ(token.use_count(), 1);
    type("lync.example", "CORP\\pat", "secret");
    ui().onConnectButtonClicked(*ui().buttonConnect());
    pthread_setattr_default_np(&usual);
    EXPECT_TRUE(ui().buttonConnect()->isEnabled());
    scriptServer(R"({"availability":"Busy"})");
    connect();
    EXPECT_EQ(journal.count("ran"), 0U);
    EXPECT_EQ(journal.take({"request"}).size(), 4U); // the second try's alone
}

// Two instances, one of them lost; an instance seen half made (the thread sanitizer tells).
TEST_F(WorkersFixture, ShareOneInstance) {
    static SharedInstanceSlot<std::string> slot;
    std::atomic<int> nCreated = 0, nReady = 0;
    std::vector<std::thread> users;
    for (int n = 0; n < 4; ++n)
        users.emplace_back([&] {
            for (++nReady; nReady < 4;)
                std::this_thread::yield();
            const std::string& strInstance = sharedInstance(slot, [&] {
                ++nCreated;
                return new std::string("made");
            });
            EXPECT_EQ(strInstance, "made");
        });
    for (std::thread& user : users)
        user.join();
    EXPECT_EQ(nCreated, 1);
    EXPECT_EQ(&VelluxWindowUi::sharedVelluxWindowUi(), sharedVelluxWindowUiInstance.instance);
}

} // namespace
