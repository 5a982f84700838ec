// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Television.h>

#include <zviptv/IPTVServiceAPI.h>

#include <cstdlib>
#include <string>

namespace zviptv::test {

/// Makes the kit use the zviptv-sim of the build.
inline void FindSimulator()
{
    setenv("PATH", (std::string(ZVIPTV_SIM_FOLDER ":") + std::getenv("PATH")).c_str(), 1);
}

inline simulated::Options KitOptions()
{
    FindSimulator();
    return {ZVIPTV_SAMPLE_FILE, ZVIPTV_SAMPLE_GUIDE, {"--loop", "--time", "1774735200"}};
}

/// A new television for each test, and an application in the same process.
class KitTest : public testing::Test
{
protected:
    KitTest() : m_television(KitOptions()) {}
    ~KitTest() override
    {
        CIPTVServiceAPI::DestroyPlayerControl();
        CIPTVServiceAPI::DestroyBroadcastData();
    }

    static bool Mute(bool on)
    {
        IPlayerControl* player = nullptr;
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
        return player != nullptr && player->MuteAudio(on);
    }

    simulated::Television m_television;
};

} // namespace zviptv::test
