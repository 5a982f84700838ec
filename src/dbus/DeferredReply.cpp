// SPDX-License-Identifier: MIT
#include <zviptv/DeferredReply.h>

#include "dbus/IncomingCall.h"
#include "dbus/WireSize.h"

#include <cstring>
#include <utility>

using zviptv::IncomingScope;

namespace {

/// Whether the bus accepts `text` as the text of an error.
bool IsErrorText(char const* text)
{
    if (text == nullptr || g_utf8_validate(text, -1, nullptr) == FALSE) {
        return false;
    }
    zviptv::WireSize size;
    size.AddString(std::strlen(text));
    return !size.IsTooLarge();
}

} // namespace

CDeferredReply::CDeferredReply(std::shared_ptr<GDBusMethodInvocation> call) : m_call(std::move(call)) {}

CDeferredReply::CDeferredReply(CDeferredReply&&) noexcept = default;

CDeferredReply& CDeferredReply::operator=(CDeferredReply&& other) noexcept
{
    CDeferredReply former(std::move(other));
    std::swap(m_call, former.m_call);
    return *this;
}

CDeferredReply::~CDeferredReply()
{
    if (m_call != nullptr) {
        zviptv::AnswerCallWithNothing(m_call.get());
    }
}

CDeferredReply CDeferredReply::Take()
{
    IncomingScope* const incoming = IncomingScope::Current();
    return CDeferredReply(zviptv::Share(incoming == nullptr ? nullptr : incoming->TakeInvocation()));
}

bool CDeferredReply::IsPending() const
{
    return m_call != nullptr;
}

void CDeferredReply::Send(CMessageBuffer const& reply)
{
    if (auto const call = std::exchange(m_call, nullptr)) {
        zviptv::AnswerCall(call.get(), reply);
    }
}

void CDeferredReply::LeaveUnanswered()
{
    m_call = nullptr;
}

void CDeferredReply::SendError(char const* name, char const* text)
{
    if (auto const call = std::exchange(m_call, nullptr)) {
        bool const validName = name != nullptr && g_dbus_is_interface_name(name) != FALSE;
        zviptv::AnswerCallWithError(call.get(), validName ? name : "org.freedesktop.DBus.Error.Failed",
                                    IsErrorText(text) ? text : "The service reports an error");
    }
}
