// Virtual lights of the real kernel. Each logs all that it is sent, with the time.
#pragma once

#include "kernel/LightKind.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vellux::simulator {

/// What a light does with a report. One without a USB parent accepts all of them.
enum class Answer {
    Accept,
    Refuse, ///< stalls
    Silence ///< lets the kernel wait, 5 s
};

/// One attempt to send a report.
struct Attempt {
    std::chrono::steady_clock::time_point time;
    Bytes report; ///< as it is on the wire
};

/// Plugged with its constructor, unplugged with its destructor. Any thread.
class KernelLight {
public:
    virtual ~KernelLight() = default;
    KernelLight(const KernelLight&) = delete;
    KernelLight& operator=(const KernelLight&) = delete;

    std::vector<Attempt> attempts() const;
    /// The reports without immediate repetitions.
    std::vector<Bytes> changes() const;
    /// The latest report; empty when there is none.
    Bytes shown() const;
    void forget();
    /// Whether anybody has opened its node.
    bool wasOpened() const { return m_bOpened; }

protected:
    KernelLight() = default;
    void log(Bytes report);
    void markOpened() { m_bOpened = true; }

private:
    mutable std::mutex m_mutex;
    std::vector<Attempt> m_attempts;
    std::atomic<bool> m_bOpened{false};
};

/// Made through /dev/uhid: cheap, hundreds are possible, but without a USB parent.
class UhidLight : public KernelLight {
public:
    explicit UhidLight(const LightKind& kind);
    ~UhidLight() override;

private:
    void serve();

    int m_nUhid = -1;
    std::atomic<bool> m_bUnplugged{false};
    std::thread m_thread;
};

/// How a USB light takes its reports.
enum class ReportPipe { Control, InterruptOut };

/// A full-speed USB device, served to the kernel's USB/IP host controller over a socket.
class UsbLight : public KernelLight {
public:
    explicit UsbLight(const LightKind& kind, ReportPipe pipe = ReportPipe::Control);
    ~UsbLight() override;

    /// From now on, until asked otherwise.
    void answer(Answer answer) { m_answer = answer; }

private:
    struct Request;
    void serve();
    bool readAll(void* pInto, std::size_t nBytes) const;
    void reply(const Request& request, std::int32_t nStatus, std::size_t nTransferred,
               const Bytes& data = {}) const;
    void submit(const Request& request, const Bytes& data);
    void takeReport(const Request& request, const Bytes& report);
    Bytes descriptor(std::uint16_t nValue) const;
    Bytes configuration() const;

    const LightKind m_kind;
    const ReportPipe m_pipe;
    std::atomic<Answer> m_answer{Answer::Accept};
    std::optional<unsigned> m_nPort;
    int m_nSocket = -1;
    std::thread m_thread;
};

} // namespace vellux::simulator
