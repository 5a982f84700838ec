// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "guide/ProgrammeGuide.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

/// The examples of the page: the text between "```json" and "```", in order.
std::vector<std::string> Examples(std::string const& page)
{
    std::string const open = "\n```json\n";
    std::vector<std::string> examples;
    for (std::size_t at = page.find(open); at != std::string::npos; at = page.find(open, at)) {
        at += open.size();
        std::size_t const end = page.find("\n```\n", at);
        examples.push_back(page.substr(at, end - at));
    }
    return examples;
}

TEST(GuidePage, ExamplesMatchTheSampleGuide)
{
    sim::ProgrammeGuide guide;
    guide.Load(ZVIPTV_SAMPLE_GUIDE, {{"ZV Sample One", 1}});
    auto const examples = Examples(ReadFile(ZVIPTV_GUIDE_PAGE));
    ASSERT_EQ(examples.size(), 6u);
    EXPECT_EQ(examples[0], guide.Present(1, 1774724400));
    EXPECT_EQ(guide.Programme(examples[1], 1), examples[2]);
    EXPECT_EQ(examples[3], guide.List(3, 1774677600, 43200));
    EXPECT_EQ(examples[4], guide.Rating(4));
    EXPECT_EQ(examples[5], guide.Genre(4));
}

} // namespace
} // namespace zviptv::test
