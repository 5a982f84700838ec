// SPDX-License-Identifier: MIT
#pragma once

#include "Wire.h"

#include <memory>
#include <string>

namespace zviptv::bench {

/// A received PES packet. The bytes are valid during the call.
struct Pes
{
    int type;
    std::int16_t pid;
    std::uint32_t pts;
    char const* data;
    std::size_t size;
};

using Receiver = void (*)(Pes const&);

/// The measured operations, implemented with one of the compared libraries. A failure throws
/// std::runtime_error.
class Client
{
public:
    virtual ~Client() = default;

    virtual void MuteAudio(bool on) = 0;
    /// Returns the sum of the values of all ratings.
    virtual unsigned int GetRatingInfo() = 0;

    /// Subscribes to PES packets. Only the client of the library may subscribe more than once.
    virtual void Subscribe(Receiver receiver) = 0;
    /// Ends all subscriptions.
    virtual void Unsubscribe() = 0;
    /// Waits for data, and passes at least a part of it to the receivers.
    virtual void Dispatch() = 0;
};

/// Makes the client of this program, connected to the system bus. `service` is the service's unique name, for
/// clients that do not find it themselves.
std::unique_ptr<Client> NewClient(std::string const& service);

} // namespace zviptv::bench
