// SPDX-License-Identifier: MIT
#include "doctor/Doctor.h"

#include "doctor/Gather.h"
#include "doctor/JudgeBus.h"
#include "doctor/JudgeEndpoints.h"
#include "doctor/JudgePolicy.h"
#include "doctor/JudgeService.h"
#include "doctor/JudgeVersion.h"
#include "doctor/Report.h"
#include "output/Answer.h"
#include "output/OutputFile.h"

namespace zviptv::ctl::doctor {

std::vector<Finding> Judge(Facts const& facts)
{
    std::vector<Finding> findings;
    for (auto const check : {JudgeBus, JudgeAccounts, JudgePolicy, JudgeGroup, JudgeService, JudgeOwner,
                             JudgeLoop, JudgeProtocol, JudgeEndpoints, JudgeRequests, JudgeVersion}) {
        findings.push_back(check(facts));
    }
    return findings;
}

ExitCode Run(Names const& names, bool asJson)
{
    std::vector<Finding> const findings = Judge(Gather(names));
    WriteOutput(asJson ? Compact(JsonOf(findings)) + "\n" : TextOf(findings));
    return CodeOf(findings);
}

} // namespace zviptv::ctl::doctor
