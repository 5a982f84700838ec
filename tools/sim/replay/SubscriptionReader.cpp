// SPDX-License-Identifier: MIT
#include "SubscriptionReader.h"

#include "RequestKey.h"

#include <zviptv/Protocol.h>

namespace zviptv::sim {

namespace function = protocol::function;

namespace {

std::string SubscriptionFor(std::string const& notification)
{
    return notification == function::PESCB       ? function::RequestPESCB
           : notification == function::CaptionCB ? function::RequestCaptionCB
                                                 : "";
}

} // namespace

bool SubscriptionReader::IsSubscription(std::string const& function)
{
    return function == function::RequestPESCB || function == function::RequestCaptionCB;
}

void SubscriptionReader::TakeRequest(Line const& line)
{
    m_known.insert(line);
    m_open.erase(line);
}

void SubscriptionReader::Begin(Line const& line, std::chrono::microseconds now)
{
    auto& items = m_recording.pushes[line.second].items;
    m_open[line] = {now, items.size()};
    items.push_back({m_recording.lives.size() - 1, {}});
}

void SubscriptionReader::End(std::string const& application)
{
    TakeRequest({application, function::RequestPESCB});
    TakeRequest({application, function::RequestCaptionCB});
}

void SubscriptionReader::TakePush(Line const& notification, std::chrono::microseconds now,
                                  std::string_view bytes)
{
    Line const line(notification.first, SubscriptionFor(notification.second));
    if (line.second.empty()) {
        return;
    }
    if (m_known.insert(line).second) {
        Begin(line, std::chrono::microseconds(0));
    }
    auto const open = m_open.find(line);
    if (open == m_open.end()) {
        return; // sent before the service learned of the end of the subscription
    }
    m_recording.pushes[line.second].items[open->second.index].pushes.push_back(
        {now - open->second.begin, m_recording.spool.Add(bytes)});
    m_hasPushes = true;
}

void SubscriptionReader::Finish()
{
    for (auto const& [function, pushes] : m_recording.pushes) {
        CMessageBuffer request;
        request.AddValue(protocol::key::FunctionName, function.c_str());
        request.AddValue(protocol::key::On, "1");
        auto& items = m_recording.answers[KeyOf(protocol::type::DataSubscriber, request).anyHandle].items;
        if (items.empty()) {
            RecordedAnswer granted;
            granted.kind = RecordedAnswer::Kind::Granted;
            items.push_back(granted);
        }
    }
}

} // namespace zviptv::sim
