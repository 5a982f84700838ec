// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "WirePeer.h"

#include <condition_variable>
#include <initializer_list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::test {

/// One "SendSignal" call on the helper bus. Values of missing keys are empty.
struct Announcement
{
    std::string dbusname;
    std::string type;
    std::string add;
    /// The received call, with every pair in order.
    WireMessage message;
};

/// The service side of the system on one connection: owns "org.corvel.zviptvapi.dbushelper", answers
/// announcements there and "Send" calls below "/org/corvel/zviptvapi/DbusCommunication/". All methods
/// may be called from any thread; functions given as answers run on the peer's thread.
class FakeService
{
public:
    using AnnouncementHandler = std::function<WireAnswer(Announcement const&)>;

    /// Throws std::runtime_error if the bus is not there or the name has an owner already.
    /// `script` gives the answers before anybody can ask.
    explicit FakeService(std::string const& address, std::function<void(FakeService&)> const& script = {});
    /// On DBUS_SYSTEM_BUS_ADDRESS.
    FakeService();
    ~FakeService();
    FakeService(FakeService const&) = delete;
    FakeService& operator=(FakeService const&) = delete;

    std::string const& Name() const { return m_peer.Name(); }
    /// For everything else; its handler belongs to the service.
    WirePeer& Peer() { return m_peer; }

    /// Answer("MuteAudio", {{"result_internal", "1"}}): the reply to requests with this "functionname".
    void Answer(std::string const& function, std::initializer_list<TextEntry> entries);
    /// Any answer: an error, nothing, a raw body, and each of them delayed.
    void AnswerWith(std::string const& function, WireAnswer answer);
    /// An answer computed from the request.
    void AnswerBy(std::string const& function, CallHandler handler);
    void AnswerNothing(std::string const& function);
    void AnswerError(std::string const& function, std::string const& errorName = "org.corvel.test.Failed");
    /// The answer for every function without a separate answer; {"result_internal", "1"} at first.
    void AnswerByDefault(WireAnswer answer);

    /// The "dbusname" given to announcements; the own unique name at first.
    void SetPartnerName(std::string const& name);
    /// Any other answer to announcements.
    void AnswerAnnouncements(AnnouncementHandler handler);

    /// Requests on peer channels, oldest first; a request is listed before it is answered.
    std::vector<WireMessage> Requests() const { return m_requests.All(); }
    /// Throws std::logic_error if there was none.
    WireMessage LastRequest() const;
    std::optional<WireMessage> WaitForRequest(std::string const& function,
                                              std::chrono::milliseconds timeout = patience) const;
    std::vector<Announcement> Announcements() const;
    std::optional<Announcement> WaitForAnnouncement(std::string const& type, std::string const& add,
                                                    std::chrono::milliseconds timeout = patience) const;
    /// The "dbusname" of the latest announcement of this type with "add" = "y"; empty if none.
    std::string ClientOf(std::string const& type) const;
    /// Forgets requests and announcements.
    void ClearRecords();

    /// Emits "SendSignal" to the client's channel of this type.
    void Notify(std::string const& clientName, std::string const& type, WireEntries const& entries);
    /// The same with any body.
    void NotifyRaw(std::string const& clientName, std::string const& type, WireBody const& body);
    /// Calls "Send" on the client's channel of this type.
    WireMessage CallClient(std::string const& clientName, std::string const& type, WireBody const& body,
                           CallOptions const& options = {});

    /// Drops the connection, as a crash of the service would.
    void Vanish() { m_peer.Disconnect(); }

private:
    void Begin();
    WireAnswer Handle(WireMessage const& message);
    WireAnswer HandleAnnouncement(WireMessage const& message);
    WireAnswer HandleRequest(WireMessage const& message);

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_announced;
    std::map<std::string, CallHandler> m_answers;
    WireAnswer m_defaultAnswer;
    AnnouncementHandler m_announcementHandler;
    std::string m_partnerName;
    std::vector<Announcement> m_announcements;
    MessageLog m_requests;
    /// Last, so that its thread ends before anything it uses.
    WirePeer m_peer;
};

/// "/org/corvel/zviptvapi/DbusCommunication/" + type
std::string ChannelPath(std::string const& type);

} // namespace zviptv::test
