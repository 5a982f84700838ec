#include "doctor/Doctor.h"

#include "doctor/Gather.h"
#include "doctor/Judge.h"
#include "doctor/Report.h"
#include "output/Answer.h"
#include "output/OutputFile.h"

namespace zviptv::ctl::doctor {

ExitCode Run(Names const& names, bool asJson)
{
    std::vector<Finding> const findings = Judge(Gather(names));
    WriteOutput(asJson ? Compact(JsonOf(findings)) + "\n" : TextOf(findings));
    return CodeOf(findings);
}

} // namespace zviptv::ctl::doctor
