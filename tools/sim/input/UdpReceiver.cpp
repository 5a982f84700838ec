// SPDX-License-Identifier: MIT
#include "input/UdpReceiver.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <optional>
#include <system_error>

namespace zviptv::sim {

namespace {

constexpr std::size_t LargestDatagram = 64 * 1024;

FileHandle NewEvent()
{
    FileHandle event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!event) {
        throw std::system_error(errno, std::generic_category(), "cannot receive datagrams");
    }
    return event;
}

void Raise(FileHandle const& event)
{
    std::uint64_t const one = 1;
    static_cast<void>(!write(event.Get(), &one, sizeof(one))); // it fails if it was already raised
}

/// The data of the kernel about a datagram.
struct Notes
{
    std::int64_t arrival = 0;           ///< microseconds of the real time clock
    std::optional<std::uint32_t> drops; ///< dropped datagrams of the socket so far
};

std::int64_t RealTime()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

Notes NotesOf(msghdr& message)
{
    Notes notes{RealTime(), {}};
    for (cmsghdr* note = CMSG_FIRSTHDR(&message); note != nullptr; note = CMSG_NXTHDR(&message, note)) {
        if (note->cmsg_level == SOL_SOCKET && note->cmsg_type == SO_RXQ_OVFL) {
            std::uint32_t drops = 0;
            std::memcpy(&drops, CMSG_DATA(note), sizeof(drops));
            notes.drops = drops;
        } else if (note->cmsg_level == SOL_SOCKET && note->cmsg_type == SCM_TIMESTAMPNS) {
            timespec time{};
            std::memcpy(&time, CMSG_DATA(note), sizeof(time));
            notes.arrival = std::int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1000;
        }
    }
    return notes;
}

/// The next datagram; nullopt if none has arrived.
std::optional<std::pair<ByteView, Notes>> Next(int socket, std::vector<std::uint8_t>& buffer)
{
    iovec part{buffer.data(), buffer.size()};
    alignas(cmsghdr) std::array<char, 256> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    ssize_t const size = recvmsg(socket, &message, MSG_DONTWAIT);
    if (size < 0) {
        return std::nullopt;
    }
    return std::pair(ByteView(buffer.data(), static_cast<std::size_t>(size)), NotesOf(message));
}

} // namespace

UdpReceiver::UdpReceiver(FileHandle socket)
    : m_socket(std::move(socket)), m_ready(NewEvent()), m_stop(NewEvent()), m_buffer(LargestDatagram)
{
    Discard();
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // only the main thread receives signals
    m_thread = std::thread([this] { Run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

UdpReceiver::~UdpReceiver()
{
    Raise(m_stop);
    m_thread.join();
}

void UdpReceiver::Discard()
{
    constexpr int Most = 100'000; // limit, in case datagrams arrive faster than they are discarded
    for (int i = 0; i < Most; ++i) {
        if (!Next(m_socket.Get(), m_buffer)) {
            return;
        }
    }
}

void UdpReceiver::Run()
{
    std::array<pollfd, 2> waited{pollfd{m_socket.Get(), POLLIN, 0}, pollfd{m_stop.Get(), POLLIN, 0}};
    for (;;) {
        poll(waited.data(), waited.size(), -1);
        if (waited[1].revents != 0) {
            return;
        }
        constexpr int Burst = 64; // then checks whether to stop
        for (int i = 0; i < Burst && Receive(); ++i) {
        }
    }
}

bool UdpReceiver::Receive()
{
    auto const next = Next(m_socket.Get(), m_buffer);
    if (!next) {
        return false;
    }
    auto const& [datagram, notes] = *next;
    bool isFirst = false;
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_drops = notes.drops.value_or(m_drops);
        m_dropsBefore = m_dropsBefore.value_or(m_drops);
        isFirst = m_waiting.Empty();
        if (m_waiting.Bytes() + datagram.Size() > MaxWaitingBytes) {
            ++m_noRoom;
        } else {
            m_waiting.Add(datagram, notes.arrival);
        }
    }
    if (isFirst) {
        Raise(m_ready);
    }
    return true;
}

void UdpReceiver::Acknowledge()
{
    std::uint64_t count = 0;
    static_cast<void>(!read(m_ready.Get(), &count, sizeof(count)));
}

void UdpReceiver::Take(Datagrams& taken)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    std::swap(taken, m_waiting);
}

std::uint64_t UdpReceiver::Lost() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_noRoom + static_cast<std::uint32_t>(m_drops - m_dropsBefore.value_or(m_drops));
}

} // namespace zviptv::sim
