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

/// Knows what each function's request has to say, and where to, so that no client gets away with less. A
/// client's first request of each function is compared; the others cost no more than a look.
class Checks
{
public:
    /// `read` makes the entries of the request.
    bool Accept(std::string const& sender, std::string_view function, std::string_view path,
                std::function<RequestEntries()> const& read);

private:
    std::set<std::string, std::less<>> m_accepted;
};

} // namespace zviptv::bench
