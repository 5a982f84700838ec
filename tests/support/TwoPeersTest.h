// SPDX-License-Identifier: MIT
#pragma once

#include "PrivateBus.h"
#include "WirePeer.h"

#include <gtest/gtest.h>

#include <string>

namespace zviptv::test {

/// Two peers on a bus.
class TwoPeersTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    WirePeer m_one;
    WirePeer m_two;

    WireTarget Two(std::string const& member = "Send") const
    {
        return {m_two.Name(), "/org/corvel/object", "org.corvel.interface", member};
    }
};

} // namespace zviptv::test
