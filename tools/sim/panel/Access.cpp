// SPDX-License-Identifier: MIT
#include "Access.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace zviptv::sim {

namespace {

constexpr char Scheme[] = "http://";

std::string DrawToken()
{
    std::array<std::uint8_t, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category(), "cannot draw a token for the panel");
    }
    std::string token;
    for (std::uint8_t const byte : bytes) {
        constexpr char digits[] = "0123456789abcdef";
        constexpr unsigned halfByte = 4;
        token += digits[byte >> halfByte];
        token += digits[byte & 0xF];
    }
    return token;
}

/// Compares in constant time, so that the time does not reveal where the texts differ.
bool BeginsWith(std::string const& text, std::string const& beginning)
{
    unsigned difference = text.size() < beginning.size() ? 1 : 0;
    for (std::size_t i = 0; i < beginning.size(); ++i) {
        char const letter = i < text.size() ? text[i] : '\0';
        difference |= static_cast<unsigned>(letter ^ beginning[i]);
    }
    return difference == 0;
}

} // namespace

Access::Access() : m_root("/" + DrawToken() + "/") {}

bool Access::IsOwnHost(std::string const& host) const
{
    return host == "127.0.0.1:" + m_port || host == "localhost:" + m_port;
}

bool Access::Allows(std::string const& path, SoupMessageHeaders* heads) const
{
    char const* const host = soup_message_headers_get_one(heads, "Host");
    char const* const origin = soup_message_headers_get_one(heads, "Origin");
    if (!BeginsWith(path, m_root) || host == nullptr || !IsOwnHost(host)) {
        return false;
    }
    std::string const sender = origin == nullptr ? std::string(Scheme) + host : origin;
    return sender.rfind(Scheme, 0) == 0 && IsOwnHost(sender.substr(sizeof(Scheme) - 1));
}

} // namespace zviptv::sim
