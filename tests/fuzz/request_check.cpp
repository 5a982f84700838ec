// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "common/ProtocolSchema.h"
#include "endpoints/RequestCheck.h"
#include "endpoints/RequestLog.h"

#include <set>

// The simulator's request log for requests with any entries.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

void CheckLine(std::string const& text)
{
    Require(IsUtf8(text) && !HasControls(text) && !HasLateControls(text), "the log's text is printable");
}

/// Whether the request contains a key twice.
bool HasDuplicateKeys(CMessageBuffer const& request)
{
    std::set<std::string> keys;
    for (int i = 0; i < request.Size(); ++i) {
        keys.insert(request.GetKey(i));
    }
    return keys.size() < static_cast<std::size_t>(request.Size());
}

void CheckWarnings(std::string const& endpoint, CMessageBuffer const& request, bool isFunctionOfEndpoint)
{
    bool isRepeated = false;
    for (std::string const& warning : sim::WarningsOf(endpoint, request)) {
        CheckLine(warning);
        isRepeated = isRepeated || warning.rfind("repeated key ", 0) == 0;
    }
    Require(isRepeated == (isFunctionOfEndpoint && HasDuplicateKeys(request)), "repeated keys are reported");
}

/// A request of a function of the description; entries may be missing, damaged or there twice.
CMessageBuffer ConsumeRequest(FuzzedDataProvider& input, Json::Value const& endpoint)
{
    Json::Value const& functions = endpoint["functions"];
    Json::Value const& function =
        functions[input.ConsumeIntegralInRange<Json::ArrayIndex>(0, functions.size() - 1)];
    std::vector<std::string> keys{"functionname", "handleID"};
    for (Json::Value const& described : function["in"]) {
        keys.push_back(described["key"].asString());
    }
    CMessageBuffer request;
    request.AddValue("functionname", function["name"].asCString());
    while (input.remaining_bytes() > 0) {
        bool const isStrange = input.ConsumeIntegralInRange(0, 7) == 0;
        std::string const key = isStrange
                                    ? input.ConsumeRandomLengthString(80)
                                    : keys[input.ConsumeIntegralInRange<std::size_t>(0, keys.size() - 1)];
        std::string const value = input.ConsumeRandomLengthString(400);
        CheckLine(sim::Shown(value));
        request.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return request;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Json::Value const& endpoints = ProtocolSchema()["endpoints"];
    Json::Value const& endpoint =
        endpoints[input.ConsumeIntegralInRange<Json::ArrayIndex>(0, endpoints.size() - 1)];
    std::string const other = input.ConsumeBool() ? input.ConsumeRandomLengthString(20) : "";
    CMessageBuffer const request = ConsumeRequest(input, endpoint);
    CheckWarnings(endpoint["type"].asString(), request, true);
    CheckWarnings(other, request, other == endpoint["type"].asString());
    return 0;
}
