// SPDX-License-Identifier: MIT
#include "TraceOptions.h"
#include "output/Words.h"

namespace zviptv::ctl {

namespace {

bool MatchesText(std::string const& wanted, std::string const& text)
{
    return wanted.empty() || ToLower(wanted) == ToLower(text);
}

bool MatchesApplication(trace::Application const& application, std::string const& wanted)
{
    return wanted == application.busName || wanted == application.name || wanted == application.program ||
           wanted == std::to_string(application.processId);
}

} // namespace

bool EventFilter::Passes(trace::Event const& event) const
{
    bool const isOfApplication = application.empty() || event.application == nullptr ||
                                 MatchesApplication(*event.application, application);
    return isOfApplication && MatchesText(endpoint, event.endpoint) && MatchesText(function, event.function);
}

} // namespace zviptv::ctl
