// SPDX-License-Identifier: MIT
#include "FakeService.h"

#include <stdexcept>
#include <utility>

namespace zviptv::test {

namespace {

constexpr char const* ChannelBase = "/org/corvel/zviptvapi/DbusCommunication/";
constexpr char const* ChannelInterface = "org.corvel.zviptvapi.DbusCommunication";
constexpr char const* HelperName = "org.corvel.zviptvapi.dbushelper";
constexpr char const* HelperPath = "/org/corvel/zviptvapi/dbushelper";
constexpr char const* HelperInterface = "org.corvel.zviptvapi.dbushelper";

bool IsChannelPath(std::string const& path)
{
    return path.rfind(ChannelBase, 0) == 0;
}

WireAnswer WrongType(std::string const& signature)
{
    return WireAnswer::Error("org.freedesktop.DBus.Error.InvalidArgs", "unexpected signature " + signature);
}

} // namespace

std::string ChannelPath(std::string const& type)
{
    return ChannelBase + type;
}

FakeService::FakeService(std::string const& address, std::function<void(FakeService&)> const& script)
    : m_defaultAnswer(Entries({{"result_internal", "1"}})), m_peer(address)
{
    if (script) {
        script(*this);
    }
    Begin();
}

FakeService::FakeService() : m_defaultAnswer(Entries({{"result_internal", "1"}}))
{
    Begin();
}

void FakeService::Begin()
{
    m_partnerName = m_peer.Name();
    m_peer.SetHandler([this](WireMessage const& message) { return Handle(message); });
    if (!m_peer.OwnName(HelperName)) {
        throw std::runtime_error(std::string(HelperName) + " has an owner already");
    }
}

FakeService::~FakeService() = default;

void FakeService::Answer(std::string const& function, std::initializer_list<TextEntry> entries)
{
    AnswerWith(function, Entries(entries));
}

void FakeService::AnswerWith(std::string const& function, WireAnswer answer)
{
    AnswerBy(function, [answer = std::move(answer)](WireMessage const&) { return answer; });
}

void FakeService::AnswerBy(std::string const& function, CallHandler handler)
{
    std::lock_guard const lock(m_mutex);
    m_answers[function] = std::move(handler);
}

void FakeService::AnswerNothing(std::string const& function)
{
    AnswerWith(function, WireAnswer::Nothing());
}

void FakeService::AnswerError(std::string const& function, std::string const& errorName)
{
    AnswerWith(function, WireAnswer::Error(errorName, "scripted error"));
}

void FakeService::AnswerByDefault(WireAnswer answer)
{
    std::lock_guard const lock(m_mutex);
    m_defaultAnswer = std::move(answer);
}

void FakeService::SetPartnerName(std::string const& name)
{
    std::lock_guard const lock(m_mutex);
    m_partnerName = name;
}

void FakeService::AnswerAnnouncements(AnnouncementHandler handler)
{
    std::lock_guard const lock(m_mutex);
    m_announcementHandler = std::move(handler);
}

WireMessage FakeService::LastRequest() const
{
    auto const requests = m_requests.All();
    if (requests.empty()) {
        throw std::logic_error("the service has had no request");
    }
    return requests.back();
}

std::optional<WireMessage> FakeService::WaitForRequest(std::string const& function,
                                                       std::chrono::milliseconds timeout) const
{
    return m_requests.WaitFor(
        [&](WireMessage const& request) { return request.Value("functionname") == function; }, timeout);
}

std::vector<Announcement> FakeService::Announcements() const
{
    std::lock_guard const lock(m_mutex);
    return m_announcements;
}

std::optional<Announcement> FakeService::WaitForAnnouncement(std::string const& type, std::string const& add,
                                                             std::chrono::milliseconds timeout) const
{
    std::optional<Announcement> found;
    std::unique_lock lock(m_mutex);
    m_announced.wait_for(lock, timeout, [&] {
        for (auto const& announcement : m_announcements) {
            if (announcement.type == type && announcement.add == add) {
                found = announcement;
            }
        }
        return found.has_value();
    });
    return found;
}

std::string FakeService::ClientOf(std::string const& type) const
{
    auto const announcement = WaitForAnnouncement(type, "y", std::chrono::milliseconds(0));
    return announcement ? announcement->dbusname : std::string();
}

void FakeService::ClearRecords()
{
    m_requests.Clear();
    std::lock_guard const lock(m_mutex);
    m_announcements.clear();
}

void FakeService::Notify(std::string const& clientName, std::string const& type, WireEntries const& entries)
{
    NotifyRaw(clientName, type, entries);
}

void FakeService::NotifyRaw(std::string const& clientName, std::string const& type, WireBody const& body)
{
    if (clientName.empty()) {
        throw std::invalid_argument("a notification without destination would be a broadcast");
    }
    m_peer.Emit({clientName, ChannelPath(type), ChannelInterface, "SendSignal"}, body);
}

WireMessage FakeService::CallClient(std::string const& clientName, std::string const& type,
                                    WireBody const& body, CallOptions const& options)
{
    return m_peer.Call({clientName, ChannelPath(type), ChannelInterface, "Send"}, body, options);
}

WireAnswer FakeService::Handle(WireMessage const& message)
{
    if (message.path == HelperPath && message.interface == HelperInterface &&
        message.member == "SendSignal") {
        return HandleAnnouncement(message);
    }
    if (IsChannelPath(message.path) && message.interface == ChannelInterface && message.member == "Send") {
        return HandleRequest(message);
    }
    return WireAnswer::Error("org.freedesktop.DBus.Error.UnknownMethod",
                             message.path + " has no " + message.interface + "." + message.member);
}

WireAnswer FakeService::HandleAnnouncement(WireMessage const& message)
{
    if (message.signature != "a(ss)") {
        return WrongType(message.signature);
    }
    Announcement const announcement{message.Value("dbusname"), message.Value("type"), message.Value("add"),
                                    message};
    std::unique_lock lock(m_mutex);
    m_announcements.push_back(announcement);
    m_announced.notify_all();
    auto const handler = m_announcementHandler;
    auto const partner = m_partnerName;
    lock.unlock();
    return handler ? handler(announcement) : WireAnswer(Pairs({{"dbusname", partner}}));
}

WireAnswer FakeService::HandleRequest(WireMessage const& message)
{
    if (message.signature != "a{sv}") {
        return WrongType(message.signature);
    }
    m_requests.Add(message);
    std::unique_lock lock(m_mutex);
    auto const found = m_answers.find(message.Value("functionname"));
    if (found == m_answers.end()) {
        return m_defaultAnswer;
    }
    auto const handler = found->second;
    lock.unlock();
    return handler(message);
}

} // namespace zviptv::test
