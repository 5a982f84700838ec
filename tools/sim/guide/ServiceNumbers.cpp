// SPDX-License-Identifier: MIT
#include "guide/ServiceNumbers.h"

#include <charconv>
#include <functional>
#include <optional>
#include <set>
#include <string_view>

namespace zviptv::sim {

namespace {

using Numbers = std::vector<std::optional<std::uint64_t>>;
using Rule = std::function<std::optional<std::uint64_t>(GuideChannel const&)>;

/// The number before `end` or before the end of the text.
std::optional<std::uint64_t> LeadingNumber(std::string_view text, char end)
{
    std::uint64_t number = 0;
    auto const [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const ends = rest == text.data() + text.size() || (end != '\0' && *rest == end);
    return error == std::errc() && ends ? std::optional<std::uint64_t>(number) : std::nullopt;
}

std::optional<std::uint64_t> NumberInNames(GuideChannel const& channel)
{
    for (std::string const& name : channel.names) {
        if (auto const number = LeadingNumber(name, '\0')) {
            return number;
        }
    }
    return std::nullopt;
}

class Assignment
{
public:
    Assignment(std::vector<GuideChannel> const& channels, GuideWarnings& warnings)
        : m_channels(channels), m_warnings(warnings), m_numbers(channels.size())
    {
    }

    void Apply(Rule const& rule)
    {
        for (std::size_t i = 0; i < m_channels.size(); ++i) {
            if (auto const number = m_numbers[i] ? std::nullopt : rule(m_channels[i])) {
                Claim(i, *number);
            }
        }
    }

    std::vector<std::uint64_t> Finish()
    {
        std::vector<std::uint64_t> result;
        std::uint64_t next = 1;
        for (auto const& number : m_numbers) {
            while (!number && m_taken.count(next) != 0) {
                ++next;
            }
            result.push_back(number ? *number : next++);
        }
        return result;
    }

private:
    void Claim(std::size_t channel, std::uint64_t number)
    {
        if (m_taken.insert(number).second) {
            m_numbers[channel] = number;
        } else {
            m_warnings.Add(0, "channel \"" + m_channels[channel].id + "\": service id " +
                                  std::to_string(number) + " belongs to another channel");
        }
    }

    std::vector<GuideChannel> const& m_channels;
    GuideWarnings& m_warnings;
    Numbers m_numbers;
    std::set<std::uint64_t> m_taken;
};

} // namespace

std::vector<std::uint64_t> AssignServiceNumbers(std::vector<GuideChannel> const& channels,
                                                ServiceNames const& names, GuideWarnings& warnings)
{
    Assignment assignment(channels, warnings);
    assignment.Apply([&names](GuideChannel const& channel) -> std::optional<std::uint64_t> {
        for (std::string const& name : channel.names) {
            if (auto const known = names.find(name); known != names.end()) {
                return known->second;
            }
        }
        return std::nullopt;
    });
    assignment.Apply([](GuideChannel const& channel) { return LeadingNumber(channel.id, '.'); });
    assignment.Apply(NumberInNames);
    return assignment.Finish();
}

} // namespace zviptv::sim
