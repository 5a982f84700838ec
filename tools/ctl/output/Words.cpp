// SPDX-License-Identifier: MIT
#include "Words.h"

#include <algorithm>
#include <utility>

namespace zviptv::ctl {

namespace {

constexpr std::size_t MaxSuggestions = 3;

/// The number of letters to insert, remove or change to turn one word into the other.
std::size_t EditDistance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t column = 0; column <= right.size(); ++column) {
        row[column] = column;
    }
    for (std::size_t line = 1; line <= left.size(); ++line) {
        std::size_t diagonal = row[0];
        row[0] = line;
        for (std::size_t column = 1; column <= right.size(); ++column) {
            std::size_t const change = diagonal + (left[line - 1] == right[column - 1] ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({change, row[column] + 1, row[column - 1] + 1});
        }
    }
    return row[right.size()];
}

} // namespace

std::string ToLower(std::string_view text)
{
    std::string lower(text);
    for (char& letter : lower) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return lower;
}

std::string Join(std::vector<std::string> const& parts, std::string_view separator)
{
    std::string joined;
    for (std::string const& part : parts) {
        joined += joined.empty() ? "" : separator;
        joined += part;
    }
    return joined;
}

std::string Counted(unsigned long long count, std::string const& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::vector<std::string> NearWords(std::string_view word, std::vector<std::string> const& candidates)
{
    std::string const wanted = ToLower(word);
    if (wanted.empty()) {
        return {};
    }
    std::vector<std::pair<std::size_t, std::string>> near;
    for (std::string const& candidate : candidates) {
        std::string const name = ToLower(candidate);
        if (name == wanted) {
            return {candidate};
        }
        // A name that begins with the word counts like one typing error. A name that contains it is a
        // candidate, too.
        std::size_t const place = wanted.size() > 2 ? name.find(wanted) : std::string::npos;
        bool const isPart = place != std::string::npos;
        std::size_t const distance = place == 0 ? 1 : EditDistance(wanted, name);
        if (distance <= std::max<std::size_t>(2, wanted.size() / 3) || isPart) {
            near.emplace_back(distance, candidate);
        }
    }
    std::stable_sort(near.begin(), near.end(),
                     [](auto const& left, auto const& right) { return left.first < right.first; });
    std::vector<std::string> names;
    for (auto const& [distance, name] : near) {
        if (names.size() < MaxSuggestions && std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace zviptv::ctl
