// The device's side of USB/IP: the kernel's documentation calls it usbip_protocol. All numbers are
// big-endian.

#include "kernel/KernelLight.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace vellux::simulator {

namespace {

enum : std::uint32_t { kSubmit = 1, kUnlink = 2, kSubmitted = 3, kUnlinked = 4 };
enum : std::uint32_t { kOut = 0, kIn = 1 };
enum : std::uint8_t { kGetStatus = 0x00, kGetDescriptor = 0x06, kSetReport = 0x09 };
enum : std::uint8_t { kDeviceDescriptor = 1, kConfigurationDescriptor = 2, kReportDescriptor = 0x22 };
enum : std::uint8_t { kOutputReport = 2 }; // with ID 0

constexpr std::size_t kHeaderWords = 12;

std::uint8_t low(unsigned n) {
    return static_cast<std::uint8_t>(n & 0xFF);
}
std::uint8_t high(unsigned n) {
    return static_cast<std::uint8_t>(n >> 8 & 0xFF);
}

// Ports come free a moment after their device has left.
std::optional<unsigned> attach(int nSocket) {
    static std::atomic<unsigned> nNext{0};
    constexpr unsigned kPorts = 8, kFullSpeed = 2;
    for (int nTry = 0; nTry < 100; ++nTry) {
        const unsigned nDevice = nNext++;
        const unsigned nPort = nDevice % kPorts;
        char text[64];
        const int nLength =
            std::snprintf(text, sizeof text, "%u %d %u %u", nPort, nSocket, nDevice + 1, kFullSpeed);
        const int nFile = ::open("/sys/devices/platform/vhci_hcd.0/attach", O_WRONLY | O_CLOEXEC);
        const bool bAttached = ::write(nFile, text, static_cast<std::size_t>(nLength)) > 0;
        ::close(nFile);
        if (bAttached)
            return nPort;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return std::nullopt;
}

} // namespace

struct UsbLight::Request {
    std::uint32_t nCommand, nNumber, nDevice, nDirection, nEndpoint;
    std::uint32_t nFlags, nLength, nStartFrame, nPackets, nInterval;
    std::uint8_t setup[8];
};

UsbLight::UsbLight(const LightKind& kind, ReportPipe pipe) : m_kind(kind), m_pipe(pipe) {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0 || !(m_nPort = attach(ends[0]))) {
        std::perror("simulator: vhci_hcd");
        std::abort();
    }
    ::close(ends[0]);
    m_nSocket = ends[1];
    m_thread = std::thread([this] { serve(); });
}

UsbLight::~UsbLight() {
    ::shutdown(m_nSocket, SHUT_RDWR); // which is what unplugs it
    m_thread.join();
    ::close(m_nSocket);
    // Until the controller has noticed, a report under way waits for its time limit, which it would not on a
    // cable.
    const std::string strPlace = "/sys/devices/platform/vhci_hcd.0/usb1/1-" + std::to_string(*m_nPort + 1);
    for (int nTry = 0; nTry < 1000 && std::filesystem::exists(strPlace); ++nTry)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

bool UsbLight::readAll(void* pInto, std::size_t nBytes) const {
    return ::recv(m_nSocket, pInto, nBytes, MSG_WAITALL) == static_cast<ssize_t>(nBytes);
}

void UsbLight::serve() {
    Request request{};
    static_assert(sizeof request == kHeaderWords * sizeof(std::uint32_t));
    while (readAll(&request, sizeof request)) {
        for (std::uint32_t* p = &request.nCommand; p <= &request.nInterval; ++p)
            *p = ntohl(*p);
        if (request.nCommand == kUnlink) { // of something that has not been answered
            reply(request, -ECONNRESET, 0);
            continue;
        }
        Bytes data(request.nDirection == kOut ? request.nLength : 0);
        if (!data.empty() && !readAll(data.data(), data.size()))
            return;
        submit(request, data);
    }
}

void UsbLight::submit(const Request& request, const Bytes& data) {
    const std::uint8_t byRequest = request.setup[1];
    if (request.nEndpoint != 0) {
        if (request.nDirection == kIn)
            markOpened(); // and never has anything to say
        else
            takeReport(request, data);
    } else if (request.nDirection == kOut) {
        if (request.setup[0] == 0x21 && byRequest == kSetReport && request.setup[2] == 0 &&
            request.setup[3] == kOutputReport)
            takeReport(request, data);
        else
            reply(request, 0, data.size());
    } else {
        const auto nValue = static_cast<std::uint16_t>(request.setup[2] | request.setup[3] << 8);
        Bytes answer = byRequest == kGetDescriptor ? descriptor(nValue) : Bytes();
        if (byRequest == kGetStatus)
            answer.assign(2, 0);
        if (answer.size() > request.nLength)
            answer.resize(request.nLength);
        reply(request, answer.empty() ? -EPIPE : 0, answer.size(), answer);
    }
}

void UsbLight::takeReport(const Request& request, const Bytes& report) {
    const Answer answer = m_answer; // a copy: whoever reads the log may ask for another
    log(report);
    if (answer != Answer::Silence)
        reply(request, answer == Answer::Accept ? 0 : -EPIPE, answer == Answer::Accept ? report.size() : 0);
}

void UsbLight::reply(const Request& request, std::int32_t nStatus, std::size_t nTransferred,
                     const Bytes& data) const {
    std::uint32_t header[kHeaderWords] = {};
    header[0] = htonl(request.nCommand == kUnlink ? kUnlinked : kSubmitted);
    header[1] = htonl(request.nNumber);
    header[5] = htonl(static_cast<std::uint32_t>(nStatus));
    header[6] = htonl(static_cast<std::uint32_t>(nTransferred));
    Bytes message(sizeof header + data.size());
    std::memcpy(message.data(), header, sizeof header);
    if (!data.empty())
        std::memcpy(message.data() + sizeof header, data.data(), data.size());
    ::send(m_nSocket, message.data(), message.size(), MSG_NOSIGNAL); // fails when it is being unplugged
}

Bytes UsbLight::descriptor(std::uint16_t nValue) const {
    switch (nValue >> 8) {
    case kDeviceDescriptor: {
        Bytes device = {18, 1, 0x10, 0x01, 0, 0, 0, 64, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1}; // USB 1.1
        device[8] = low(m_kind.nVendorID);
        device[9] = high(m_kind.nVendorID);
        device[10] = low(m_kind.nProductID);
        device[11] = high(m_kind.nProductID);
        return device;
    }
    case kConfigurationDescriptor:
        return configuration();
    case kReportDescriptor:
        return reportDescriptor(m_kind);
    default:
        return {};
    }
}

Bytes UsbLight::configuration() const {
    Bytes bytes = {
        9, 2,    34,   0,    1, 1, 0,    0x80, 50, // one interface, 100 mA
        9, 4,    0,    0,    1, 3, 0,    0,    0,  // which is HID
        9, 0x21, 0x11, 0x01, 0, 1, 0x22, 0,    0,  // with a report descriptor
        7, 5,    0x81, 3,    8, 0, 10,             // and an interrupt pipe in
    };
    bytes[25] = low(static_cast<unsigned>(reportDescriptor(m_kind).size()));
    if (m_pipe == ReportPipe::InterruptOut) {
        bytes.insert(bytes.end(), {7, 5, 0x02, 3, 64, 0, 10});
        bytes[2] = low(static_cast<unsigned>(bytes.size()));
        bytes[13] = 2; // pipes
    }
    return bytes;
}

} // namespace vellux::simulator
