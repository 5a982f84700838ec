#pragma once

#include "stream/ByteView.h"

#include <functional>
#include <map>
#include <memory>

struct dvbpsi_s;

namespace zviptv::sim {

/// Detaches the decoder and deletes the handle.
struct DvbpsiCloser
{
    void (*detach)(dvbpsi_s*);
    void operator()(dvbpsi_s* handle) const noexcept;
};
using DvbpsiHandle = std::unique_ptr<dvbpsi_s, DvbpsiCloser>;

/// A silent handle without a decoder yet; `detach` removes the one that the caller attaches.
DvbpsiHandle NewDvbpsiHandle(void (*detach)(dvbpsi_s*));

/// Feeds the sections of one table to a libdvbpsi decoder, which `open` makes.
///
/// libdvbpsi trusts the lengths inside a section and looks at nothing but the version to see a change. So
/// only sections that passed IsSoundSection() and the caller's own checks may be pushed, and a section that
/// differs from what was seen gets a new decoder, whatever its version says.
class DvbpsiFeed
{
public:
    using Open = std::function<DvbpsiHandle()>;

    explicit DvbpsiFeed(Open open) : m_open(std::move(open)) {}

    void Push(ByteView section);

private:
    bool IsKnown(ByteView section);
    void Send(ByteView section);

    Open m_open;
    DvbpsiHandle m_handle{nullptr, {nullptr}};
    std::uint8_t m_counter = 0;
    std::uint32_t m_identity = 0;
    std::map<std::uint8_t, std::uint32_t> m_seen; ///< CRC by section number
};

} // namespace zviptv::sim
