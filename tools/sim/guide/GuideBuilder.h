// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideProblems.h"
#include "guide/ProgrammeDraft.h"
#include "guide/ServiceNumbers.h"

#include <memory>
#include <unordered_map>

namespace zviptv::sim {

/// Collects channels and programmes and makes a guide of them.
class GuideBuilder
{
public:
    /// A second channel of the same id only adds its names.
    void AddChannel(GuideChannel channel);

    /// A channel that nobody added becomes one without names.
    void AddProgramme(ProgrammeDraft draft);

    /// Once only. `serviceNames` as for AssignServiceNumbers.
    std::shared_ptr<Guide const> Build(ServiceNames const& serviceNames, GuideWarnings& warnings);

private:
    std::size_t ChannelNumber(std::string const& id);

    std::vector<GuideChannel> m_channels;
    std::vector<GuideService> m_services; ///< of the channels
    std::unordered_map<std::string, std::size_t> m_numbers;
};

} // namespace zviptv::sim
