#include "doctor/Judge.h"

#include "doctor/JudgeBus.h"
#include "doctor/JudgePolicy.h"
#include "doctor/JudgeService.h"
#include "doctor/JudgeVersion.h"

namespace zviptv::ctl::doctor {

std::vector<Finding> Judge(Facts const& facts)
{
    std::vector<Finding> findings;
    for (auto const check : {JudgeBus, JudgeAccounts, JudgePolicy, JudgeGroup, JudgeService, JudgeOwner,
                             JudgeLoop, JudgeProtocol, JudgeVersion}) {
        findings.push_back(check(facts));
    }
    return findings;
}

} // namespace zviptv::ctl::doctor
