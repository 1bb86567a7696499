#include "kernel/KernelLight.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/uhid.h>
#include <poll.h>
#include <unistd.h>

namespace vellux::simulator {

UhidLight::UhidLight(const LightKind& kind) : m_nUhid(::open("/dev/uhid", O_RDWR | O_CLOEXEC | O_NONBLOCK)) {
    uhid_event event{};
    event.type = UHID_CREATE2;
    uhid_create2_req& create = event.u.create2;
    const Bytes descriptor = reportDescriptor(kind);
    std::snprintf(reinterpret_cast<char*>(create.name), sizeof create.name, "light");
    std::memcpy(create.rd_data, descriptor.data(), descriptor.size());
    create.rd_size = static_cast<std::uint16_t>(descriptor.size());
    create.bus = 3; // USB, as far as this goes
    create.vendor = kind.nVendorID;
    create.product = kind.nProductID;
    if (::write(m_nUhid, &event, sizeof event) < 0) {
        std::perror("simulator: /dev/uhid");
        std::abort();
    }
    m_thread = std::thread([this] { serve(); });
}

UhidLight::~UhidLight() {
    m_bUnplugged = true;
    m_thread.join();
    ::close(m_nUhid); // which is what unplugs it
}

void UhidLight::serve() {
    while (!m_bUnplugged) {
        pollfd source{m_nUhid, POLLIN, 0};
        uhid_event event{};
        if (::poll(&source, 1, 20) <= 0 || ::read(m_nUhid, &event, sizeof event) <= 0)
            continue;
        if (event.type == UHID_OPEN)
            markOpened();
        // The kernel puts the report ID first, also a 0, which it keeps off a real cable.
        const std::uint8_t* const pData = event.u.output.data;
        const std::size_t nSize = event.u.output.size;
        if (event.type == UHID_OUTPUT && nSize > 0)
            log(Bytes(pData + (pData[0] == 0 ? 1 : 0), pData + nSize));
    }
}

} // namespace vellux::simulator
