// SPDX-License-Identifier: MIT
#include "ReplyDelivery.h"

#include <memory>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr char InjectedError[] = "org.corvel.zviptvapi.Error.Injected";
constexpr char InjectedText[] = "error requested with --fault";

} // namespace

std::string NoteOf(Damage const& damage)
{
    std::string note;
    auto const add = [&note](std::string const& word) { note += (note.empty() ? "" : " ") + word; };
    if (damage.IsDrop()) {
        add("drop");
    } else if (damage.Delay().count() > 0) {
        add("delay:" + std::to_string(damage.Delay().count()));
    }
    if (damage.IsError()) {
        add("error");
    }
    if (!damage.TakesEffect()) {
        add("effect=no");
    }
    return note;
}

Delivery DeliveryOf(Damage const& damage)
{
    Delivery delivery;
    delivery.delay = damage.Delay();
    delivery.isDropped = damage.IsDrop();
    if (damage.IsError()) {
        delivery.errorName = InjectedError;
        delivery.errorText = InjectedText;
    }
    return delivery;
}

void Deliver(std::optional<CDeferredReply>& later, CMessageBuffer const& reply, Delivery const& delivery,
             MainLoop& loop)
{
    if (!later && !delivery.IsPlain()) {
        later.emplace(CDeferredReply::Take());
    }
    if (later && delivery.isDropped) {
        later->LeaveUnanswered();
    } else if (later) {
        auto const send = [answer = std::make_shared<CDeferredReply>(std::move(*later)), reply, delivery] {
            delivery.errorName.empty()
                ? answer->Send(reply)
                : answer->SendError(delivery.errorName.c_str(), delivery.errorText.c_str());
        };
        delivery.delay.count() > 0 ? loop.After(delivery.delay, send) : send();
    }
}

} // namespace zviptv::sim
