// A time limit that is shorter than that of ctest, which ends any test that hangs.
#pragma once

#include <chrono>
#include <unistd.h>

/// SIGALRM ends the test's process unless this is destroyed within its time. One at a time.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds budget) { ::alarm(static_cast<unsigned>(budget.count())); }
    ~Watchdog() { ::alarm(0); }
};
