// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace zviptv::bench {

/// A request's entries by key.
using RequestEntries = std::map<std::string, std::string, std::less<>>;

/// Compares requests with the protocol, entries and path, so that every client sends complete requests. Only
/// the first request of each function of a client is compared; later ones cost one look-up.
class Checks
{
public:
    /// `read` returns the entries of the request.
    bool Accept(std::string const& sender, std::string_view function, std::string_view path,
                std::function<RequestEntries()> const& read);

private:
    std::set<std::string, std::less<>> m_accepted;
};

} // namespace zviptv::bench
