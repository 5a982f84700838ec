// SPDX-License-Identifier: MIT
#pragma once

#include "ProxyTest.h"
#include "WaitUntil.h"

#include <cstdlib>
#include <ctime>

namespace zviptv::test {

/// The number of a key that is made in the clock's second `second`.
inline int KeyOf(std::time_t second)
{
    auto seed = static_cast<unsigned int>(second);
    return rand_r(&seed);
}

/// Returns at the beginning of a second.
inline void WaitForNextSecond()
{
    std::time_t const start = std::time(nullptr);
    WaitUntil([start] { return std::time(nullptr) != start; }, std::chrono::seconds(5));
}

/// The data that subscriber `Number` of a kind received.
template <typename Record>
struct Delivery
{
    int subscriber;
    Record record;
    Record* address;
    void* userData;
};

/// The data that `Collect` received, in order. For one thread.
template <typename Record>
std::vector<Delivery<Record>>& Deliveries()
{
    static std::vector<Delivery<Record>> deliveries;
    return deliveries;
}

inline auto& pesDeliveries = Deliveries<ZVPESData>();
inline auto& captionDeliveries = Deliveries<ZVCaption>();

template <typename Record, int Number = 0>
void Collect(Record& record, void* userData)
{
    Deliveries<Record>().push_back({Number, record, &record, userData});
}

class SubscriberTest : public ServiceTest
{
protected:
    ~SubscriberTest() override
    {
        pesDeliveries.clear();
        captionDeliveries.clear();
    }

    void Notify(WireEntries const& entries)
    {
        m_service.Notify(m_service.ClientOf("IPTVDATASUBSCRIBER"), "IPTVDATASUBSCRIBER", entries);
    }

    /// Handles all earlier messages of the service.
    void Dispatch() { EXPECT_EQ(CallClient("IPTVDATASUBSCRIBER").kind, WireKind::Reply); }

    /// The entries of all requests for deliveries.
    std::vector<WireEntries> Requests() const
    {
        std::vector<WireEntries> requests;
        for (WireMessage const& request : m_service.Requests()) {
            requests.push_back(request.entries);
        }
        return requests;
    }

    static WireEntries Request(std::string const& function, std::string const& on)
    {
        return Entries({{"functionname", function}, {"handleID", "256"}, {"on", on}});
    }

    /// Subscribes in a second in which no other key was made.
    int SubscribeForPES(void (*callback)(ZVPESData&, void*))
    {
        int key = 0;
        bool subscribed = m_subscriber->SubscribeForPES(callback, nullptr, key);
        if (!subscribed) {
            WaitForNextSecond();
            subscribed = m_subscriber->SubscribeForPES(callback, nullptr, key);
        }
        EXPECT_TRUE(subscribed);
        return key;
    }

    int SubscribeForCaption(void (*callback)(ZVCaption&, void*))
    {
        int key = 0;
        EXPECT_TRUE(m_subscriber->SubscribeForCaption(callback, nullptr, key));
        return key;
    }

    IIPTVDataSubscriber* m_subscriber = CreateSubscriber();
};

inline WireEntries PESOf(std::string const& size, std::string const& data, std::string const& pid = "256",
                         std::string const& pts = "1", std::string const& type = "2")
{
    return Entries({{"functionname", "PESCB"},
                    {"pesDataSize", size},
                    {"pesType", type},
                    {"pesPID", pid},
                    {"pesPTS", pts},
                    {"pesData", data}});
}

inline WireEntries CaptionOf(std::string const& size, std::string const& data, std::string const& type = "5")
{
    return Entries({{"functionname", "CaptionCB"},
                    {"captionDataSize", size},
                    {"captionType", type},
                    {"captionData", data}});
}

inline std::string TextOf(std::vector<std::uint8_t> const& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

} // namespace zviptv::test
