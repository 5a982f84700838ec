#include <zviptv/DeferredReply.h>

#include "dbus/IncomingCall.h"

#include <utility>

using zviptv::IncomingScope;

CDeferredReply::CDeferredReply(std::shared_ptr<GDBusMethodInvocation> call) : m_call(std::move(call)) {}

CDeferredReply::CDeferredReply(CDeferredReply&&) noexcept = default;
CDeferredReply& CDeferredReply::operator=(CDeferredReply&&) noexcept = default;
CDeferredReply::~CDeferredReply() = default;

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

void CDeferredReply::SendError(char const* name, char const* text)
{
    if (auto const call = std::exchange(m_call, nullptr)) {
        bool const validName = name != nullptr && g_dbus_is_interface_name(name) != FALSE;
        bool const validText = text != nullptr && g_utf8_validate(text, -1, nullptr) != FALSE;
        zviptv::AnswerCallWithError(call.get(), validName ? name : "org.freedesktop.DBus.Error.Failed",
                                    validText ? text : "The service reports an error");
    }
}
