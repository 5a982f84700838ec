#include "ServiceFunctions.h"

#include "BroadcastDataService.h"
#include "PlayerControlService.h"
#include "ProgramGuideService.h"

namespace zviptv::sim {

std::vector<std::string> ServiceFunctions()
{
    std::vector<std::string> functions = PlayerControlService::Functions();
    for (auto const& more :
         {BroadcastDataService::Functions(),
          std::vector<std::string>{protocol::function::RequestPESCB, protocol::function::RequestCaptionCB},
          ProgramGuideService::Functions()}) {
        functions.insert(functions.end(), more.begin(), more.end());
    }
    return functions;
}

} // namespace zviptv::sim
