// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideProblems.h"
#include "guide/ProgrammeDraft.h"
#include "guide/ServiceNumbers.h"

#include <memory>
#include <unordered_map>

namespace zviptv::sim {

/// Collects channels and programmes and makes a guide from them.
class GuideBuilder
{
public:
    /// Adds a channel; a second one with the same id only adds its names.
    void AddChannel(GuideChannel channel);

    /// Adds a programme; if its channel was not added, adds the channel without names.
    void AddProgramme(ProgrammeDraft draft);

    /// Makes the guide; call it only once. `serviceNames` as for AssignServiceNumbers.
    std::shared_ptr<Guide const> Build(ServiceNames const& serviceNames, GuideWarnings& warnings);

private:
    std::size_t ChannelNumber(std::string const& id);

    std::vector<GuideChannel> m_channels;
    std::vector<GuideService> m_services; ///< of the channels
    std::unordered_map<std::string, std::size_t> m_numbers;
};

} // namespace zviptv::sim
