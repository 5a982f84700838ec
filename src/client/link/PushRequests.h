// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Context.h"

#include <zviptv/client/Failure.h>

#include <array>
#include <functional>

namespace zviptv::client {

class Link;

/// Requests pushes from the service, again after each restart and each failed attempt. For the
/// context's thread.
class PushRequests
{
public:
    /// `link` must live as long as this object.
    explicit PushRequests(Link& link);

    /// Starts or ends the pushes that `function` requests: "requestPESCB" or "requestCaptionCB".
    void SetWanted(char const* function, bool isWanted);

    /// Reports that the service has lost all former requests.
    void Forget();
    /// Reports that the service accepts requests.
    void Resume();
    /// Stops all requests.
    void End();

private:
    struct Subject
    {
        char const* function;
        bool isWanted = false;
        bool isRequested = false; ///< the service has been asked to push, and not to stop
        bool isUnderWay = false;
        bool isReported = false; ///< the application got the failure
    };

    void Ask(Subject& subject);
    void OnAnswer(Subject& subject, bool on, Failure const* failure);

    Link& m_link;
    bool m_isEnded = false;
    std::array<Subject, 2> m_subjects;
    Timer m_retry;
};

} // namespace zviptv::client
