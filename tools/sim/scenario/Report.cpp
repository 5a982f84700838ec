// SPDX-License-Identifier: MIT
#include "Report.h"

#include "common/PrintableText.h"

namespace zviptv::sim {

namespace {

using State = Outcome::State;

struct Counts
{
    std::size_t expectations = 0;
    std::size_t met = 0;
};

Counts Count(Play const& play)
{
    Counts counts;
    for (std::size_t i = 0; i < play.Steps().steps.size(); ++i) {
        if (play.Steps().steps[i].expectation) {
            ++counts.expectations;
            counts.met += play.Of(i).state == State::Met ? 1U : 0U;
        }
    }
    return counts;
}

std::string LineOf(Step const& step, Outcome const& outcome)
{
    std::string const where = PrintableText(ToText(step.place) + ": " + step.text);
    std::string const seen = ": " + EscapeText(outcome.seen) + "\n";
    switch (outcome.state) {
    case State::Met:
        return step.expectation ? "  met      " + where + seen : "";
    case State::Unmet:
        return "  not met  " + where + seen;
    case State::Failed:
        return "  failed   " + where + seen;
    default:
        return "  not run  " + where + "\n";
    }
}

} // namespace

std::string TextReport(Play const& play)
{
    std::string lines;
    for (std::size_t i = 0; i < play.Steps().steps.size(); ++i) {
        lines += LineOf(play.Steps().steps[i], play.Of(i));
    }
    Counts const counts = Count(play);
    return lines.empty() ? ""
                         : "zviptv-sim: scenario " + play.Steps().file + ": " + std::to_string(counts.met) +
                               " of " + std::to_string(counts.expectations) + " expectation" +
                               (counts.expectations == 1 ? "" : "s") + " met\n" + lines;
}

} // namespace zviptv::sim
