#pragma once

#include <zviptv/ProxyDBusHelper.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace zviptv {

/// Makes `target` hold the first `announced` elements of `bytes`; what the value is too short for is zero.
/// A negative number, and more than one bus message can carry, is a std::length_error.
template <typename Element>
void TakeAnnounced(std::vector<Element>& target, int announced, std::string const& bytes)
{
    std::size_t const carried = static_cast<std::size_t>(CProxyDBusHelper::MAX_BODY_SIZE);
    std::size_t const most = std::max(carried, bytes.size()) / sizeof(Element);
    target.clear();
    if (announced < 0 || static_cast<std::size_t>(announced) > most) {
        throw std::length_error("vector::_M_default_append");
    }
    target.resize(static_cast<std::size_t>(announced));
    std::size_t const count = std::min(target.size() * sizeof(Element), bytes.size());
    if (count > 0) {
        std::memcpy(target.data(), bytes.data(), count);
    }
}

} // namespace zviptv
