// SPDX-License-Identifier: MIT
#include "Fuzz.h"
#include "MemoryFile.h"
#include "trace/CaptureReader.h"
#include "trace/Conversation.h"
#include "trace/EventText.h"
#include "trace/SequenceDiagram.h"
#include "trace/TraceSummary.h"

#include "output/Answer.h"

// Any bytes as a capture file, with all outputs of zviptvctl trace.

using namespace zviptv;
using zviptv::fuzz::Require;

namespace {

struct Outputs
{
    ctl::SequenceDiagram diagram;
    ctl::TraceSummary summary;

    void Add(trace::Event const& event)
    {
        std::string const line = ctl::LineText(event);
        Require(fuzz::IsUtf8(line) && !fuzz::HasControls(line), "a line is one line of text");
        Require(fuzz::IsJsonLine(ctl::Compact(trace::ToJson(event))), "an event is a line of JSON");
        diagram.Add(event);
        summary.Add(event);
    }

    void End(trace::Counts const& counts) const
    {
        Require(fuzz::IsUtf8(diagram.Svg()) && fuzz::IsUtf8(diagram.Html()), "diagrams are text");
        Require(fuzz::IsUtf8(summary.Text(counts)), "a summary is text");
        Require(fuzz::IsJsonLine(ctl::Compact(summary.ToJson(counts))), "a summary is a line of JSON");
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    fuzz::MemoryFile const file({reinterpret_cast<char const*>(data), size});
    trace::Conversation conversation;
    Outputs outputs;
    std::uint64_t events = 0;
    try {
        trace::CaptureReader reader({file.Path()});
        for (trace::Message message; reader.Next(message);) {
            Require(message.bytes.size() <= size, "no more is read than is there");
            if (auto const event = conversation.Add(message)) {
                ++events;
                outputs.Add(*event);
            }
        }
    } catch (trace::CaptureError const& error) {
        Require(std::string_view(error.what()).substr(0, 12) == "cannot read ", "the error says what failed");
    }
    trace::Counts const& counts = conversation.Count();
    Require(counts.messages == events + counts.foreign + counts.malformed, "every message counts once");
    outputs.End(counts);
    return 0;
}
