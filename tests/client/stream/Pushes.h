// SPDX-License-Identifier: MIT
#pragma once

#include "client/stream/PushHub.h"

#include "StreamBuilder.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

using Fields = std::map<std::string, std::string>;

/// A message with these entries.
inline client::Push PushOf(Fields fields)
{
    auto const owned = std::make_shared<Fields const>(std::move(fields));
    return {owned, [owned](char const* key) {
                auto const found = owned->find(key);
                return found == owned->end() ? std::string_view() : std::string_view(found->second);
            }};
}

inline Fields PesFields(std::string const& pid, std::string const& data, std::string const& type = "2")
{
    return {{"functionname", "PESCB"},
            {"pesType", type},
            {"pesPID", pid},
            {"pesPTS", "0"},
            {"pesDataSize", std::to_string(data.size())},
            {"pesData", data}};
}

inline Fields CaptionFields(std::string const& data, std::string const& type = "4")
{
    return {{"functionname", "CaptionCB"},
            {"captionType", type},
            {"captionDataSize", std::to_string(data.size())},
            {"captionData", data}};
}

/// Records the requests and reports of subscriptions.
class FakeLink : public client::PushLink
{
public:
    void Request(client::PushKind kind, bool on) override
    {
        requests.push_back(std::string(kind == client::PushKind::Pes ? "pes" : "caption") +
                           (on ? " on" : " off"));
    }

    void ReportUnreadable(char const* function, char const* key, std::string const& message) override
    {
        reports.push_back(std::string(function) + " " + key + ": " + message);
    }

    void Guard(char const* function, std::function<void()> const& code) override
    {
        try {
            code();
        } catch (std::exception const& error) {
            reports.push_back(std::string(function) + " threw: " + error.what());
        }
    }

    std::vector<std::string> requests;
    std::vector<std::string> reports;
};

} // namespace zviptv::test
