#include "doctor/Doctor.h"

#include "doctor/Gather.h"
#include "doctor/Report.h"
#include "output/Answer.h"
#include "output/OutputFile.h"

namespace zviptv::ctl::doctor {

ExitCode Run(Names const& names, bool asJson)
{
    std::vector<Finding> const findings = Judge(Gather(names));
    std::string const text = asJson ? Compact(JsonOf(findings)) + "\n" : TextOf(findings);
    OutputFile out("-");
    out.Write(text.data(), text.size());
    out.Close();
    return CodeOf(findings);
}

} // namespace zviptv::ctl::doctor
