// SPDX-License-Identifier: MIT
#include "Exchanges.h"

#include <utility>

namespace zviptv::trace {

namespace {

/// The default limit of a system bus: 128 calls of each of 256 connections of a user.
constexpr std::size_t MaxOpen = 32'768;

std::string KeyOf(std::string_view caller, std::uint32_t serial)
{
    return std::string(caller) + ' ' + std::to_string(serial);
}

} // namespace

void Exchanges::Add(std::string_view caller, std::uint32_t serial, Exchange exchange)
{
    std::string key = KeyOf(caller, serial);
    m_open.insert_or_assign(key, std::move(exchange));
    m_order.push_back(std::move(key));
    while (!m_order.empty() && (m_order.size() > MaxOpen || m_open.count(m_order.front()) == 0)) {
        m_forgotten += m_open.erase(m_order.front());
        m_order.pop_front();
    }
}

std::optional<Exchange> Exchanges::Take(std::string_view caller, std::uint32_t replySerial)
{
    auto const found = m_open.find(KeyOf(caller, replySerial));
    if (found == m_open.end()) {
        return std::nullopt;
    }
    std::optional<Exchange> exchange(std::move(found->second));
    m_open.erase(found);
    return exchange;
}

} // namespace zviptv::trace
