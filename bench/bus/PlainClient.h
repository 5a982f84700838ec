// SPDX-License-Identifier: MIT
#pragma once

#include "Client.h"

#include <initializer_list>
#include <vector>

namespace zviptv::bench {

/// Takes the entries of a message, in any order. Their bytes are valid until Finish.
class EntryReader
{
public:
    virtual void Take(std::string_view key, std::string_view value) = 0;
    virtual void Finish() = 0;

protected:
    ~EntryReader() = default;
};

/// Makes a packet from the entries of a notification and passes it on, without a copy of the bytes.
class PesReader final : public EntryReader
{
public:
    explicit PesReader(Receiver receiver) : m_receiver(receiver) {}

    void Take(std::string_view key, std::string_view value) override;
    void Finish() override;

private:
    Receiver const m_receiver;
    bool m_isPes = false;
    std::size_t m_announced = 0;
    Pes m_pes{};
};

/// The common part of the clients without the library: the entries of requests and answers. Derived classes
/// send and receive them.
class PlainClient : public Client
{
public:
    void MuteAudio(bool on) final;
    unsigned int GetRatingInfo() final;
    void Subscribe(Receiver receiver) final;
    void Unsubscribe() final;

protected:
    using Entries = std::initializer_list<wire::Entry>;

    /// Sends a request to the path. `reader` takes the entries of the answer and finishes.
    virtual void Exchange(char const* path, Entries request, EntryReader& reader) = 0;

    Receiver m_receiver = nullptr;

private:
    void RequestPes(char const* on);

    std::vector<wire::Rating> m_ratings;
};

/// Throws std::runtime_error.
[[noreturn]] void Fail(std::string const& what, char const* why);

} // namespace zviptv::bench
