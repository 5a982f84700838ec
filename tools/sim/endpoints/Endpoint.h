// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/CommonNative.h>
#include <zviptv/MessageBuffer.h>

#include <functional>
#include <string>
#include <utility>

namespace zviptv::sim {

/// One endpoint of the service: passes the calls of applications to a function.
class Endpoint final : public CCommonNative
{
public:
    using Handler = std::function<CMessageBuffer(CMessageBuffer&)>;

    Endpoint(std::string const& typeWord, Handler handler)
        : CCommonNative(typeWord), m_handler(std::move(handler))
    {
    }

private:
    CMessageBuffer t_HandleMessage(CMessageBuffer& request) override { return m_handler(request); }

    Handler m_handler;
};

} // namespace zviptv::sim
