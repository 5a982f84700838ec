// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Context.h"

#include <zviptv/client/Failure.h>

#include <array>
#include <functional>

namespace zviptv::client {

class Link;

/// Asks the service to push, and asks again whenever it has forgotten that or could not be asked. For the
/// context's thread.
class PushRequests
{
public:
    /// `link` has to live as long.
    explicit PushRequests(Link& link);

    /// What is pushed from now on, by the function that asks for it: "requestPESCB" or "requestCaptionCB".
    void SetWanted(char const* function, bool isWanted);

    /// The service knows nothing of former requests.
    void Forget();
    /// The service may be asked.
    void Resume();
    /// No request is made any more.
    void End();

private:
    struct Subject
    {
        char const* function;
        bool isWanted = false;
        bool isTold = false; ///< the service has been asked to push, and not to stop
        bool isUnderWay = false;
        bool isReported = false; ///< the application knows that it fails
    };

    void Ask(Subject& subject);
    void OnAnswer(Subject& subject, bool on, Failure const* failure);

    Link& m_link;
    bool m_isEnded = false;
    std::array<Subject, 2> m_subjects;
    Timer m_retry;
};

} // namespace zviptv::client
