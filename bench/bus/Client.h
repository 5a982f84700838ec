// SPDX-License-Identifier: MIT
#pragma once

#include "Wire.h"

#include <memory>
#include <string>

namespace zviptv::bench {

/// A PES packet as it reaches the receiver; the bytes are valid during the call.
struct Pes
{
    int type;
    std::int16_t pid;
    std::uint32_t pts;
    char const* data;
    std::size_t size;
};

using Receiver = void (*)(Pes const&);

/// What is measured: the same few things, done through one library or another. A failure throws
/// std::runtime_error.
class Client
{
public:
    virtual ~Client() = default;

    virtual void MuteAudio(bool on) = 0;
    /// The sum of the values of all ratings.
    virtual unsigned int GetRatingInfo() = 0;

    /// Asks for PES packets. Once, but of the library as often as wanted.
    virtual void Subscribe(Receiver receiver) = 0;
    /// No packets any more, for nobody.
    virtual void Unsubscribe() = 0;
    /// Waits for something to arrive and hands on at least a part of what has.
    virtual void Dispatch() = 0;
};

/// The client that this program was built for, connected to the system bus. `service` is the service's unique
/// name, for those who do not find it themselves.
std::unique_ptr<Client> NewClient(std::string const& service);

} // namespace zviptv::bench
