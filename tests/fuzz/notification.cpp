// SPDX-License-Identifier: MIT
#include "ScriptedChannel.h"
#include "Variants.h"
#include "dbus/PeerMessage.h"
#include "proxy/IPTVDataSubscriberProxy.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

// Passes any notification to a subscriber with several callbacks.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

struct Received
{
    int calls[2] = {0, 0};
    void const* record = nullptr;
};

Received got;
std::string announced; ///< under the key of the data
std::string carried;

/// The received bytes, padded with zeros to the announced size.
void CheckData(std::vector<std::uint8_t> const& data)
{
    Require(data.size() == static_cast<std::size_t>(std::stoi(announced)), "as much as announced");
    std::size_t const common = std::min(data.size(), carried.size());
    Require(common == 0 || std::memcmp(data.data(), carried.data(), common) == 0, "the bytes that came");
    Require(std::all_of(data.begin() + static_cast<std::ptrdiff_t>(common), data.end(),
                        [](std::uint8_t byte) { return byte == 0; }),
            "zeros behind them");
}

template <typename Record, int Number>
void Take(Record& record, void* userData)
{
    Require(userData == nullptr, "no user data");
    Require(got.record == nullptr || got.record == &record, "the same record for all");
    if (got.record == nullptr) {
        CheckData(record.data);
        record.data.push_back(1); // theirs to change
    }
    got.calls[Number] += 1;
    got.record = &record;
}

/// A key cannot be made twice in a second.
template <typename Subscribe>
void SubscribeWithRetries(Subscribe subscribe)
{
    int key = 0;
    while (!subscribe(key)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

CIPTVDataSubscriberProxy& Subscriber()
{
    static CIPTVDataSubscriberProxy* const subscriber = [] {
        ReadLog();
        auto* const made = CIPTVDataSubscriberProxy::Instance({IPTV_PROFILE_DEFAULT, 0});
        SubscribeWithRetries(
            [=](int& key) { return made->SubscribeForPES(Take<ZVPESData, 0>, nullptr, key); });
        SubscribeWithRetries(
            [=](int& key) { return made->SubscribeForCaption(Take<ZVCaption, 0>, nullptr, key); });
        SubscribeWithRetries(
            [=](int& key) { return made->SubscribeForPES(Take<ZVPESData, 1>, nullptr, key); });
        SubscribeWithRetries(
            [=](int& key) { return made->SubscribeForCaption(Take<ZVCaption, 1>, nullptr, key); });
        return made;
    }();
    return *subscriber;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Subscriber();
    FuzzedDataProvider input(data, size);
    Owned<GVariant> const body = input.ConsumeBool()
                                     ? SinkFloating(g_variant_new("(@a{sv})", NewDictionary(input)))
                                     : ConsumeUntrusted(input);
    CMessageBuffer message;
    Error error;
    bool const isMessage = DecodePeerMessage(body.get(), message, error);
    bool const isPes = message.GetValue("functionname") == "PESCB";
    bool const isCaption = message.GetValue("functionname") == "CaptionCB";
    announced = message.GetValue(isPes ? "pesDataSize" : "captionDataSize");
    carried = message.GetValue(isPes ? "pesData" : "captionData");
    got = Received();
    bool failed = false;
    try {
        Notify(body.get());
    } catch (std::logic_error const&) { // invalid_argument, out_of_range, length_error
        failed = true;
    }
    int const expected = isMessage && (isPes || isCaption) && !failed ? 1 : 0;
    Require(got.calls[0] == expected && got.calls[1] == expected, "to every subscriber once, or to none");
    Require(!failed || isPes || isCaption, "other notifications are passed over");
    return 0;
}
