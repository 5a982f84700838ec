// SPDX-License-Identifier: MIT
#include "ReplyDelivery.h"

#include <memory>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr char InjectedError[] = "org.corvel.zviptvapi.Error.Injected";
constexpr char InjectedText[] = "An error as asked for with --fault";

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

} // namespace

std::string Deliver(std::optional<CDeferredReply>& later, CMessageBuffer const& reply, Damage const& damage,
                    MainLoop& loop)
{
    bool const isLate = damage.Delay().count() > 0;
    if (!later && (damage.IsDrop() || damage.IsError() || isLate)) {
        later.emplace(CDeferredReply::Take());
    }
    if (later && damage.IsDrop()) {
        later->LeaveUnanswered();
    } else if (later) {
        auto const send = [answer = std::make_shared<CDeferredReply>(std::move(*later)), reply,
                           isError = damage.IsError()] {
            isError ? answer->SendError(InjectedError, InjectedText) : answer->Send(reply);
        };
        isLate ? loop.After(damage.Delay(), send) : send();
    }
    return NoteOf(damage);
}

} // namespace zviptv::sim
