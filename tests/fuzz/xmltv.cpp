// SPDX-License-Identifier: MIT
#include "GuideChecks.h"
#include "guide/GuideProblems.h"
#include "guide/Rating.h"
#include "guide/XmltvTime.h"

#include <algorithm>

// Any document as XMLTV. Its last byte is the size of the pieces in which it is read.

using namespace zviptv::sim;
using namespace zviptv::fuzz;

namespace {

LoadedGuide Read(std::string_view document, std::size_t piece)
{
    ServiceNames const names{{"News", 28106}, {"", 3}};
    return ReadGuide(
        "guide.xml",
        [&](char* buffer, std::size_t size) {
            std::size_t const count = std::min({size, piece, document.size()});
            std::copy_n(document.data(), count, buffer);
            document.remove_prefix(count);
            return count;
        },
        names);
}

/// The last line of the error, or nothing.
std::string Check(std::string_view document, std::size_t piece)
{
    try {
        LoadedGuide const loaded = Read(document, piece);
        Require(loaded.guide != nullptr, "a guide is read");
        CheckGuide(*loaded.guide);
        Require(loaded.warnings.First().size() == std::min(loaded.warnings.Count(), GuideWarnings::MaxKept),
                "the first warnings are kept");
        for (std::string const& warning : loaded.warnings.First()) {
            Require(IsUtf8(warning), "warnings are UTF-8");
        }
    } catch (GuideError const& error) {
        Require(IsUtf8(error.what()) && !HasControls(error.what()), "an error is one line");
        Require(std::string_view(error.what()).substr(0, 10) == "guide.xml:", "it names the document");
        return error.what();
    }
    return {};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string_view const document(reinterpret_cast<char const*>(data), size > 0 ? size - 1 : 0);
    std::size_t const piece = size > 0 ? data[size - 1] + 1U : 1;
    Check(document, piece);
    auto const time = ParseXmltvTime(document);
    Require(!time || document.size() >= 4, "a time has a year at least");
    MinimumAge(document);
    return 0;
}
